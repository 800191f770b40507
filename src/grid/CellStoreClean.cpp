// CellStore: each row's texts as they were at the last clean mark, for the
// columns asked for (what a save compares other users' changes against).
#include "grid/CellStore.h"

namespace kx {

void CellStore::markAllClean()
{
    for (Row &r : m_rows) {
        r.flags = std::uint8_t((r.flags & ~Touched) | Pristine);
        if (r.extra)
            r.extra->before.clear();
    }
}

void CellStore::keepBefore(Row &row, int col, Cell cell)
{
    if (!row.extra)
        row.extra = std::make_unique<RowExtra>();
    auto &before = row.extra->before;
    for (const auto &kept : before)
        if (kept.first == col)
            return;  // the first change since the clean mark has it
    before.emplace_back(col, cell.kind() == Cell::Text ? m_pool.text(std::uint32_t(cell.payload())) : cell.typedText());
}

void CellStore::setKeptCols(const std::vector<bool> &kept)
{
    m_kept = kept;
    m_kept.resize(std::size_t(m_cols));
}

void CellStore::setCleanText(int row, int col, const QString &text)
{
    if (!contains(row, col) || std::size_t(col) >= m_kept.size() || !m_kept[std::size_t(col)])
        return;
    Row &r = m_rows[std::size_t(row)];
    if (!(r.flags & Pristine))
        return;  // a row added since the mark has no clean texts to correct
    if (!r.extra)
        r.extra = std::make_unique<RowExtra>();
    auto &before = r.extra->before;
    for (auto &kept : before)
        if (kept.first == col) {
            kept.second = text;
            return;
        }
    before.emplace_back(col, text);
}

QString CellStore::cleanText(int row, int col) const
{
    if (!knowsClean(row))
        return text(row, col);
    const auto &extra = m_rows[std::size_t(row)].extra;
    if (extra)
        for (const auto &kept : extra->before)
            if (kept.first == col)
                return kept.second;
    return text(row, col);
}

} // namespace kx
