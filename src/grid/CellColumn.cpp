#include "grid/CellColumn.h"

#include "grid/TextPool.h"

namespace kx {

namespace {

void releaseText(TextPool &pool, Cell cell)
{
    if (cell.kind() == Cell::Text)
        pool.release(std::uint32_t(cell.payload()));
}

} // namespace

int CellColumn::movedRow(int i, int from, int to)
{
    if (i == from)
        return to;
    if (from < to && i > from && i <= to)
        return i - 1;
    if (to < from && i >= to && i < from)
        return i + 1;
    return i;
}

void CellColumn::densify(int rows, TextPool &pool)
{
    if (!m_cells.empty() || rows <= 0)
        return;
    m_cells.assign(std::size_t(rows), m_common);
    if (m_common.kind() == Cell::Text) {
        // Each row holding the common text now holds a reference of its own.
        const std::uint32_t id = std::uint32_t(m_common.payload());
        for (std::size_t i = m_listed.size(); i < std::size_t(rows); ++i)
            pool.retain(id);
        pool.release(id);
    }
    for (const Listed &l : m_listed)
        m_cells[std::size_t(l.row)] = l.cell;
    std::vector<Listed>().swap(m_listed);
    m_common = Cell();
    m_grown = true;
}

bool CellColumn::put(int row, Cell next, int rows, TextPool &pool)
{
    if (!m_cells.empty()) {
        releaseText(pool, m_cells[std::size_t(row)]);
        m_cells[std::size_t(row)] = next;
        return false;
    }
    auto it = m_listed.begin() + (find(row) - m_listed.cbegin());
    const bool listed = it != m_listed.end() && it->row == row;
    // A listed row holds a reference of its own; any other shares the
    // common cell's.
    if (listed)
        releaseText(pool, it->cell);
    if (next == m_common) {
        releaseText(pool, next);
        if (!listed)
            return false;
        m_listed.erase(it);
        return true;
    }
    if (listed) {
        it->cell = next;
        return false;
    }
    if (m_listed.size() >= limit(rows)) {
        densify(rows, pool);
        m_cells[std::size_t(row)] = next;
        return true;
    }
    m_listed.insert(it, {row, next});
    return true;
}

void CellColumn::listEmpty(int first, int count, int rows, TextPool &pool)
{
    // New rows are empty: a column whose common cell is not lists them.
    if (!m_cells.empty() || m_common == Cell() || count <= 0)
        return;
    if (m_listed.size() + std::size_t(count) > limit(rows)) {
        densify(rows, pool);
        for (int r = first; r < first + count; ++r) {
            releaseText(pool, m_cells[std::size_t(r)]);
            m_cells[std::size_t(r)] = Cell();
        }
        return;
    }
    const auto at = m_listed.begin() + (find(first) - m_listed.cbegin());
    std::vector<Listed> fresh;
    fresh.reserve(std::size_t(count));
    for (int r = first; r < first + count; ++r)
        fresh.push_back({r, Cell()});
    m_listed.insert(at, fresh.begin(), fresh.end());
}

void CellColumn::insertRows(int at, int count, int rows, TextPool &pool)
{
    if (!m_cells.empty()) {
        m_cells.insert(m_cells.begin() + at, std::size_t(count), Cell());
        return;
    }
    for (Listed &l : m_listed)
        if (l.row >= at)
            l.row += count;
    // Densifying counts the rows as they are now: the new ones hold the
    // common cell until listEmpty() empties them.
    listEmpty(at, count, rows + count, pool);
}

void CellColumn::removeRows(int at, int count)
{
    if (!m_cells.empty()) {
        m_cells.erase(m_cells.begin() + at, m_cells.begin() + at + count);
        return;
    }
    m_listed.erase(std::remove_if(m_listed.begin(), m_listed.end(),
                                  [&](const Listed &l) { return l.row >= at && l.row < at + count; }),
                   m_listed.end());
    for (Listed &l : m_listed)
        if (l.row >= at + count)
            l.row -= count;
}

void CellColumn::moveRow(int from, int to)
{
    if (!m_cells.empty()) {
        if (from < to)
            std::rotate(m_cells.begin() + from, m_cells.begin() + from + 1, m_cells.begin() + to + 1);
        else
            std::rotate(m_cells.begin() + to, m_cells.begin() + from, m_cells.begin() + from + 1);
        return;
    }
    for (Listed &l : m_listed)
        l.row = movedRow(l.row, from, to);
    std::sort(m_listed.begin(), m_listed.end(), [](const Listed &a, const Listed &b) { return a.row < b.row; });
}

void CellColumn::resize(int rows, int to, TextPool &pool)
{
    if (to <= 0) {
        std::vector<Cell>().swap(m_cells);
        std::vector<Listed>().swap(m_listed);
        releaseText(pool, m_common);
        m_common = Cell();
        return;
    }
    if (!m_cells.empty()) {
        m_cells.resize(std::size_t(to));
        return;
    }
    if (to < rows) {
        m_listed.erase(m_listed.begin() + (find(to) - m_listed.cbegin()), m_listed.end());
        return;
    }
    listEmpty(rows, to - rows, to, pool);
}

void CellColumn::releaseTexts(int first, int last, TextPool &pool) const
{
    if (!m_cells.empty()) {
        for (int r = first; r < last; ++r)
            releaseText(pool, m_cells[std::size_t(r)]);
        return;
    }
    for (auto it = find(first); it != m_listed.end() && it->row < last; ++it)
        releaseText(pool, it->cell);
}

void CellColumn::clear(int rows, TextPool &pool)
{
    releaseTexts(0, rows, pool);
    resize(rows, 0, pool);
}

void CellColumn::moveTexts(int rows, const TextPool &from, TextPool &to)
{
    const auto move = [&](Cell &cell) {
        if (cell.kind() == Cell::Text)
            cell = Cell::text(to.intern(from.text(std::uint32_t(cell.payload()))));
    };
    if (rows <= 0) {
        std::vector<Cell>().swap(m_cells);
        std::vector<Listed>().swap(m_listed);
        m_common = Cell();
        return;
    }
    if (!m_cells.empty()) {
        m_cells.resize(std::size_t(rows));
        for (Cell &cell : m_cells)
            move(cell);
        return;
    }
    m_listed.erase(m_listed.begin() + (find(rows) - m_listed.cbegin()), m_listed.end());
    for (Listed &l : m_listed)
        move(l.cell);
    move(m_common);
}

std::vector<Cell> &CellColumn::cells(int rows, TextPool &pool)
{
    densify(rows, pool);
    return m_cells;
}

bool CellColumn::compact(int rows, TextPool &pool)
{
    m_grown = false;
    if (m_cells.empty())
        return false;
    const std::size_t most = limit(rows);
    // The common cell is nearly everywhere, so a few rows spread over the
    // column find it; a dense column gives up after a few differing cells.
    for (const int probe : {rows - 1, rows / 2, rows / 4}) {
        const Cell common = m_cells[std::size_t(probe)];
        std::size_t differ = 0;
        for (const Cell cell : m_cells)
            if (cell != common && ++differ > most)
                break;
        if (differ > most)
            continue;
        std::vector<Listed> listed;
        listed.reserve(differ);
        for (int r = 0; r < rows; ++r)
            if (m_cells[std::size_t(r)] != common)
                listed.push_back({r, m_cells[std::size_t(r)]});
        if (common.kind() == Cell::Text) {
            // The rows' references become the common cell's one.
            const std::uint32_t id = std::uint32_t(common.payload());
            for (std::size_t i = listed.size() + 1; i < std::size_t(rows); ++i)
                pool.release(id);
        }
        m_common = common;
        m_listed = std::move(listed);
        std::vector<Cell>().swap(m_cells);
        return true;
    }
    return false;
}

} // namespace kx
