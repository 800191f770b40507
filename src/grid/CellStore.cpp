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

} // namespace

CellStore::~CellStore() = default;

void CellStore::release(Cell cell)
{
    if (cell.kind() == Cell::Text)
        m_pool.release(std::uint32_t(cell.payload()));
}

void CellStore::releaseRows(int first, int last)
{
    for (int r = first; r < last; ++r)
        countIrregular(m_rows[std::size_t(r)], -1);
    for (const CellColumn &column : m_columns)
        column.releaseTexts(first, last, m_pool);
}

void CellStore::resizeRows(int n)
{
    ++m_layout;
    n = std::max(n, 0);
    if (n < rows() / 2) {
        keepPooledTextsOf(n);
    } else {
        releaseRows(n, rows());
        for (CellColumn &column : m_columns)
            column.resize(rows(), n, m_pool);
    }
    m_rows.resize(std::size_t(n));
}

void CellStore::keepPooledTextsOf(int n)
{
    ++m_layout;
    // Most rows go: a new pool with the texts of the rows that stay is
    // cheaper than releasing the others text by text.
    TextPool pool;
    for (CellColumn &column : m_columns)
        column.moveTexts(std::min(n, rows()), m_pool, pool);
    for (int r = n; r < rows(); ++r)
        countIrregular(m_rows[std::size_t(r)], -1);
    m_pool = std::move(pool);
    // Rows beyond the ones there were are new: empty, and touched.
    if (n > rows())
        for (CellColumn &column : m_columns)
            column.resize(rows(), n, m_pool);
    m_rows.resize(std::size_t(n));
}

void CellStore::resizeCols(int n)
{
    ++m_layout;
    n = std::max(n, 0);
    if (n == m_cols)
        return;
    for (int c = n; c < m_cols; ++c)
        m_columns[std::size_t(c)].clear(rows(), m_pool);
    m_columns.resize(std::size_t(n));
    for (Row &row : m_rows) {
        if (!row.extra)
            continue;
        if (!row.extra->data.empty())
            row.extra->data.resize(std::size_t(n));
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
    ++m_layout;
    for (CellColumn &column : m_columns)
        column.insertRows(at, count, rows(), m_pool);
    std::vector<Row> fresh(static_cast<std::size_t>(count));
    m_rows.insert(m_rows.begin() + at, std::make_move_iterator(fresh.begin()), std::make_move_iterator(fresh.end()));
}

void CellStore::removeRows(int at, int count)
{
    count = std::min(count, rows() - at);
    if (at < 0 || count <= 0)
        return;
    releaseRows(at, at + count);
    ++m_layout;
    for (CellColumn &column : m_columns) {
        if (count == rows())
            column.resize(rows(), 0, m_pool);
        else
            column.removeRows(at, count);
    }
    m_rows.erase(m_rows.begin() + at, m_rows.begin() + at + count);
}

void CellStore::moveRow(int from, int to)
{
    ++m_layout;
    rotateOne(m_rows, from, to);
    for (CellColumn &column : m_columns)
        column.moveRow(from, to);
}

void CellStore::moveCol(int from, int to)
{
    ++m_layout;
    rotateOne(m_columns, from, to);
    for (Row &row : m_rows) {
        if (!row.extra)
            continue;
        if (!row.extra->data.empty())
            rotateOne(row.extra->data, from, to);
        for (auto &kept : row.extra->before)
            kept.first = CellColumn::movedRow(kept.first, from, to);
    }
    if (std::size_t(std::max(from, to)) < m_kept.size())
        rotateOne(m_kept, from, to);
}

void CellStore::compactGrown()
{
    for (CellColumn &column : m_columns)
        if (column.grown() && column.compact(rows(), m_pool))
            ++m_layout;
}

void CellStore::adopt(CellArray &array, int firstRow, int firstCol)
{
    CellArrayData &block = array.data();
    block.dropInterner();
    ++m_layout;
    firstRow = std::clamp(firstRow, 0, rows());
    const bool whole = firstCol == 0 && block.cols == std::max(m_cols, block.cols);
    // Taking the block's pool saves interning every text again; the few
    // rows kept above the block bring their texts across, and the rows
    // replaced go with the old pool instead of text by text.
    if (whole) {
        resizeCols(block.cols);
        keepPooledTextsOf(firstRow);
        // The kept rows' few texts move into the block's pool, which stays.
        for (CellColumn &column : m_columns)
            column.moveTexts(firstRow, m_pool, block.pool);
        m_pool = std::move(block.pool);
    } else {
        resizeRows(firstRow);
        resizeCols(std::max(m_cols, firstCol + block.cols));
    }
    const int count = block.rowCount();
    const std::size_t total = std::size_t(firstRow) + std::size_t(count);
    for (int c = 0; c < m_cols; ++c) {
        CellColumn &into = m_columns[std::size_t(c)];
        const int from = c - firstCol;
        std::vector<Cell> *cells = from >= 0 && from < block.cols ? &block.columns[std::size_t(from)] : nullptr;
        if (cells && cells->empty())
            cells = nullptr;  // nothing written there
        if (cells && !whole)
            for (Cell &cell : *cells)
                if (cell.kind() == Cell::Text)
                    cell = Cell::text(m_pool.intern(block.pool.text(std::uint32_t(cell.payload()))));
        if (!cells) {
            into.resize(firstRow, int(total), m_pool);
            continue;
        }
        std::vector<Cell> &dense = into.cells(firstRow, m_pool);
        if (firstRow == 0) {
            dense = std::move(*cells);
        } else {
            dense.reserve(total);
            dense.insert(dense.end(), cells->begin(), cells->end());
        }
        // A book's directions, spare fields and marks are one value nearly
        // everywhere: such a column is listed rather than kept row by row.
        into.compact(int(total), m_pool);
    }
    m_rows.reserve(total);
    m_rows.resize(total);
    for (std::size_t r = std::size_t(firstRow); r < total; ++r)
        m_rows[r].flags = 0;
    block.clear();
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
    const Cell held = cell(row, col);
    if (held.kind() == Cell::Text && m_pool.text(std::uint32_t(held.payload())) == text)
        return false;
    bool isText = false;
    Cell next = Cell::classify(text, isText);
    if (isText)
        next = Cell::text(m_pool.intern(text));
    if (held == next) {
        release(next);
        return false;
    }
    put(row, col, next);
    return true;
}

bool CellStore::setTyped(int row, int col, Cell next)
{
    if (!contains(row, col) || next.kind() == Cell::Text || cell(row, col) == next)
        return false;
    put(row, col, next);
    return true;
}

void CellStore::put(int row, int col, Cell next)
{
    Row &r = m_rows[std::size_t(row)];
    const Cell held = cell(row, col);
    if (m_log)
        logValue(row, col, held);
    if ((r.flags & Pristine) && std::size_t(col) < m_kept.size() && m_kept[std::size_t(col)])
        keepBefore(r, col, held);
    store(row, col, next);
    r.flags |= Touched;
    ++m_writes;
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
    for (int i = 0; i < count; ++i) {
        const int c = cols[i];
        h = hashMix(h, c >= 0 && c < m_cols ? textHash(cell(row, c)) : 0);
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
    for (const CellColumn &column : m_columns)
        bytes += column.bytes();
    return bytes;
}

} // namespace kx
