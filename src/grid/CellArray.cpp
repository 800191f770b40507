#include "grid/CellArray.h"

#include "grid/CellArrayData.h"

#include <algorithm>

namespace kx {

CellArrayData::CellArrayData(int rowCount, int colCount) : cols(std::max(colCount, 0))
{
    rows.resize(std::size_t(std::max(rowCount, 0)));
    for (auto &row : rows)
        row = std::make_unique<Cell[]>(std::size_t(cols));
}

CellArrayData::CellArrayData(const CellArrayData &other) : cols(other.cols)
{
    rows.reserve(other.rows.size());
    for (const auto &src : other.rows) {
        rows.push_back(std::make_unique<Cell[]>(std::size_t(cols)));
        for (int c = 0; c < cols; ++c) {
            const Cell cell = src[std::size_t(c)];
            rows.back()[std::size_t(c)] =
                cell.kind() == Cell::Text ? Cell::text(pool.intern(other.pool.text(std::uint32_t(cell.payload())))) : cell;
        }
    }
}

void CellArrayData::clearCell(Cell &cell)
{
    if (cell.kind() == Cell::Text)
        pool.release(std::uint32_t(cell.payload()));
    cell = Cell();
}

void CellArrayData::put(int row, int col, Cell cell)
{
    Cell &slot = rows[std::size_t(row)][std::size_t(col)];
    clearCell(slot);
    slot = cell;
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
    return int(d->rows.size());
}

int CellArray::cols() const
{
    return d->cols;
}

QString CellArray::text(int row, int col) const
{
    const Cell cell = d->rows[std::size_t(row)][std::size_t(col)];
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
    d->rows.push_back(std::make_unique<Cell[]>(std::size_t(d->cols)));
    return int(d->rows.size()) - 1;
}

void CellArray::reserveRows(int rows)
{
    if (rows > 0)
        d->rows.reserve(std::size_t(rows));
}

} // namespace kx
