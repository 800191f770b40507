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
    /// Drops the interner and the references it held.
    void dropInterner() { m_interner.reset(); }

    int cols;
    TextPool pool;
    std::vector<std::unique_ptr<Cell[]>> rows;

private:
    std::unique_ptr<Utf8Interner> m_interner;
};

} // namespace kx
