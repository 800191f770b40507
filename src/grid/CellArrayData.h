#pragma once

#include "grid/Cell.h"
#include "grid/TextPool.h"

#include <memory>
#include <vector>

namespace kx {

/// What a CellArray holds: rows of cells whose texts live in its own pool.
/// A grid adopts the rows (and, when it takes everything, the pool).
class CellArrayData
{
public:
    CellArrayData(int rows, int cols);
    CellArrayData(const CellArrayData &other);

    /// Releases a cell's text reference and empties it.
    void clearCell(Cell &cell);
    /// Stores \a cell at (row, col), releasing what was there.
    void put(int row, int col, Cell cell);
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
    /// The cells of row \a row, to be filled in place (they start empty).
    Cell *rowCells(int row) { return rows[std::size_t(row)].get(); }
    /// Drops the interner and the references it held.
    void dropInterner() { m_interner.reset(); }

    int cols;
    TextPool pool;
    std::vector<std::unique_ptr<Cell[]>> rows;

private:
    std::unique_ptr<Utf8Interner> m_interner;
};

} // namespace kx
