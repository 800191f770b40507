#include "ledger/SummaryRows.h"

#include "data/BookState.h"
#include "kxjournal/GridModel.h"

#include <cstdlib>
#include "ledger/BalanceCalculator.h"
#include "ledger/RowLook.h"

namespace kx {

SummaryRows::SummaryRows(GridModel &grid, BookState &book) : m_grid(grid), m_book(book) {}

int SummaryRows::insertBelow(int row)
{
    const int at = row + 1;
    m_grid.insertRowAt(at);
    const QString shown = m_grid.text(row, QStringLiteral("ShowName"));
    m_grid.setText(at, QStringLiteral("ShowName"), shown);
    m_grid.setText(at, QStringLiteral("Explain"), shown + QStringLiteral("小结"));
    // Dates in cells are always yyyy-MM-dd; the shown label stays as the row above has it.
    m_grid.setText(at, QStringLiteral("JnlDate"), m_grid.text(row, QStringLiteral("JnlDate")));
    m_grid.setText(at, QStringLiteral("Tag"), QStringLiteral("-1"));
    RowLook::markSummary(m_grid, m_book, at);
    if (m_book.lastSumRow < at)
        m_book.lastSumRow = at;
    for (int r = at; r >= m_grid.fixedRows(); --r)
        RowLook::setLocked(m_grid, m_book, r, true);
    return at;
}

bool SummaryRows::insert(int row)
{
    if (m_book.cancelledByHost && m_book.cancelledByHost(QStringLiteral("InsertSumRow")))
        return false;
    if (row == 0)
        row = m_grid.row();
    if (row <= m_grid.fixedRows() || row >= m_grid.rows())
        return false;
    insertBelow(row);
    BalanceCalculator(m_grid, m_book).calculate(m_grid.fixedRows());
    if (m_book.markDirty)
        m_book.markDirty();
    m_book.prompt(QStringLiteral("已添加汇总行"), false);
    return true;
}

bool SummaryRows::remove(int row)
{
    if (m_book.cancelledByHost && m_book.cancelledByHost(QStringLiteral("RemoveSumRow")))
        return false;
    if (row == 0)
        row = m_grid.row();
    const int first = m_grid.fixedRows();
    if (row <= first || row >= m_grid.rows() || !RowLook::isSummary(m_grid, row))
        return false;
    const int key = int(m_grid.value(row, QStringLiteral("RecID")));
    m_book.removedRecords << key;
    m_grid.removeRowAt(row);
    if (std::abs(row - m_book.lastSumRow) <= 1) {
        // Walk up from where the row was; the opening row is never reached,
        // so it stays locked (unlike the walk that locks on insertion).
        int walk = std::min(row, m_grid.rows() - 1);
        for (; walk > first; --walk) {
            if (RowLook::isSummary(m_grid, walk))
                break;
            RowLook::setLocked(m_grid, m_book, walk, false);
        }
        m_book.lastSumRow = walk > first ? walk : 0;
    }
    BalanceCalculator(m_grid, m_book).calculate(m_book.lastSumRow > first ? m_book.lastSumRow : first);
    if (m_book.markDirty)
        m_book.markDirty();
    m_book.prompt(QStringLiteral("已删除汇总行。"), false);
    return true;
}

QString SummaryRows::statistics() const
{
    int summaries = 0;
    int saved = 0;
    int linked = 0;
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        if (m_grid.isSubtotal(r))
            ++summaries;
        else if (m_grid.value(r, QStringLiteral("RecID")) > 0)
            ++saved;
        if (m_grid.value(r, QStringLiteral("DirID")) > 0)
            ++linked;
    }
    return QStringLiteral("汇总共 %1 笔；\r\n记录共 %2 笔；\r\n已生成凭证 %3 笔").arg(summaries - 1).arg(saved).arg(linked);
}

} // namespace kx
