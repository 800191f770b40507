#include "ledger/MonthTotals.h"

#include "grid/ColumnReader.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"
#include "ledger/RowAmounts.h"

#include <QDate>

#include <climits>

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

// A sum of amounts kept exact in 128 bits: no overflow check per addition, the range
// looked at once at the end. An invalid amount (a figure too wide) makes the
// sum invalid.
struct Sum {
    __int128 value = 0;
    bool bad = false;

    void add(Currency amount)
    {
        bad |= !amount.isValid();
        value += amount.raw();
    }
    void take(const Sum &other)
    {
        bad |= other.bad;
        value += other.value;
    }
    Currency currency(bool negate = false) const
    {
        const __int128 v = negate ? -value : value;
        return bad || v > INT64_MAX || v <= INT64_MIN ? Currency::invalid() : Currency::fromRaw(std::int64_t(v));
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
    std::array<Sum, 12> moved{}, in{}, out{};
    Sum before;
    std::array<int, 12> firstRows;
    firstRows.fill(-1);
    MonthOfDay at;
    for (int row = first; row < grid.rows(); ++row) {
        if (read.read(row) != RowAmounts::Record)
            continue;
        const Cell day = dates.at(row);
        if (day.kind() != Cell::Day)
            continue;
        at.place(day.payload());
        if (at.year < m_year) {
            before.add(read.debit);
            before.add(-read.credit);
            continue;
        }
        if (at.year > m_year) {
            // A later year: everything counted so far is brought into it.
            for (const Sum &change : moved)
                before.take(change);
            moved.fill(Sum());
            in.fill(Sum());
            out.fill(Sum());
            firstRows.fill(-1);
            m_year = at.year;
        }
        const std::size_t m = std::size_t(at.month - 1);
        moved[m].add(read.debit);
        moved[m].add(-read.credit);
        if (row == first)
            continue;
        in[m].add(read.debit);
        out[m].add(read.credit);
        if (firstRows[m] < 0)
            firstRows[m] = row;
    }
    const bool creditSide = book.state().balanceSide() == BalanceSide::Credit;
    m_opening = before.currency(creditSide);
    Sum balance = before;
    for (std::size_t m = 0; m < m_months.size(); ++m) {
        balance.take(moved[m]);
        // Receipts are what the book's own side takes in, as vouchers group
        // them: the credits of a 贷 book.
        m_months[m] = {creditSide ? out[m].currency() : in[m].currency(), creditSide ? in[m].currency() : out[m].currency(),
                       balance.currency(creditSide), firstRows[m]};
    }
}

const MonthTotals::Month &MonthTotals::month(int month) const
{
    return month >= 1 && month <= 12 ? m_months[std::size_t(month - 1)] : m_none;
}

} // namespace kx
