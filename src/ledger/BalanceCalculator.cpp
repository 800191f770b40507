#include "ledger/BalanceCalculator.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"
#include "ledger/RowAmounts.h"
#include "grid/ColumnReader.h"

#include <algorithm>

namespace kx {

namespace {

const QString LineBreak = QStringLiteral("\r\n");

} // namespace

void BalanceCalculator::twoLines(const QString &text, Currency &first, Currency &second)
{
    const int cr = int(text.indexOf(QLatin1Char('\r')));
    const int lf = int(text.indexOf(QLatin1Char('\n')));
    const QStringView whole(text);
    first = Currency::fromText(cr < 0 ? whole : whole.left(cr)).valueOr(Currency());
    second = lf < 0 ? Currency() : Currency::fromText(whole.mid(lf + 1)).valueOr(Currency());
}

BalanceCalculator::BalanceCalculator(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_outline(m_state.outlineColumn(m_grid))
{
    const JournalColumns columns = book.columns();
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

void BalanceCalculator::writeDirection(int row, Cell dir)
{
    if (m_dir < 0 || (m_dirKnown && dir == m_dirCell))
        return;
    const QString direction = balanceSideText(m_state.balanceSide());
    if (m_grid.text(row, m_dir) != direction)
        m_grid.setText(row, m_dir, direction);
    // Each text is pooled once, so every row holding the book's direction
    // holds these bits: the rest of the pass compares bits only.
    m_dirCell = m_grid.cell(row, m_dir);
    m_dirKnown = true;
}

void BalanceCalculator::writeBalance(int row, Cell dir, const Totals &t)
{
    const bool debitBook = m_state.balanceSide() == BalanceSide::Debit;
    const bool creditBook = m_state.balanceSide() == BalanceSide::Credit;
    writeDirection(row, dir);
    writeFigure(*m_balanceCells, row, debitBook || creditBook ? t.balance.abs() : t.balance);
    notePeak(m_peak, row, t.balance);
    notePeak(m_fxPeak, row, t.fxBalance);
    m_grid.setDerivedMark(row, (debitBook && t.balance.sign() > 0) || (creditBook && t.balance.sign() < 0));
    writeFigure(*m_fxBalanceCells, row, t.fxBalance);
}

void BalanceCalculator::writeFigure(ColumnReader &cells, int row, Currency value)
{
    // Most figures below a change move; in a column of one figure (a
    // foreign balance of a book kept in one currency) none does, and a
    // figure that stays is not written.
    bool fits = false;
    const Cell cell = Cell::amount(value, &fits);
    if (!fits || cells.at(row) != cell)
        m_grid.setDerivedAmount(row, cells.col(), value);
}

void BalanceCalculator::widerPeak(Peak &peak, int row, Currency value)
{
    // A negative figure shows its sign: the magnitude decides, ties go to the negative.
    const Currency size = value.abs();
    if (peak.row < 0 || peak.size < size || (peak.size == size && value.sign() < 0 && !peak.negative))
        peak = {row, size, value.sign() < 0};
}

void BalanceCalculator::keepPeak(int col, const Peak &peak, int startRow)
{
    if (col < 0)
        return;
    if (startRow <= m_grid.fixedRows()) {
        m_grid.setDerivedPeak(col, peak.row);
        return;
    }
    // The rows above the pass kept their figures: the figure noted there
    // stands unless this pass found a wider one. A figure noted among the
    // rows just worked out may have shrunk, and what is widest above is not
    // known: nothing is noted, and a fit reads the column.
    const int noted = m_grid.derivedPeak(col);
    if (noted < 0 || noted >= startRow) {
        m_grid.setDerivedPeak(col, -1);
        return;
    }
    const Currency there = m_grid.amount(noted, col);
    Peak kept{noted, there.abs(), there.sign() < 0};
    if (peak.row >= 0 && (kept.size < peak.size || (kept.size == peak.size && peak.negative && !kept.negative)))
        kept = peak;
    m_grid.setDerivedPeak(col, kept.row);
}

void BalanceCalculator::clearBalance(int row, Cell dir)
{
    if (dir.kind() != Cell::Empty)
        m_grid.setText(row, m_dir, QString());
    m_grid.clearDerived(row, m_balance);
    m_grid.clearDerived(row, m_fxBalance);
    m_grid.setDerivedMark(row, false);
}

void BalanceCalculator::recalculateFrom(int row)
{
    const int first = m_grid.fixedRows();
    calculate(row > m_state.lastSumRow && row > first ? row : first);
}

void BalanceCalculator::rederive()
{
    m_keepTotals = true;
    calculate(m_grid.fixedRows());
    m_keepTotals = false;
}

void BalanceCalculator::calculate(int startRow)
{
    const int first = m_grid.fixedRows();
    if (m_grid.rows() <= first)
        return;
    // Summary rows' totals are ordinary writes; the grid's change handlers
    // stand aside for them. Balances are derived: written without a record
    // or a signal each, and announced once at the end.
    const QString tag = m_grid.tag();
    m_grid.setTag(QStringLiteral("Calculate"));
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
    m_grid.setDerivedMarkColumn(m_balance, m_state.looks.highlightForeColor);

    Totals t;
    int row = startRow;
    if (startRow != first) {
        readSummary(startRow, t);
        ++row;
    }
    const int last = m_grid.rows();
    RowAmounts read(m_book);
    ColumnReader dir(m_grid.cellStore(), m_dir);
    ColumnReader balance(m_grid.cellStore(), m_balance), fxBalance(m_grid.cellStore(), m_fxBalance);
    m_balanceCells = &balance;
    m_fxBalanceCells = &fxBalance;
    for (; row < last; ++row) {
        const RowAmounts::Kind kind = read.read(row);
        if (kind == RowAmounts::Blank) {
            clearBalance(row, dir.at(row));
            continue;
        }
        if (kind == RowAmounts::Summary) {
            if (!m_keepTotals)
                writeSummary(row, t);
        } else {
            t.periodDebit += read.debit;
            t.cumDebit += read.debit;
            t.periodCredit += read.credit;
            t.cumCredit += read.credit;
            t.balance += read.debit - read.credit;
            // A zero foreign amount goes to the credit side, where it changes nothing.
            if (read.forex.sign() > 0) {
                t.periodFxDebit += read.forex;
                t.cumFxDebit += read.forex;
            } else {
                t.periodFxCredit -= read.forex;
                t.cumFxCredit -= read.forex;
            }
            t.fxBalance += read.forex;
        }
        writeBalance(row, dir.at(row), t);
    }
    m_balanceCells = m_fxBalanceCells = nullptr;
    m_grid.setTag(tag);
    // A whole pass saw every balance: what it found bounds them until the
    // sheet changes again. An overflow stays invalid to the end of the pass.
    if (startRow == first) {
        const bool overflowed = !t.balance.isValid() || !t.fxBalance.isValid();
        m_book.noteBalancePeak(overflowed ? __int128(INT64_MAX) * 4
                                          : std::max<__int128>(m_peak.size.raw(), m_fxPeak.size.raw()));
    }
    keepPeak(m_balance, m_peak, startRow);
    keepPeak(m_fxBalance, m_fxPeak, startRow);
    // The worked-out columns this grid has, wherever they sit.
    int left = -1, right = -1;
    for (int col : {m_dir, m_balance, m_fxBalance}) {
        if (col < 0)
            continue;
        left = left < 0 ? col : std::min(left, col);
        right = std::max(right, col);
    }
    if (left >= 0)
        m_grid.announceDerived(startRow, left, last - 1, right);
}

} // namespace kx
