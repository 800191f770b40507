#include "grid/CellStore.h"

#include "grid/GridChangesData.h"

#include "grid/CellArrayData.h"
#include "grid/HashMix.h"
#include "grid/CellArray.h"

#include <algorithm>
#include <cstring>

namespace kx {

namespace {

// A two-line total ("1,250.50\r\n8,000.00") reads by its first line.
QStringView firstLine(const QString &text)
{
    const qsizetype cr = text.indexOf(QLatin1Char('\r'));
    const qsizetype lf = text.indexOf(QLatin1Char('\n'));
    const qsizetype end = cr < 0 ? lf : (lf < 0 ? cr : std::min(cr, lf));
    return end < 0 ? QStringView(text) : QStringView(text).left(end);
}

template <typename Vec>
void rotateOne(Vec &vec, int from, int to)
{
    if (from < to)
        std::rotate(vec.begin() + from, vec.begin() + from + 1, vec.begin() + to + 1);
    else
        std::rotate(vec.begin() + to, vec.begin() + from, vec.begin() + from + 1);
}

// Where index \a i ends up when the entry at \a from moves to \a to.
int movedIndex(int i, int from, int to)
{
    if (i == from)
        return to;
    if (from < to && i > from && i <= to)
        return i - 1;
    if (to < from && i >= to && i < from)
        return i + 1;
    return i;
}

} // namespace

CellStore::~CellStore() = default;

CellStore::Row CellStore::makeRow() const
{
    Row row;
    row.cells = std::make_unique<Cell[]>(std::size_t(m_cols));
    return row;
}

void CellStore::release(Cell cell)
{
    if (cell.kind() == Cell::Text)
        m_pool.release(std::uint32_t(cell.payload()));
}

void CellStore::releaseRow(Row &row)
{
    countIrregular(row, -1);
    if (!row.cells)
        return;
    for (int c = 0; c < m_cols; ++c)
        release(row.cells[std::size_t(c)]);
}

void CellStore::resizeRows(int n)
{
    n = std::max(n, 0);
    if (n < rows() / 2) {
        keepPooledTextsOf(n);
    } else {
        for (int r = n; r < rows(); ++r)
            releaseRow(m_rows[std::size_t(r)]);
    }
    const int old = rows();
    m_rows.resize(std::size_t(n));
    for (int r = old; r < n; ++r)
        m_rows[std::size_t(r)] = makeRow();
}

void CellStore::keepPooledTextsOf(int n)
{
    // Most rows go: a new pool with the texts of the rows that stay is
    // cheaper than releasing the others text by text.
    TextPool pool;
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < m_cols; ++c) {
            Cell &cell = m_rows[std::size_t(r)].cells[std::size_t(c)];
            if (cell.kind() == Cell::Text)
                cell = Cell::text(pool.intern(m_pool.text(std::uint32_t(cell.payload()))));
        }
    for (int r = n; r < rows(); ++r)
        countIrregular(m_rows[std::size_t(r)], -1);
    m_rows.resize(std::size_t(n));
    m_pool = std::move(pool);
}

void CellStore::resizeCols(int n)
{
    n = std::max(n, 0);
    if (n == m_cols)
        return;
    for (Row &row : m_rows) {
        auto cells = std::make_unique<Cell[]>(std::size_t(n));
        for (int c = 0; c < m_cols; ++c) {
            if (c < n)
                cells[std::size_t(c)] = row.cells[std::size_t(c)];
            else
                release(row.cells[std::size_t(c)]);
        }
        row.cells = std::move(cells);
        if (row.extra && !row.extra->data.empty())
            row.extra->data.resize(std::size_t(n));
        if (row.extra)
            row.extra->before.erase(std::remove_if(row.extra->before.begin(), row.extra->before.end(),
                                                   [n](const auto &kept) { return kept.first >= n; }),
                                    row.extra->before.end());
    }
    m_cols = n;
    m_kept.resize(std::size_t(n));
}

void CellStore::insertRows(int at, int count)
{
    if (count <= 0)
        return;
    at = std::clamp(at, 0, rows());
    std::vector<Row> fresh(static_cast<std::size_t>(count));
    for (Row &r : fresh)
        r = makeRow();
    m_rows.insert(m_rows.begin() + at, std::make_move_iterator(fresh.begin()), std::make_move_iterator(fresh.end()));
}

void CellStore::removeRows(int at, int count)
{
    count = std::min(count, rows() - at);
    if (at < 0 || count <= 0)
        return;
    for (int r = at; r < at + count; ++r)
        releaseRow(m_rows[std::size_t(r)]);
    m_rows.erase(m_rows.begin() + at, m_rows.begin() + at + count);
}

void CellStore::moveRow(int from, int to)
{
    rotateOne(m_rows, from, to);
}

void CellStore::moveCol(int from, int to)
{
    for (Row &row : m_rows) {
        Cell *cells = row.cells.get();
        if (from < to)
            std::rotate(cells + from, cells + from + 1, cells + to + 1);
        else
            std::rotate(cells + to, cells + from, cells + from + 1);
        if (row.extra && !row.extra->data.empty())
            rotateOne(row.extra->data, from, to);
        if (row.extra)
            for (auto &kept : row.extra->before)
                kept.first = movedIndex(kept.first, from, to);
    }
    if (std::size_t(std::max(from, to)) < m_kept.size())
        rotateOne(m_kept, from, to);
}

void CellStore::adopt(CellArray &array, int firstRow, int firstCol)
{
    CellArrayData &block = array.data();
    block.dropInterner();
    firstRow = std::clamp(firstRow, 0, rows());
    const bool whole = firstCol == 0 && block.cols == std::max(m_cols, block.cols);
    // Taking the block's pool saves interning every text again; the few
    // rows kept above the block bring their texts across, and the rows
    // replaced go with the old pool instead of text by text.
    if (whole) {
        resizeCols(block.cols);
        keepPooledTextsOf(firstRow);
        // The kept rows' few texts move into the block's pool, which stays.
        for (int r = 0; r < firstRow; ++r)
            for (int c = 0; c < m_cols; ++c) {
                Cell &cell = m_rows[std::size_t(r)].cells[std::size_t(c)];
                if (cell.kind() == Cell::Text)
                    cell = Cell::text(block.pool.intern(m_pool.text(std::uint32_t(cell.payload()))));
            }
        m_pool = std::move(block.pool);
    } else {
        resizeRows(firstRow);
        resizeCols(std::max(m_cols, firstCol + block.cols));
    }
    m_rows.reserve(m_rows.size() + block.rows.size());
    for (auto &cells : block.rows) {
        Row row;
        row.flags = 0;
        if (whole) {
            row.cells = std::move(cells);
        } else {
            row.cells = std::make_unique<Cell[]>(std::size_t(m_cols));
            for (int c = 0; c < block.cols; ++c) {
                Cell cell = cells[std::size_t(c)];
                if (cell.kind() == Cell::Text)
                    cell = Cell::text(m_pool.intern(block.pool.text(std::uint32_t(cell.payload()))));
                row.cells[std::size_t(firstCol + c)] = cell;
            }
        }
        m_rows.push_back(std::move(row));
    }
    block.rows.clear();
    block.pool = TextPool();
}

QString CellStore::text(int row, int col) const
{
    const Cell c = cell(row, col);
    return c.kind() == Cell::Text ? m_pool.text(std::uint32_t(c.payload())) : c.typedText();
}

void CellStore::logValue(int row, int col, Cell before)
{
    if (before.kind() == Cell::Text) {
        const QString text = m_pool.text(std::uint32_t(before.payload()));
        m_log->value(row, col, before, &text);
    } else {
        m_log->value(row, col, before, nullptr);
    }
}

bool CellStore::setText(int row, int col, const QString &text)
{
    if (!contains(row, col))
        return false;
    // Passes over a book mostly write what a cell already says.
    const Cell held = m_rows[std::size_t(row)].cells[std::size_t(col)];
    if (held.kind() == Cell::Text && m_pool.text(std::uint32_t(held.payload())) == text)
        return false;
    bool isText = false;
    Cell next = Cell::classify(text, isText);
    if (isText)
        next = Cell::text(m_pool.intern(text));
    if (m_rows[std::size_t(row)].cells[std::size_t(col)] == next) {
        release(next);
        return false;
    }
    put(row, col, next);
    return true;
}

bool CellStore::setTyped(int row, int col, Cell next)
{
    if (!contains(row, col) || next.kind() == Cell::Text || m_rows[std::size_t(row)].cells[std::size_t(col)] == next)
        return false;
    put(row, col, next);
    return true;
}

void CellStore::put(int row, int col, Cell next)
{
    Row &r = m_rows[std::size_t(row)];
    Cell &slot = r.cells[std::size_t(col)];
    if (m_log)
        logValue(row, col, slot);
    if ((r.flags & Pristine) && std::size_t(col) < m_kept.size() && m_kept[std::size_t(col)])
        keepBefore(r, col, slot);
    release(slot);
    slot = next;
    r.flags |= Touched;
}

Currency CellStore::textAmount(Cell c) const
{
    return Currency::fromText(firstLine(m_pool.text(std::uint32_t(c.payload())))).valueOr(Currency());
}

qint64 CellStore::slowNumber(Cell c) const
{
    switch (c.kind()) {
    case Cell::Number:
        return c.payload();
    case Cell::Amount:
        return c.payload() / Currency::Scale;
    case Cell::Text: {
        // Integer cells written by other tools may hold "12.0" or " 12".
        const QString &t = m_pool.text(std::uint32_t(c.payload()));
        bool ok = false;
        const qint64 n = t.trimmed().toLongLong(&ok);
        if (ok)
            return n;
        const Currency a = Currency::fromText(t).valueOr(Currency());
        return a.isValid() ? a.raw() / Currency::Scale : 0;
    }
    default:
        return 0;
    }
}

QDate CellStore::date(int row, int col) const
{
    const Cell c = cell(row, col);
    if (c.kind() == Cell::Day)
        return QDate::fromJulianDay(c.payload());
    return QDate();
}

quint64 CellStore::textsHash(int row, const int *cols, int count) const
{
    quint64 h = 0xcbf29ce484222325ULL;
    if (row < 0 || row >= rows())
        return h;
    const Cell *cells = m_rows[std::size_t(row)].cells.get();
    for (int i = 0; i < count; ++i) {
        const int c = cols[i];
        h = hashMix(h, c >= 0 && c < m_cols ? textHash(cells[c]) : 0);
    }
    return h;
}

QVariant CellStore::cellData(int row, int col) const
{
    if (!contains(row, col))
        return {};
    const auto &extra = m_rows[std::size_t(row)].extra;
    return extra && !extra->data.empty() ? extra->data[std::size_t(col)] : QVariant();
}

void CellStore::setCellData(int row, int col, const QVariant &value)
{
    if (!contains(row, col))
        return;
    Row &r = m_rows[std::size_t(row)];
    if (!r.extra) {
        if (!value.isValid())
            return;
        r.extra = std::make_unique<RowExtra>();
    }
    if (r.extra->data.empty())
        r.extra->data.resize(std::size_t(m_cols));
    r.extra->data[std::size_t(col)] = value;
    r.flags |= Touched;
}

QVariant CellStore::rowData(int row) const
{
    if (row < 0 || row >= rows())
        return {};
    const Row &r = m_rows[std::size_t(row)];
    if (r.flags & SmallMark)
        return QVariant(int(r.mark));
    return r.extra ? r.extra->rowData : QVariant();
}

void CellStore::setRowData(int row, const QVariant &value)
{
    if (row < 0 || row >= rows())
        return;
    Row &r = m_rows[std::size_t(row)];
    // The change mark is a small whole number on almost every row: keep it inline.
    if (value.typeId() == QMetaType::Int && value.toInt() >= -128 && value.toInt() <= 127) {
        r.mark = std::int8_t(value.toInt());
        r.flags |= SmallMark;
        if (r.extra)
            r.extra->rowData = QVariant();
        return;
    }
    r.flags &= std::uint8_t(~SmallMark);
    if (!r.extra) {
        if (!value.isValid())
            return;
        r.extra = std::make_unique<RowExtra>();
    }
    r.extra->rowData = value;
}

void CellStore::setRowFlag(int row, RowFlag flag, bool on)
{
    if (row < 0 || row >= rows())
        return;
    Row &r = m_rows[std::size_t(row)];
    countIrregular(r, -1);
    r.flags = on ? std::uint8_t(r.flags | flag) : std::uint8_t(r.flags & ~flag);
    countIrregular(r, +1);
}

void CellStore::setRowHeight(int row, int height)
{
    if (row < 0 || row >= rows())
        return;
    Row &r = m_rows[std::size_t(row)];
    countIrregular(r, -1);
    r.height = height < 0 ? std::int16_t(-1) : std::int16_t(std::min(height, 32767));
    countIrregular(r, +1);
}

void CellStore::setOutline(int row, int level)
{
    if (row >= 0 && row < rows())
        m_rows[std::size_t(row)].outline = std::uint8_t(std::clamp(level, 0, 255));
}

std::size_t CellStore::overheadBytes() const
{
    std::size_t bytes = m_rows.capacity() * sizeof(Row) + m_pool.overheadBytes();
    // Each row's cell array, with the allocator's own header.
    bytes += m_rows.size() * (std::size_t(m_cols) * sizeof(Cell) + 16);
    return bytes;
}

} // namespace kx
