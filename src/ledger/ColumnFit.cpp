#include "ledger/ColumnFit.h"

#include "kxjournal/Currency.h"
#include "grid/CellStore.h"
#include "grid/Sheet.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"

#include <QStringList>
#include <algorithm>

namespace kx {

ColumnFit::ColumnFit(Book &book, Measure measure)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_measure(std::move(measure))
{
}

QFont ColumnFit::fontAt(int row, int col) const
{
    const QVariant font = m_grid.data(m_grid.indexAt(row, col), Qt::FontRole);
    return font.isValid() ? font.value<QFont>() : m_grid.font();
}

int ColumnFit::measureCell(int row, int col) const
{
    const QString shown = m_grid.data(m_grid.indexAt(row, col), Qt::DisplayRole).toString();
    const QFont font = fontAt(row, col);
    int widest = 0;
    for (const QString &line : shown.split(QLatin1Char('\n')))
        widest = std::max(widest, m_measure(line, font));
    return widest;
}

int ColumnFit::figureWidth(int col, int first, int last) const
{
    first = std::max(first, m_grid.fixedRows());
    last = last < 0 ? m_grid.rows() - 1 : std::min(last, m_grid.rows() - 1);
    int largestRow = -1;
    Currency largest;
    int widest = 0;
    // Without a format a figure shows as typed: the longest text may not be the largest.
    const bool asTyped = m_grid.colFormat(col).isEmpty();
    int longestRow = -1;
    qsizetype longest = 0;
    if (col < 0 || col >= m_grid.cols())
        return 0;
    // A worked-out column knows its widest figure from the last pass: a long
    // range of it is measured there, not read row by row.
    if (const int peak = m_grid.derivedPeak(col); peak >= 0 && last - first > PeakRange)
        first = last = peak;
    const CellStore &store = m_grid.cellStore();
    for (int r = first; r <= last; ++r) {
        // Eight bytes a cell: most cells are typed figures, read as they are.
        const Cell cell = store.cell(r, col);
        if (cell.kind() == Cell::Empty)
            continue;
        if (m_grid.isSubtotal(r)) {
            // Two-line totals, few of them: measured as shown.
            widest = std::max(widest, measureCell(r, col));
            continue;
        }
        if (asTyped) {
            const qsizetype length = m_grid.text(r, col).size();
            if (length > longest) {
                longest = length;
                longestRow = r;
            }
        }
        const Currency v = cell.kind() == Cell::Number || cell.kind() == Cell::Amount ? cell.typedAmount().abs()
                                                                                      : m_grid.amount(r, col).abs();
        if (largestRow < 0 || largest < v) {
            largest = v;
            largestRow = r;
        }
    }
    if (largestRow >= 0) {
        // The sign counts too: measured as the largest magnitude would show negative.
        widest = std::max(widest, measureCell(largestRow, col));
        const QString format = m_grid.colFormat(col);
        widest = std::max(widest, m_measure((-largest).format(format), fontAt(largestRow, col)));
    }
    if (longestRow >= 0)
        widest = std::max(widest, measureCell(longestRow, col));
    return widest == 0 ? 0 : widest + Padding;
}

void ColumnFit::fitFigures(int first, int last, int left, int right)
{
    const JournalColumns columns(m_grid);
    for (JournalColumns::Column which : {JournalColumns::Debit, JournalColumns::Credit, JournalColumns::Rate,
                                         JournalColumns::Forex, JournalColumns::Balance, JournalColumns::fxBalance}) {
        const int col = columns[which];
        if (col < m_grid.fixedCols() || m_grid.isColHidden(col) || col < left || (right >= 0 && col > right))
            continue;
        const int need = figureWidth(col, first, last);
        if (need > m_grid.colWidth(col))
            m_grid.setColWidth(col, need);
    }
}

void ColumnFit::fitLabels(int sample)
{
    const JournalColumns columns(m_grid);
    const int first = m_grid.fixedRows();
    const int count = m_grid.rows() - first;
    if (count <= 0 || sample <= 0)
        return;
    const int step = std::max(1, count / sample);
    for (JournalColumns::Column which : {JournalColumns::ShowName, JournalColumns::JnlNo}) {
        const int col = columns[which];
        if (col < m_grid.fixedCols() || m_grid.isColHidden(col))
            continue;
        int widest = 0;
        for (int r = first; r < m_grid.rows(); r += step)
            widest = std::max(widest, measureCell(r, col));
        // The last rows are the newest, the ones a bookkeeper looks at first.
        for (int r = std::max(first, m_grid.rows() - 8); r < m_grid.rows(); ++r)
            widest = std::max(widest, measureCell(r, col));
        if (widest > 0 && widest + Padding > m_grid.colWidth(col))
            m_grid.setColWidth(col, widest + Padding);
    }
}

} // namespace kx
