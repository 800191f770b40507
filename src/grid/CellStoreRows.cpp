// CellStore: rows copied out and put back (what undoing a removal needs).
#include "grid/CellStore.h"

namespace kx {

CellStore::RowCopy CellStore::copyRow(int row) const
{
    RowCopy copy;
    if (row < 0 || row >= rows())
        return copy;
    const Row &r = m_rows[std::size_t(row)];
    copy.cells.resize(std::size_t(m_cols));
    for (int c = 0; c < m_cols; ++c) {
        const Cell cell = this->cell(row, c);
        if (cell.kind() == Cell::Text)
            copy.texts.emplace_back(c, m_pool.text(std::uint32_t(cell.payload())));
        else
            copy.cells[std::size_t(c)] = cell;
    }
    if (r.extra) {
        copy.data = r.extra->data;
        copy.rowData = r.extra->rowData;
        copy.before = r.extra->before;
    }
    copy.height = r.height;
    copy.mark = r.mark;
    copy.outline = r.outline;
    copy.flags = r.flags;
    return copy;
}

void CellStore::restoreRow(int row, const RowCopy &copy)
{
    if (row < 0 || row >= rows())
        return;
    Row &r = m_rows[std::size_t(row)];
    ++m_writes;
    countIrregular(r, -1);
    r = Row();
    for (int c = 0; c < m_cols; ++c)
        store(row, c, c < int(copy.cells.size()) ? copy.cells[std::size_t(c)] : Cell());
    for (const auto &[col, text] : copy.texts)
        if (col >= 0 && col < m_cols)
            store(row, col, Cell::text(m_pool.intern(text)));
    if (!copy.data.empty() || copy.rowData.isValid() || !copy.before.empty()) {
        r.extra = std::make_unique<RowExtra>();
        r.extra->data = copy.data;
        if (!r.extra->data.empty())
            r.extra->data.resize(std::size_t(m_cols));
        r.extra->rowData = copy.rowData;
        r.extra->before = copy.before;
    }
    r.height = copy.height;
    r.mark = copy.mark;
    r.outline = copy.outline;
    r.flags = copy.flags;
    countIrregular(r, +1);
}

CellStore::RowShape CellStore::shape(int row) const
{
    if (row < 0 || row >= rows())
        return {};
    const Row &r = m_rows[std::size_t(row)];
    return {r.height, r.outline, std::uint8_t(r.flags & (Hidden | Subtotal))};
}

void CellStore::setShape(int row, RowShape shape)
{
    if (row < 0 || row >= rows())
        return;
    Row &r = m_rows[std::size_t(row)];
    countIrregular(r, -1);
    r.height = shape.height;
    r.outline = shape.outline;
    r.flags = std::uint8_t((r.flags & ~(Hidden | Subtotal)) | (shape.flags & (Hidden | Subtotal)));
    countIrregular(r, +1);
}

} // namespace kx
