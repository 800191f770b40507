#include "rows/MonthClosing.h"

#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/RowLook.h"
#include "rows/RowOperations.h"

namespace kx {

MonthClosing::MonthClosing(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host())
{
}

bool MonthClosing::closeBook()
{
    const int first = m_grid.fixedRows();
    const JournalColumns columns(m_grid);
    const int dateCol = columns[JournalColumns::JnlDate];
    // The empty rows kept at the bottom for new records are not the book's end.
    int last = m_grid.rows() - 1;
    while (last >= first && m_grid.isEmpty(last, dateCol))
        --last;
    if (last < first) {
        m_host.prompt(QStringLiteral("未输入记录，无法执行结账操作。"), false);
        return false;
    }
    if (last > first && BookRow(m_grid, columns, last).isSummary()) {
        if (!RowOperations(m_book).deleteRows(last))
            return false;
        m_host.cancels(QStringLiteral("AfterAntiClosed"));
        return true;
    }

    const int at = last + 1;
    m_grid.insertRowsAt(at, 1);
    m_state.rowsInserted(at, 1);
    const BookRow above(m_grid, columns, last);
    const BookRow sum(m_grid, columns, at);
    const QDate date = above.date();
    sum.setText(JournalColumns::Tag, QStringLiteral("-1"));
    sum.setText(JournalColumns::JnlDate, date.isValid() ? date.toString(Qt::ISODate) : above.dateText());
    sum.setText(JournalColumns::ShowName, date.isValid() ? date.toString(QStringLiteral("yyyy年MM月")) : QString());
    sum.setText(JournalColumns::Explain, QStringLiteral("本月结余"));
    sum.setChangeMark(BookRow::Modified);
    RowLook::markSummary(m_grid, m_state.looks, at);

    const int previous = m_state.lastSumRow;
    BalanceCalculator(m_book).calculate(previous > first ? previous : first);
    // Closing only colours the closed records; their locked cells stay as they are.
    for (int r = last; r >= std::max(previous + 1, first); --r)
        m_grid.setRowForeColor(r, m_state.looks.lockedColor());
    m_state.lastSumRow = at;
    m_host.cancels(QStringLiteral("AfterClosed"));
    m_host.markDirty();
    m_state.dirty = true;
    return true;
}

} // namespace kx
