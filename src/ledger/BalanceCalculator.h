#pragma once

#include "ledger/Book.h"
#include "grid/Cell.h"
#include "kxjournal/Currency.h"

namespace kx {

class ColumnReader;
class Sheet;
struct LedgerState;

/// Running balances down the journal grid, in fixed-point currency.
///
/// Record rows get their balance, foreign balance and direction; summary rows
/// get their period and cumulative totals (two lines) and carry the balance
/// through; blank rows are cleared and skipped. A pass starts at the first
/// data row or at the last summary row, never in between.
///
/// Balances are derived values (Sheet::setDerivedAmount()): they are not
/// recorded for undo, which works them out again, and a pass announces them
/// to views once. A pass reads the typed cells of each row directly, so a
/// million rows cost a few milliseconds.
class BalanceCalculator
{
public:
    /// Works on \a book.
    explicit BalanceCalculator(Book &book);

    /// Recalculates from \a startRow (0: the current row) to the last row.
    /// A summary row anchors the pass only while it holds the totals of a
    /// pass; one as loaded makes the pass start at the first data row.
    void calculate(int startRow);
    /// Recalculates after rows from \a row on changed: from the last summary
    /// row when the change lies below it, else from the first data row.
    void recalculateFrom(int row);
    /// Works the balances, foreign balances and directions of every row out
    /// again from the amounts, leaving the summary rows' totals as they are:
    /// after undo or redo has put back what the user did.
    void rederive();

    /// The two figures of a summary cell: the line before the first CR and
    /// the one after the first LF (zero when missing or not a figure).
    static void twoLines(const QString &text, Currency &first, Currency &second);

private:
    struct Totals {
        Currency periodDebit, periodCredit, cumDebit, cumCredit;
        Currency periodFxDebit, periodFxCredit, cumFxDebit, cumFxCredit;
        Currency balance, fxBalance;
    };

    bool holdsTotals(int row) const;
    void readSummary(int row, Totals &t) const;
    void writeSummary(int row, Totals &t);
    void writeDirection(int row, Cell dir);
    void writeBalance(int row, Cell dir, const Totals &t);
    void writeFigure(ColumnReader &cells, int row, Currency value);
    void clearBalance(int row, Cell dir);
    struct Peak {
        int row = -1;
        Currency size;
        bool negative = false;
    };
    static void notePeak(Peak &peak, int row, Currency value)
    {
        // Most balances are narrower than the widest so far, or as wide and
        // not negative, which keeps the first: two compares.
        const std::int64_t raw = value.raw(), size = peak.size.raw();
        if (peak.row >= 0 && raw <= size && (raw > -size || raw >= 0))
            return;
        widerPeak(peak, row, value);
    }
    static void widerPeak(Peak &peak, int row, Currency value);
    /// Notes \a peak as the widest figure of column \a col for views to fit
    /// to; a pass from row \a startRow saw only the rows from there down.
    void keepPeak(int col, const Peak &peak, int startRow);
    QString pair(Currency first, Currency second) const;

    Book &m_book;
    Sheet &m_grid;
    const LedgerState &m_state;
    int m_debit, m_credit, m_forex, m_dir, m_balance, m_fxBalance, m_tag, m_outline;
    ColumnReader *m_balanceCells = nullptr, *m_fxBalanceCells = nullptr;  ///< during a pass
    Cell m_dirCell;          ///< the cell of a row holding the book's direction
    bool m_dirKnown = false;
    bool m_keepTotals = false;
    Peak m_peak, m_fxPeak;  ///< the widest balance and foreign balance of the pass
};

} // namespace kx
