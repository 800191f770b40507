#include "rows/RowMover.h"

#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/RecordGuard.h"

#include <QDate>

namespace kx {

RowMover::RowMover(Book &book) : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host())
{
}

QString RowMover::monthOf(int row) const
{
    const JournalColumns columns(m_grid);
    const QDate date = BookRow::of(m_grid, columns, row).date();
    return date.isValid() ? date.toString(QStringLiteral("yyyy-MM")) : QString();
}

bool RowMover::isBadDropRow(int source, int row, int col) const
{
    const int first = m_grid.fixedRows();
    // The opening balance and the summary rows stay where they are.
    if (row <= first || row >= m_grid.rows() || col > 0 || source <= first || source >= m_grid.rows())
        return true;
    const JournalColumns columns(m_grid);
    if (BookRow::of(m_grid, columns, row).isSummary() || BookRow::of(m_grid, columns, source).isSummary())
        return true;
    // Records of a closed period and records on vouchers stay where they
    // are, and nothing is put among closed records.
    const RecordGuard guard(m_book);
    if (guard.keeps(source) || guard.closesAt(row))
        return true;
    const QString month = monthOf(row);
    if (!month.isEmpty())
        return month != monthOf(source);
    // An empty row takes the record only right after a record of its month.
    const QString above = monthOf(row - 1);
    return above.isEmpty() || above != monthOf(source);
}

bool RowMover::drop(int source, int row, int col)
{
    if (!m_grid.isDataRow(source) || !m_grid.isDataRow(row))
        return false;
    const JournalColumns columns(m_grid);
    const RecordGuard guard(m_book);
    if (guard.isClosed(source)) {
        m_host.prompt(QStringLiteral("不能移动已结账月份中的记录。"), false);
        return false;
    }
    if (guard.isLinked(source)) {
        m_host.prompt(QStringLiteral("不能移动已生成凭证的记录，请先删除凭证链接。"), false);
        return false;
    }
    const int top = std::min(source, row);
    if (BookRow::of(m_grid, columns, top).isSummary()) {
        m_host.prompt(QStringLiteral("不能将当前行放在汇总行之前。"), false);
        return false;
    }
    QString dropMonth;
    for (int r = row; r >= m_grid.fixedRows() && dropMonth.isEmpty(); --r)
        dropMonth = monthOf(r);
    if (!dropMonth.isEmpty() && !monthOf(source).isEmpty() && dropMonth != monthOf(source))
        m_host.prompt(QStringLiteral("不能将当前行拖动到其它月份中。"), false);
    else if (guard.closesAt(row))
        m_host.prompt(QStringLiteral("不能将当前行拖动到已结账的月份中。"), false);
    if (isBadDropRow(source, row, col))
        return false;
    // Dropped on the empty row below the month, the record goes last in the
    // month, above that row, rather than below it.
    const int to = source < row && monthOf(row).isEmpty() ? row - 1 : row;
    m_grid.moveRowTo(source, to);
    m_state.rowMoved(source, to);
    m_grid.setRowForeColor(to, m_state.looks.modifiedForeColor);
    // Every stored record from the upper row down is rewritten, so the
    // stored order follows the grid's.
    const int recCol = columns[JournalColumns::RecID];
    for (int r = top; r < m_grid.rows(); ++r)
        if (m_grid.number(r, recCol) > 0)
            BookRow(m_grid, columns, r).setChangeMark(BookRow::Modified);
    BalanceCalculator(m_book).recalculateFrom(top);
    m_host.markDirty();
    m_state.dirty = true;
    return true;
}

} // namespace kx
