#include "kxjournal/CellArray.h"

#include <iterator>

namespace kx {

CellArray::CellArray(int rows, int cols)
    : m_rows(rows < 0 ? 0 : rows), m_cols(cols < 0 ? 0 : cols),
      m_cells(std::size_t(m_rows) * std::size_t(m_cols))
{
}

int CellArray::appendRow()
{
    m_cells.resize(m_cells.size() + std::size_t(m_cols));
    return m_rows++;
}

void CellArray::reserveRows(int rows)
{
    if (rows > 0)
        m_cells.reserve(std::size_t(rows) * std::size_t(m_cols));
}

void CellArray::takeRow(int row, std::vector<QString> &out)
{
    const auto first = m_cells.begin() + std::ptrdiff_t(row) * m_cols;
    out.assign(std::make_move_iterator(first), std::make_move_iterator(first + m_cols));
}

} // namespace kx
