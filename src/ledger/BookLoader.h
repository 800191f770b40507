#pragma once

namespace kx {

class GridModel;
struct BookState;

/// Opens a book: reads its records (or those of the consolidated journal)
/// with one query, fills the grid in one call and dresses the rows.
class BookLoader
{
public:
    /// How a load ended.
    enum Outcome {
        Cancelled,  ///< the host said no; nothing changed
        Failed,     ///< the records could not be read; the grid is as it was
        Empty,      ///< the book has no records: ten rows with the opening row
        Loaded      ///< the records are in the grid
    };

    /// Works on \a grid for the book in \a book (whose context must be set).
    BookLoader(GridModel &grid, BookState &book);

    /// Loads book \a docId (0: the current book).
    Outcome load(int docId);

private:
    void fillEmptyBook();
    void mergeMonths();
    void dressRows();
    void labelRows();

    GridModel &m_grid;
    BookState &m_book;
};

} // namespace kx
