#include "ledger/BalanceCalculator.h"

#include "grid/GridBusy.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"

namespace kx {

namespace {

const QString LineBreak = QStringLiteral("\r\n");

// The grid leaves a cell alone when it already holds the figure, so a
// recalculation that mostly finds the figures it would write costs no redraw.
void writeAmount(Sheet &grid, int row, int col, Currency value)
{
    grid.setAmount(row, col, value);
}

Currency amountAt(const Sheet &grid, int row, int col)
{
    return grid.amount(row, col);
}

} // namespace

void BalanceCalculator::twoLines(const QString &text, Currency &first, Currency &second)
{
    const int cr = int(text.indexOf(QLatin1Char('\r')));
    const int lf = int(text.indexOf(QLatin1Char('\n')));
    const QStringView whole(text);
    first = Currency::fromText(cr < 0 ? whole : whole.left(cr)).valueOr(Currency());
    second = lf < 0 ? Currency() : Currency::fromText(whole.mid(lf + 1)).valueOr(Currency());
}

BalanceCalculator::BalanceCalculator(Sheet &grid, const LedgerState &state)
    : m_grid(grid), m_state(state), m_outline(state.outlineColumn(grid))
{
    const JournalColumns columns(grid);
    m_debit = columns[JournalColumns::Debit];
    m_credit = columns[JournalColumns::Credit];
    m_forex = columns[JournalColumns::Forex];
    m_dir = columns[JournalColumns::Dir];
    m_balance = columns[JournalColumns::Balance];
    m_fxBalance = columns[JournalColumns::fxBalance];
    m_tag = columns[JournalColumns::Tag];
}

QString BalanceCalculator::pair(Currency first, Currency second) const
{
    return first.format(m_state.fields.accountFormat) + LineBreak + second.format(m_state.fields.accountFormat);
}

bool BalanceCalculator::holdsTotals(int row) const
{
    // Totals are written as two lines in both amount cells.
    return BookRow::isSummaryCell(m_grid, row, m_tag) && !m_grid.isEmpty(row, m_outline) &&
           m_grid.text(row, m_debit).contains(QLatin1Char('\n')) &&
           m_grid.text(row, m_credit).contains(QLatin1Char('\n'));
}

void BalanceCalculator::readSummary(int row, Totals &t) const
{
    twoLines(m_grid.text(row, m_debit), t.periodDebit, t.cumDebit);
    twoLines(m_grid.text(row, m_credit), t.periodCredit, t.cumCredit);
    twoLines(m_grid.text(row, m_forex), t.periodFxDebit, t.periodFxCredit);
    twoLines(m_grid.cellData(row, m_forex).toString(), t.cumFxDebit, t.cumFxCredit);
    t.balance = t.cumDebit - t.cumCredit;
    t.fxBalance = t.cumFxDebit - t.cumFxCredit;
}

void BalanceCalculator::writeSummary(int row, Totals &t)
{
    m_grid.setText(row, m_debit, pair(t.periodDebit, t.cumDebit));
    m_grid.setText(row, m_credit, pair(t.periodCredit, t.cumCredit));
    m_grid.setText(row, m_forex, pair(t.periodFxDebit, t.periodFxCredit));
    m_grid.setCellData(row, m_forex, pair(t.cumFxDebit, t.cumFxCredit));
    m_grid.setCellForeColor(row, m_debit, row, m_debit, m_state.looks.summaryForeColor);
    m_grid.setCellForeColor(row, m_credit, row, m_credit, m_state.looks.summaryForeColor);
    t.periodDebit = t.periodCredit = t.periodFxDebit = t.periodFxCredit = Currency();
}

void BalanceCalculator::writeBalance(int row, const Totals &t)
{
    const bool debitBook = m_state.balanceSide() == BalanceSide::Debit;
    const bool creditBook = m_state.balanceSide() == BalanceSide::Credit;
    m_grid.setText(row, m_dir, balanceSideText(m_state.balanceSide()));
    writeAmount(m_grid, row, m_balance, debitBook || creditBook ? t.balance.abs() : t.balance);
    const bool highlight = (debitBook && t.balance.sign() > 0) || (creditBook && t.balance.sign() < 0);
    // Clearing a colour that was never set costs nothing; only set it when needed.
    m_grid.setCellForeColor(row, m_balance, highlight ? m_state.looks.highlightForeColor : QColor());
    writeAmount(m_grid, row, m_fxBalance, t.fxBalance);
}

void BalanceCalculator::recalculateFrom(int row)
{
    const int first = m_grid.fixedRows();
    calculate(row > m_state.lastSumRow && row > first ? row : first);
}

void BalanceCalculator::calculate(int startRow)
{
    const int first = m_grid.fixedRows();
    if (m_grid.rows() <= first)
        return;
    GridBusy busy(m_grid, QStringLiteral("Calculate"));
    if (startRow == 0)
        startRow = m_grid.row();
    // A change below the last summary row starts from its totals; one above
    // it changes those totals too, so the pass starts from the top.
    if (startRow != m_state.lastSumRow && startRow > first)
        startRow = startRow > m_state.lastSumRow ? m_state.lastSumRow : first;
    if (startRow < first || startRow >= m_grid.rows())
        startRow = first;
    // Totals are only read from a summary row that holds them; a stale anchor,
    // or one as loaded (the database keeps no totals), starts over.
    if (startRow != first && !holdsTotals(startRow))
        startRow = first;

    Totals t;
    int row = startRow;
    if (startRow != first) {
        readSummary(startRow, t);
        ++row;
    }
    const int last = m_grid.rows();
    for (; row < last; ++row) {
        if (m_grid.isEmpty(row, m_outline)) {
            m_grid.setText(row, m_dir, QString());
            m_grid.setText(row, m_balance, QString());
            m_grid.setText(row, m_fxBalance, QString());
            continue;
        }
        if (BookRow::isSummaryCell(m_grid, row, m_tag)) {
            writeSummary(row, t);
        } else {
            const Currency debit = amountAt(m_grid, row, m_debit);
            const Currency credit = amountAt(m_grid, row, m_credit);
            const Currency forex = amountAt(m_grid, row, m_forex);
            t.periodDebit += debit;
            t.cumDebit += debit;
            t.periodCredit += credit;
            t.cumCredit += credit;
            t.balance += debit - credit;
            // A zero foreign amount goes to the credit side, where it changes nothing.
            if (forex.sign() > 0) {
                t.periodFxDebit += forex;
                t.cumFxDebit += forex;
            } else {
                t.periodFxCredit -= forex;
                t.cumFxCredit -= forex;
            }
            t.fxBalance += forex;
        }
        writeBalance(row, t);
    }
}

} // namespace kx
