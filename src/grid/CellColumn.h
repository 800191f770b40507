#pragma once

#include "grid/Cell.h"

#include <algorithm>
#include <vector>

namespace kx {

class TextPool;

/// One column of the grid's cells, in one of two forms: dense, one cell a
/// row, or listed: one cell that every row holds but the few listed. Most
/// columns of a book are one of the two: amounts, dates and keys differ row
/// by row, while directions, foreign figures, spare fields and marks hold
/// one value nearly everywhere. A listed column that gets many differing
/// cells turns dense; compact() lists it again.
///
/// A text cell holds one reference into the pool, and so does the common
/// cell of a listed column, however many rows it stands for.
class CellColumn
{
public:
    /// A row whose cell differs from the common one.
    struct Listed {
        int row;
        Cell cell;
    };
    /// Where index \a i ends up when the entry at \a from moves to \a to.
    static int movedRow(int i, int from, int to);
    /// Most rows a listed column lists before it turns dense.
    static constexpr std::size_t MaxListed = 1024;

    /// The cell of \a row (in range).
    Cell at(int row) const
    {
        if (!m_cells.empty())
            return m_cells[std::size_t(row)];
        const auto it = find(row);
        return it != m_listed.end() && it->row == row ? it->cell : m_common;
    }
    /// The cells, one a row, when the column is dense; nullptr when listed.
    const Cell *dense() const { return m_cells.empty() ? nullptr : m_cells.data(); }
    /// The cell of every row not listed (a listed column).
    Cell common() const { return m_common; }
    /// The rows listed, by row (a listed column).
    const std::vector<Listed> &listed() const { return m_listed; }

    /// Makes \a next, with the reference it holds, the cell of \a row of
    /// \a rows, releasing what the row held. True when the column's layout
    /// moved.
    bool put(int row, Cell next, int rows, TextPool &pool);
    /// Inserts \a count empty rows before \a at; the column had \a rows.
    void insertRows(int at, int count, int rows, TextPool &pool);
    /// Removes rows \a at … at + count − 1 (their texts released already).
    void removeRows(int at, int count);
    /// Moves row \a from so that it ends up at \a to.
    void moveRow(int from, int to);
    /// Grows (with empty rows) or shrinks from \a rows to \a to rows; the
    /// texts of rows cut away are released already.
    void resize(int rows, int to, TextPool &pool);
    /// Releases the texts of rows \a first … last − 1 (not the common cell's).
    void releaseTexts(int first, int last, TextPool &pool) const;
    /// Releases every text, the common cell's too, and empties the column.
    void clear(int rows, TextPool &pool);
    /// Moves the texts of the first \a rows rows into \a to (the pool they
    /// were in is about to go); rows past them are dropped.
    void moveTexts(int rows, const TextPool &from, TextPool &to);
    /// The column as one cell a row, for writing in place.
    std::vector<Cell> &cells(int rows, TextPool &pool);
    /// Lists the column again when few of its \a rows differ from one cell.
    /// True when it did.
    bool compact(int rows, TextPool &pool);
    /// Whether the column turned dense since it was last compacted.
    bool grown() const { return m_grown; }
    /// Bytes held.
    std::size_t bytes() const { return m_cells.capacity() * sizeof(Cell) + m_listed.capacity() * sizeof(Listed); }

private:
    std::vector<Listed>::const_iterator find(int row) const
    {
        return std::lower_bound(m_listed.begin(), m_listed.end(), row, [](const Listed &l, int r) { return l.row < r; });
    }
    static std::size_t limit(int rows) { return std::min<std::size_t>(MaxListed, std::max<std::size_t>(8, std::size_t(rows) / 8)); }
    void densify(int rows, TextPool &pool);
    void listEmpty(int first, int count, int rows, TextPool &pool);

    std::vector<Cell> m_cells;     ///< dense: one a row
    Cell m_common;                 ///< listed: every other row's cell
    std::vector<Listed> m_listed;  ///< listed: the rows that differ, by row
    bool m_grown = false;
};

} // namespace kx
