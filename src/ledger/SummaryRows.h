#pragma once

namespace kx {

class GridModel;
struct BookState;

/// Summary rows: sub-total rows (小结) that close a run of records with
/// their totals and lock the records above them.
class SummaryRows
{
public:
    /// Works on \a grid for the book in \a book.
    SummaryRows(GridModel &grid, BookState &book);

    /// Inserts a sub-total row below \a row without asking the host or
    /// recalculating: its date and label come from \a row, it becomes the
    /// last summary row when it lies lower, and every row from it up to the
    /// first data row is locked. Returns the new row's index.
    int insertBelow(int row);

private:
    GridModel &m_grid;
    BookState &m_book;
};

} // namespace kx
