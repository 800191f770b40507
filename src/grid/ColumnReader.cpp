#include "grid/ColumnReader.h"

#include <algorithm>

namespace kx {

void ColumnReader::take()
{
    m_layout = m_store.layout();
    const bool there = m_col >= 0 && m_col < m_store.cols();
    m_column = there ? &m_store.column(m_col) : nullptr;
    m_dense = m_column ? m_column->dense() : nullptr;
    m_common = m_column ? m_column->common() : Cell();
    // Nothing known until the first seek, unless nothing is listed.
    const bool none = !m_column || m_column->listed().empty();
    m_low = none ? 0 : 1;
    m_high = none ? INT_MAX : 0;
}

Cell ColumnReader::seek(int row)
{
    const auto &listed = m_column->listed();
    const auto it = std::lower_bound(listed.begin(), listed.end(), row,
                                     [](const CellColumn::Listed &l, int r) { return l.row < r; });
    if (it != listed.end() && it->row == row) {
        // The rows after it hold the common cell up to the next listed one.
        m_low = row + 1;
        m_high = it + 1 != listed.end() ? (it + 1)->row : INT_MAX;
        return it->cell;
    }
    m_low = it == listed.begin() ? 0 : (it - 1)->row + 1;
    m_high = it != listed.end() ? it->row : INT_MAX;
    return m_common;
}

} // namespace kx
