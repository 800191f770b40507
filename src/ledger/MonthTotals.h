#pragma once

#include "kxjournal/Currency.h"

#include <array>

namespace kx {

class Book;

/// The book's year month by month, as the side panel's chart shows it:
/// receipts and payments of each month and the balance at its end.
///
/// The year is the latest year any record is dated in (a book running
/// across a new year shows the new one). Receipts are the amounts on the
/// book's own side (the debits; the credits of a 贷 book) and payments those
/// on the other, of the records dated in the month. The balance at a
/// month's end is what the balance pass would run to there: every record
/// dated up to the month's last day, the opening row included (it counts
/// toward the balance, never as a receipt or payment, nor as a month's first
/// record); summary rows count nothing and rows without a day are passed
/// over. In a book whose rows stand out of date order, a month's balance is
/// still the sum of what is dated up to its end. The balance is taken on
/// the book's own side: debit minus credit, credit minus debit for a 贷
/// book. A month without records carries the balance before it.
///
/// One pass over the typed cells (RowAmounts and the date column), so a
/// million rows cost a few milliseconds; the figures stay fixed point.
class MonthTotals
{
public:
    struct Month {
        Currency receipts, payments, closing;
        int firstRow = -1;  ///< the month's first record in the grid; -1: none
    };

    /// Works the figures out from \a book as it is now.
    explicit MonthTotals(const Book &book);

    /// The year shown; 0 when no record has a day.
    int year() const { return m_year; }
    /// Month \a month (1…12); an empty month out of range.
    const Month &month(int month) const;
    /// The balance brought into the year (rows dated before it).
    Currency opening() const { return m_opening; }

private:
    int m_year = 0;
    Currency m_opening;
    std::array<Month, 12> m_months{};
    Month m_none;
};

} // namespace kx
