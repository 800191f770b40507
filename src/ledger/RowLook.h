#pragma once

namespace kx {

class GridModel;
struct BookState;

/// What kind of row a grid row is, and how each kind looks.
///
/// A summary row has a negative Tag; a blank row has an empty cell in the
/// OutlineKey column (the date column when no OutlineKey is set); every other
/// row is a record row, the opening-balance row included.
class RowLook
{
public:
    /// True for a summary row (Tag below 0).
    static bool isSummary(const GridModel &grid, int row);
    /// True for a blank row.
    static bool isBlank(const GridModel &grid, const BookState &book, int row);
    /// The column that tells blank rows (OutlineKey, or JnlDate when none is set).
    static int outlineColumn(const GridModel &grid, const BookState &book);
    /// Locks or unlocks a row: its Locked cell and the text colour of its cells.
    static void setLocked(GridModel &grid, const BookState &book, int row, bool locked);
    /// Marks a row as a summary row on the grid: subtotal node, bold, summary height.
    static void markSummary(GridModel &grid, const BookState &book, int row);
};

} // namespace kx
