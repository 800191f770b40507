#pragma once

namespace kx {

class Sheet;
class JournalColumns;
struct RowLooks;

/// How each kind of row looks on the grid: closed rows in the locked colour,
/// summary rows bold and taller.
class RowLook
{
public:
    /// Locks or unlocks a row: its Locked cell and the text colour of its cells.
    static void setLocked(Sheet &grid, const JournalColumns &columns, const RowLooks &looks, int row,
                          bool locked);
    /// Marks a row as a summary row on the grid: subtotal node, bold, summary height.
    static void markSummary(Sheet &grid, const RowLooks &looks, int row);
};

} // namespace kx
