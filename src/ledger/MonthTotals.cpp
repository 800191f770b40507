#include "ledger/MonthTotals.h"

#include "grid/ColumnReader.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"
#include "ledger/RowAmounts.h"

#include <QDate>

namespace kx {

namespace {

// Days are Julian day numbers; most rows fall in the month of the row before,
// so a row costs two compares and the calendar is asked once a month.
struct MonthOfDay {
    qint64 from = 1, to = 0;  ///< the days of the month last asked: [from, to]
    int year = 0, month = 0;

    void place(qint64 day)
    {
        if (day >= from && day <= to)
            return;
        const QDate date = QDate::fromJulianDay(day);
        year = date.year();
        month = date.month();
        from = QDate(year, month, 1).toJulianDay();
        to = from + date.daysInMonth() - 1;
    }
};

} // namespace

MonthTotals::MonthTotals(const Book &book)
{
    const Sheet &grid = book.sheet();
    const int first = grid.fixedRows();
    const int dateCol = book.columns()[JournalColumns::JnlDate];
    if (dateCol < 0)
        return;
    RowAmounts read(book);
    ColumnReader dates(grid.cellStore(), dateCol);
    // What the rows of each month move the balance by; the opening row
    // counts here but is no receipt or payment.
    std::array<Currency, 12> moved{};
    MonthOfDay at;
    for (int row = first; row < grid.rows(); ++row) {
        if (read.read(row) != RowAmounts::Record)
            continue;
        const Cell day = dates.at(row);
        if (day.kind() != Cell::Day)
            continue;
        at.place(day.payload());
        if (at.year < m_year) {
            m_opening = m_opening + (read.debit - read.credit);
            continue;
        }
        if (at.year > m_year) {
            // A later year: everything counted so far is brought into it.
            for (const Currency &change : moved)
                m_opening = m_opening + change;
            moved.fill(Currency());
            m_months.fill(Month());
            m_year = at.year;
        }
        const std::size_t m = std::size_t(at.month - 1);
        moved[m] = moved[m] + (read.debit - read.credit);
        if (row == first)
            continue;
        Month &month = m_months[m];
        month.receipts = month.receipts + read.debit;
        month.payments = month.payments + read.credit;
        if (month.firstRow < 0)
            month.firstRow = row;
    }
    const bool creditSide = book.state().balanceSide() == BalanceSide::Credit;
    if (creditSide)
        m_opening = Currency() - m_opening;
    Currency balance = m_opening;
    for (std::size_t m = 0; m < m_months.size(); ++m) {
        balance = creditSide ? balance - moved[m] : balance + moved[m];
        m_months[m].closing = balance;
    }
}

const MonthTotals::Month &MonthTotals::month(int month) const
{
    return month >= 1 && month <= 12 ? m_months[std::size_t(month - 1)] : m_none;
}

} // namespace kx
