#include "grid/CellArray.h"

#include "grid/CellArrayData.h"

#include <algorithm>

namespace kx {

CellArrayData::CellArrayData(int rowCount, int colCount)
    : cols(std::max(colCount, 0)), columns(std::size_t(std::max(colCount, 0))), m_rows(std::max(rowCount, 0))
{
}

CellArrayData::CellArrayData(const CellArrayData &other)
    : cols(other.cols), columns(other.columns.size()), m_rows(other.m_rows), m_reserved(other.m_reserved)
{
    for (std::size_t c = 0; c < columns.size(); ++c) {
        columns[c] = other.columns[c];
        for (Cell &cell : columns[c])
            if (cell.kind() == Cell::Text)
                cell = Cell::text(pool.intern(other.pool.text(std::uint32_t(cell.payload()))));
    }
}

void CellArrayData::allocate(std::vector<Cell> &column)
{
    column.reserve(std::max(m_reserved, std::size_t(m_rows)));
    column.resize(std::size_t(m_rows));
}

void CellArrayData::put(int row, int col, Cell cell)
{
    std::vector<Cell> &column = columns[std::size_t(col)];
    if (column.empty()) {
        fill(row, col, cell);
        return;
    }
    Cell &slot = column[std::size_t(row)];
    if (slot.kind() == Cell::Text)
        pool.release(std::uint32_t(slot.payload()));
    slot = cell;
}

int CellArrayData::appendRow()
{
    for (std::vector<Cell> &column : columns)
        if (!column.empty())
            column.emplace_back();
    return m_rows++;
}

void CellArrayData::reserveRows(int rows)
{
    if (rows <= 0)
        return;
    m_reserved = std::size_t(rows);
    for (std::vector<Cell> &column : columns)
        if (!column.empty())
            column.reserve(m_reserved);
}

void CellArrayData::clear()
{
    columns.assign(columns.size(), {});
    pool = TextPool();
    m_rows = 0;
    m_reserved = 0;
}

Cell CellArrayData::utf8Cell(int col, const char *bytes, int size)
{
    if (size <= 0)
        return Cell();
    // Digits, dates and amounts keep their typed form, read without a heap
    // copy; other texts are pooled.
    const char c0 = bytes[0];
    if (((c0 >= '0' && c0 <= '9') || c0 == '-') && size <= 32) {
        char16_t wide[32];
        bool ascii = true;
        for (int i = 0; i < size && ascii; ++i) {
            ascii = static_cast<unsigned char>(bytes[i]) < 0x80;
            wide[i] = char16_t(static_cast<unsigned char>(bytes[i]));
        }
        bool isText = true;
        const Cell cell = ascii ? Cell::classify(QStringView(wide, size), isText) : Cell();
        if (!isText)
            return cell;
    }
    return Cell::text(interner().intern(col, bytes, size));
}

Utf8Interner &CellArrayData::interner()
{
    if (!m_interner)
        m_interner = std::make_unique<Utf8Interner>(pool, cols);
    return *m_interner;
}

CellArray::CellArray() : d(std::make_unique<CellArrayData>(0, 0)) {}

CellArray::CellArray(int rows, int cols) : d(std::make_unique<CellArrayData>(rows, cols)) {}

CellArray::CellArray(const CellArray &other) : d(std::make_unique<CellArrayData>(*other.d)) {}

CellArray &CellArray::operator=(const CellArray &other)
{
    if (this != &other)
        d = std::make_unique<CellArrayData>(*other.d);
    return *this;
}

CellArray::CellArray(CellArray &&other) noexcept : d(std::move(other.d))
{
    other.d = std::make_unique<CellArrayData>(0, 0);
}

CellArray &CellArray::operator=(CellArray &&other) noexcept
{
    if (this != &other) {
        d = std::move(other.d);
        other.d = std::make_unique<CellArrayData>(0, 0);
    }
    return *this;
}

CellArray::~CellArray() = default;

int CellArray::rows() const
{
    return d->rowCount();
}

int CellArray::cols() const
{
    return d->cols;
}

QString CellArray::text(int row, int col) const
{
    const Cell cell = d->at(row, col);
    return cell.kind() == Cell::Text ? d->pool.text(std::uint32_t(cell.payload())) : cell.typedText();
}

void CellArray::setText(int row, int col, const QString &text)
{
    bool isText = false;
    const Cell cell = Cell::classify(text, isText);
    d->put(row, col, isText ? Cell::text(d->pool.intern(text)) : cell);
}

void CellArray::setNumber(int row, int col, qint64 value)
{
    d->put(row, col, d->numberCell(value));
}

void CellArray::setAmount(int row, int col, Currency value)
{
    d->put(row, col, d->amountCell(value));
}

void CellArray::setDate(int row, int col, const QDate &date)
{
    d->put(row, col, Cell::day(date));
}

void CellArray::setUtf8(int row, int col, const char *bytes, int size)
{
    d->put(row, col, d->utf8Cell(col, bytes, size));
}

int CellArray::appendRow()
{
    return d->appendRow();
}

void CellArray::reserveRows(int rows)
{
    d->reserveRows(rows);
}

} // namespace kx
