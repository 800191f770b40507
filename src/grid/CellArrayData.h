#pragma once

#include "grid/Cell.h"
#include "grid/TextPool.h"

#include <memory>
#include <vector>

namespace kx {

/// What a CellArray holds: columns of cells whose texts live in its own
/// pool. A column nothing was written to holds no cells at all. A grid
/// adopts the columns (and, when it takes everything, the pool).
class CellArrayData
{
public:
    CellArrayData(int rows, int cols);
    CellArrayData(const CellArrayData &other);

    /// Number of rows.
    int rowCount() const { return m_rows; }
    /// The cell at (row, col), in range.
    Cell at(int row, int col) const
    {
        const std::vector<Cell> &column = columns[std::size_t(col)];
        return column.empty() ? Cell() : column[std::size_t(row)];
    }
    /// Stores \a cell at (row, col), releasing what was there.
    void put(int row, int col, Cell cell);
    /// Stores \a cell in an empty (row, col): what a reader filling fresh
    /// rows writes, with nothing to release.
    void fill(int row, int col, Cell cell)
    {
        if (cell == Cell())
            return;
        std::vector<Cell> &column = columns[std::size_t(col)];
        if (column.empty())
            allocate(column);
        column[std::size_t(row)] = cell;
    }
    /// Appends one row of empty cells and returns its index.
    int appendRow();
    /// Reserves room for \a rows rows.
    void reserveRows(int rows);
    /// The interner for UTF-8 texts (made on first use).
    Utf8Interner &interner();
    /// The cell for a whole number (pooled text beyond the typed range).
    Cell numberCell(qint64 value)
    {
        return value < Cell::Limit && value > -Cell::Limit ? Cell::number(value) : pooled(QString::number(value));
    }
    /// The cell for an amount (pooled text when it has no typed form).
    Cell amountCell(Currency value)
    {
        bool fits = false;
        const Cell cell = Cell::amount(value, &fits);
        return fits ? cell : pooled(value.toString());
    }
    /// A pooled text cell.
    Cell pooled(const QString &text) { return Cell::text(pool.intern(text)); }
    /// The cell for UTF-8 text of column \a col; typed when the text is a
    /// canonical number, amount or day, else pooled (one reference taken).
    Cell utf8Cell(int col, const char *bytes, int size);
    /// Drops the interner and the references it held.
    void dropInterner() { m_interner.reset(); }
    /// Takes the rows away (the columns and the pool are left empty).
    void clear();

    int cols;
    TextPool pool;
    /// One per column: empty, or one cell a row.
    std::vector<std::vector<Cell>> columns;

private:
    void allocate(std::vector<Cell> &column);

    int m_rows = 0;
    std::size_t m_reserved = 0;
    std::unique_ptr<Utf8Interner> m_interner;
};

} // namespace kx
