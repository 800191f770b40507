#pragma once

#include "kxjournal/Result.h"

#include <QString>

namespace kx {

class GridModel;
struct BookState;

/// Stores the grid's records: deletes the rows taken out since the last
/// save, writes every dated row (updated in place, or added with its new key
/// brought back into the grid), all in one transaction. A pass that fails
/// leaves the database as it was, the grid's keys unchanged, the removed
/// rows still waiting and the grid still dirty.
class BookSaver
{
public:
    /// Works on \a grid for the book in \a book.
    BookSaver(GridModel &grid, BookState &book);

    /// The whole save: refuses a consolidated journal, asks the host, writes
    /// when dirty, then notifies the context (\a instance tells this control
    /// from others) and reports "已存储“\a caption”的记录;".
    bool save(const QString &caption, int instance);

private:
    Status writeRecords();

    GridModel &m_grid;
    BookState &m_book;
};

} // namespace kx
