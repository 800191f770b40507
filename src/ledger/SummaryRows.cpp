#include "ledger/SummaryRows.h"

#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/RowLook.h"

#include <algorithm>

namespace kx {

SummaryRows::SummaryRows(Book &book, LedgerHost &host)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(host)
{
}

int SummaryRows::insertBelow(int row)
{
    const int at = row + 1;
    m_grid.insertRowAt(at);
    const JournalColumns columns(m_grid);
    const BookRow above(m_grid, columns, row);
    const BookRow sum(m_grid, columns, at);
    const QString shown = above.text(JournalColumns::ShowName);
    sum.setText(JournalColumns::ShowName, shown);
    sum.setText(JournalColumns::Explain, shown + QStringLiteral("小结"));
    // Dates in cells are always yyyy-MM-dd; the shown label stays as the row above has it.
    sum.setText(JournalColumns::JnlDate, above.dateText());
    sum.setText(JournalColumns::Tag, QStringLiteral("-1"));
    RowLook::markSummary(m_grid, m_state.looks, at);
    if (m_state.lastSumRow < at)
        m_state.lastSumRow = at;
    else
        m_state.rowsInserted(at, 1);
    for (int r = at; r >= m_grid.fixedRows(); --r)
        RowLook::setLocked(m_grid, columns, m_state.looks, r, true);
    return at;
}

bool SummaryRows::insert(int row)
{
    if (m_host.cancels(QStringLiteral("InsertSumRow")))
        return false;
    if (row == 0)
        row = m_grid.row();
    if (row <= m_grid.fixedRows() || row >= m_grid.rows())
        return false;
    // A sub-total closes records: below an empty row it would total nothing.
    const JournalColumns columns(m_grid);
    if (!BookRow(m_grid, columns, row).isDated())
        return false;
    insertBelow(row);
    BalanceCalculator(m_book).calculate(m_grid.fixedRows());
    m_state.dirty = true;
    m_host.markDirty();
    m_host.prompt(QStringLiteral("已添加汇总行"), false);
    return true;
}

bool SummaryRows::remove(int row)
{
    if (m_host.cancels(QStringLiteral("RemoveSumRow")))
        return false;
    if (row == 0)
        row = m_grid.row();
    const int first = m_grid.fixedRows();
    const JournalColumns columns(m_grid);
    if (row <= first || row >= m_grid.rows() || !BookRow(m_grid, columns, row).isSummary())
        return false;
    m_state.removedRecords << BookRow(m_grid, columns, row).recId();
    const bool wasLast = row == m_state.lastSumRow;
    m_grid.removeRowAt(row);
    m_state.rowsRemoved(m_grid, row, 1);
    if (wasLast) {
        // Unlock up from where the row was to the summary row now last; the
        // opening row is never reached, so it stays locked (unlike the walk
        // that locks on insertion).
        const int stop = m_state.lastSumRow > first ? m_state.lastSumRow : first;
        for (int walk = std::min(row, m_grid.rows() - 1); walk > stop; --walk)
            RowLook::setLocked(m_grid, columns, m_state.looks, walk, false);
    }
    BalanceCalculator(m_book).recalculateFrom(row);
    m_host.markDirty();
    m_host.prompt(QStringLiteral("已删除汇总行。"), false);
    return true;
}

QString SummaryRows::statistics() const
{
    int summaries = 0;
    int saved = 0;
    int linked = 0;
    const JournalColumns columns(m_grid);
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        const BookRow row = BookRow::of(m_grid, columns, r);
        // Counted by the grid's subtotal nodes: a new book's opening row is one too.
        if (m_grid.isSubtotal(r))
            ++summaries;
        else if (row.recId() > 0)
            ++saved;
        if (row.dirId() > 0)
            ++linked;
    }
    return QStringLiteral("汇总共 %1 笔；\r\n记录共 %2 笔；\r\n已生成凭证 %3 笔").arg(summaries - 1).arg(saved).arg(linked);
}

} // namespace kx
