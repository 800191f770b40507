#pragma once

#include <utility>

namespace kx {

struct EditContext;

/// The order a bookkeeper types a record in: date, account, explanation,
/// debit, credit, then the other columns that may be typed into, as they
/// stand on screen. Tab goes to the next of them (after the last, to the
/// next row's date); Enter does the same, except that from an amount on it
/// starts the next row.
class EntryOrder
{
public:
    /// Where Tab (\a backwards: Shift+Tab) or Enter (\a enter) goes from
    /// grid cell (\a row, \a col); (-1, -1) when the grid's own order applies.
    static std::pair<int, int> next(const EditContext &ctx, int row, int col, bool backwards, bool enter);
};

} // namespace kx
