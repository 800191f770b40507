#include "grid/GridStyles.h"

#include <algorithm>

namespace kx {

const GridStyles::CellStyle *GridStyles::at(int row, int col) const
{
    if (row < 0 || row >= int(m_rows.size()) || col < 0 || col >= m_cols)
        return nullptr;
    const auto &cells = m_rows[std::size_t(row)].cells;
    return cells ? &cells[std::size_t(col)] : nullptr;
}

GridStyles::CellStyle &GridStyles::make(int row, int col)
{
    auto &cells = m_rows[std::size_t(row)].cells;
    if (!cells)
        cells = std::make_unique<CellStyle[]>(std::size_t(m_cols));
    return cells[std::size_t(col)];
}

QColor GridStyles::rowFore(int row) const
{
    if (row < 0 || row >= int(m_rows.size()) || !m_rows[std::size_t(row)].hasFore)
        return QColor();
    return QColor::fromRgba(m_rows[std::size_t(row)].fore);
}

void GridStyles::setRowFore(int row, const QColor &color, int firstCol)
{
    if (row < 0 || row >= int(m_rows.size()))
        return;
    RowLook &r = m_rows[std::size_t(row)];
    r.hasFore = color.isValid();
    r.fore = color.isValid() ? color.rgba() : 0;
    if (r.cells)
        for (int c = firstCol; c < m_cols; ++c)
            r.cells[std::size_t(c)].flags &= quint8(~CellStyle::HasFore);
}

void GridStyles::dropColumnFont(int col)
{
    for (RowLook &r : m_rows)
        if (r.cells)
            r.cells[std::size_t(col)].fontIndex = 0;
}

quint16 GridStyles::fontIndex(const QString &family)
{
    if (family.isEmpty())
        return 0;
    int idx = int(m_fontNames.indexOf(family)) + 1;
    if (idx == 0) {
        m_fontNames << family;
        idx = int(m_fontNames.size());
    }
    return quint16(idx);
}

void GridStyles::resizeRows(int n)
{
    m_rows.resize(std::size_t(std::max(n, 0)));
}

void GridStyles::resizeCols(int n)
{
    n = std::max(n, 0);
    for (RowLook &r : m_rows) {
        if (!r.cells)
            continue;
        auto cells = std::make_unique<CellStyle[]>(std::size_t(n));
        std::copy_n(r.cells.get(), std::min(n, m_cols), cells.get());
        r.cells = std::move(cells);
    }
    m_cols = n;
}

void GridStyles::insertRows(int at, int count)
{
    if (count <= 0)
        return;
    at = std::clamp(at, 0, int(m_rows.size()));
    std::vector<RowLook> fresh(static_cast<std::size_t>(count));
    m_rows.insert(m_rows.begin() + at, std::make_move_iterator(fresh.begin()), std::make_move_iterator(fresh.end()));
}

void GridStyles::removeRows(int at, int count)
{
    count = std::min(count, int(m_rows.size()) - at);
    if (at >= 0 && count > 0)
        m_rows.erase(m_rows.begin() + at, m_rows.begin() + at + count);
}

GridStyles::RowCopy GridStyles::copyRow(int row) const
{
    RowCopy copy;
    if (row < 0 || row >= int(m_rows.size()))
        return copy;
    const RowLook &r = m_rows[std::size_t(row)];
    if (r.cells)
        copy.cells.assign(r.cells.get(), r.cells.get() + m_cols);
    copy.fore = r.fore;
    copy.hasFore = r.hasFore;
    return copy;
}

void GridStyles::restoreRow(int row, const RowCopy &copy)
{
    if (row < 0 || row >= int(m_rows.size()))
        return;
    RowLook &r = m_rows[std::size_t(row)];
    r.cells.reset();
    if (!copy.cells.empty()) {
        r.cells = std::make_unique<CellStyle[]>(std::size_t(m_cols));
        std::copy_n(copy.cells.begin(), std::min(std::size_t(m_cols), copy.cells.size()), r.cells.get());
    }
    r.fore = copy.fore;
    r.hasFore = copy.hasFore;
}

void GridStyles::moveRow(int from, int to)
{
    if (from < to)
        std::rotate(m_rows.begin() + from, m_rows.begin() + from + 1, m_rows.begin() + to + 1);
    else
        std::rotate(m_rows.begin() + to, m_rows.begin() + from, m_rows.begin() + from + 1);
}

void GridStyles::moveCol(int from, int to)
{
    for (RowLook &r : m_rows) {
        if (!r.cells)
            continue;
        CellStyle *cells = r.cells.get();
        if (from < to)
            std::rotate(cells + from, cells + from + 1, cells + to + 1);
        else
            std::rotate(cells + to, cells + from, cells + from + 1);
    }
}

} // namespace kx
