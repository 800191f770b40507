#include "rows/RowOperations.h"

#include "data/SqlAccess.h"
#include "data/SqlDialect.h"
#include "data/Transaction.h"
#include "grid/GridBusy.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/RecordGuard.h"
#include "ledger/RowLook.h"

#include <QDate>
#include <QPointer>

namespace kx {

RowOperations::RowOperations(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host())
{
}

bool RowOperations::insertRows()
{
    if (!m_state.mayModify() || m_state.isConsolidated() || m_grid.rows() <= m_grid.fixedRows())
        return false;
    const int row = m_grid.row();
    const int col = m_grid.col();
    int r1, c1, r2, c2;
    m_grid.selection(r1, c1, r2, c2);
    // Nothing is ever opened above the opening balance.
    if (r1 == m_grid.fixedRows())
        ++r1;
    const int count = r2 - r1 + 1;
    if (count <= 0 || !m_grid.isDataRow(r1))
        return false;
    // Empty rows among closed records would move them.
    if (RecordGuard(m_book).closesAt(r1)) {
        m_host.prompt(QStringLiteral("不能在已结账的记录中插入行。"), false);
        return false;
    }
    m_grid.insertRowsAt(r1, count);
    for (int r = r1; r < r1 + count; ++r)
        m_grid.setRowData(r, int(BookRow::Unchanged));
    m_state.rowsInserted(r1, count);
    m_grid.setCursor(row, col);
    m_host.prompt(QStringLiteral("已插入 %1行。").arg(count), false);
    return true;
}

bool RowOperations::deleteRows(int row)
{
    int r1, c1, r2, c2;
    if (row > 0) {
        r1 = r2 = row;
    } else {
        m_grid.selection(r1, c1, r2, c2);
    }
    QList<int> going, kept;
    RecordGuard(m_book).sortForDeletion(r1, r2, going, kept);
    const QString reason = RecordGuard::keptReason();
    if (going.isEmpty() && !kept.isEmpty()) {
        if (m_state.mayModify() && !m_state.isConsolidated())
            m_host.prompt(RecordGuard::rowList(kept) + reason + QStringLiteral("，不能删除。"), true);
        return false;
    }
    QString question;
    if (kept.isEmpty()) {
        const int selected = r2 - r1 + 1;
        const QString middle = selected > 1 ? QStringLiteral("被选中的 %1 ").arg(selected) : QString();
        question = QStringLiteral("是否删除当前%1行？").arg(middle);
    } else {
        // The question counts only the rows that will go.
        question = QStringLiteral("是否删除当前 %1 行？另有 %2 行%3，不能删除。").arg(going.size()).arg(kept.size()).arg(reason);
    }
    if (!m_host.ask(question, QStringLiteral("删除行")))
        return false;
    if (!m_state.mayModify() || m_state.isConsolidated())
        return false;
    const int removed = removeRows(r1, r2);
    if (removed <= 0)
        return false;
    if (kept.isEmpty())
        m_host.prompt(QStringLiteral("已删除 %1 行；").arg(removed), false);
    else
        m_host.prompt(RecordGuard::rowList(RecordGuard::afterRemoval(kept, going)) + reason +
                          QStringLiteral("，不能删除；其余的 %1 行已删除。").arg(removed),
                      true);
    m_host.cancels(QStringLiteral("AfterDeleted"));
    return true;
}

int RowOperations::removeRows(int r1, int r2)
{
    const int first = m_grid.fixedRows();
    // The guard is asked here, where rows go, so that no record of a closed
    // period or on a voucher can reach the removed-records collection.
    QList<int> going, kept;
    RecordGuard(m_book).sortForDeletion(r1, r2, going, kept);
    if (going.isEmpty())
        return 0;
    GridBusy busy(m_grid, QStringLiteral("Remove"));
    const JournalColumns columns(m_grid);
    const int recCol = columns[JournalColumns::RecID];
    m_state.removedRecords.reserve(m_state.removedRecords.size() + going.size());
    for (int r : std::as_const(going))
        m_state.removedRecords << int(m_grid.number(r, recCol));
    const int lastBefore = m_state.lastSumRow;
    // Bottom up, a run at a time, so the indexes above stay true.
    for (qsizetype i = going.size() - 1; i >= 0;) {
        qsizetype j = i;
        while (j > 0 && going.at(j - 1) == going.at(j) - 1)
            --j;
        const int count = int(i - j + 1);
        m_grid.removeRowsAt(going.at(j), count);
        m_state.rowsRemoved(m_grid, going.at(j), count);
        i = j - 1;
    }
    // When the closing row went (it goes only alone), the rows it had closed
    // are open again; a record locked for values this control cannot read
    // stays locked.
    const int top = going.first();
    if (going.size() == 1 && lastBefore == top) {
        const int stop = m_state.lastSumRow > first ? m_state.lastSumRow : first;
        for (int r = std::min(top, m_grid.rows()) - 1; r > stop; --r) {
            const BookRow line(m_grid, columns, r);
            if (m_state.unwritable.contains(line.recId()))
                continue;
            if (line.isLocked())
                RowLook::setLocked(m_grid, columns, m_state.looks, r, false);
            else
                m_grid.setRowForeColor(r, QColor());
        }
    }
    m_host.markDirty();
    m_state.dirty = true;
    BalanceCalculator(m_book).recalculateFrom(std::min(top, m_grid.rows() - 1));
    return int(going.size());
}

bool RowOperations::renumber()
{
    if (!m_state.mayModify() || m_state.isConsolidated())
        return false;
    int r1, c1, r2, c2;
    m_grid.selection(r1, c1, r2, c2);
    const int first = m_grid.fixedRows();
    if (!m_grid.isDataRow(r1))
        return false;
    const JournalColumns columns(m_grid);
    const int noCol = columns[JournalColumns::JnlNo];
    if (noCol < 0)
        return false;
    QString prefix;
    qint64 number = 0;
    int width = 0;
    if (r1 > first) {
        const QString above = m_grid.text(r1 - 1, noCol);
        BookRow::splitNumber(above, prefix, number);
        width = int(above.size() - prefix.size());
    }
    const RecordGuard guard(m_book);
    QList<int> kept;
    bool changed = false;
    for (int r = r1; r <= r2; ++r) {
        if (m_grid.isSubtotal(r))
            continue;
        if (guard.keeps(r)) {
            // Its number is stored with a closed month or on a voucher: it
            // stays, and the numbering goes on from it.
            kept << r;
            const QString own = m_grid.text(r, noCol);
            QString ownPrefix;
            qint64 ownNumber = 0;
            BookRow::splitNumber(own, ownPrefix, ownNumber);
            if (own.size() > ownPrefix.size()) {
                prefix = ownPrefix;
                number = ownNumber;
                width = int(own.size() - ownPrefix.size());
            }
            continue;
        }
        ++number;
        if (QString::number(number).size() > width)
            ++width;
        const QString text = prefix + QStringLiteral("%1").arg(number, width, 10, QLatin1Char('0'));
        if (m_grid.text(r, noCol) == text)
            continue;
        m_grid.setText(r, noCol, text);
        m_grid.setCellForeColor(r, noCol, m_state.looks.modifiedForeColor);
        BookRow(m_grid, columns, r).setChangeMark(BookRow::Modified);
        changed = true;
    }
    if (!kept.isEmpty())
        m_host.prompt(RecordGuard::rowList(kept) + RecordGuard::keptReason() + QStringLiteral("，单据号没有改动。"), false);
    if (changed) {
        m_host.markDirty();
        m_state.dirty = true;
    }
    return changed;
}

Result<int> RowOperations::deleteHistory(AccContext *context)
{
    // The host may delete the context inside any call to it: read again after each.
    const QPointer<AccContext> acc(context);
    const auto noContext = [] { return Error(QStringLiteral("没有连接到账套。")); };
    if (!acc)
        return noContext();
    if (m_host.cancels(QStringLiteral("DelHistory")) || m_host.stopped())
        return 0;
    if (!acc)
        return noContext();
    const QDate cutOff = acc->BeginDate();
    if (!cutOff.isValid())
        return Error(QStringLiteral("账套没有建账日期，无法删除以前的记录。"));
    const JournalColumns columns(m_grid);
    const RecordGuard guard(m_book);
    QList<int> doomed;
    QList<int> kept;
    // The opening row carries the balance brought in, not a record of the
    // past: it stays, and the grid keeps its first row for it. Records of a
    // closed period (their summary rows with them) and records on vouchers
    // stay too: this deletion is stored at once and cannot be undone.
    for (int r = m_grid.fixedRows() + 1; r < m_grid.rows(); ++r) {
        const BookRow line = BookRow::of(m_grid, columns, r);
        const QDate date = line.date();
        if (date.isValid() && date < cutOff)
            (line.isSummary() || guard.keeps(r) ? kept : doomed) << r;
    }
    const QString reason = RecordGuard::keptReason();
    const QString question =
        kept.isEmpty() ? QStringLiteral("将从数据库中删除 %1 以前的全部记录，删除后不能恢复。是否继续？").arg(cutOff.toString(Qt::ISODate))
                       : QStringLiteral("将从数据库中删除 %1 以前的 %2 条记录，删除后不能恢复；另有 %3 条%4，不删除。是否继续？")
                             .arg(cutOff.toString(Qt::ISODate))
                             .arg(doomed.size())
                             .arg(kept.size())
                             .arg(reason);
    if (!m_host.ask(question, QStringLiteral("删除以前记录")) || m_host.stopped())
        return 0;
    if (!acc)
        return noContext();
    const QString keptText =
        kept.isEmpty() ? QString()
                       : RecordGuard::rowList(RecordGuard::afterRemoval(kept, doomed)) + reason + QStringLiteral("，没有删除。");
    if (doomed.isEmpty()) {
        m_host.prompt(QStringLiteral("删除以前记录共 0 条;") + keptText, !kept.isEmpty());
        return 0;
    }
    const Database &db = acc->Connection();
    {
        // All of them or none: the grid changes only once the deletion is stored.
        Transaction tx(db);
        if (!tx.ok())
            return Error(tx.error());
        for (int r : std::as_const(doomed)) {
            const int key = BookRow::of(m_grid, columns, r).recId();
            if (key <= 0)
                continue;
            if (const Result<void> gone = sqlRun(db, sqlDialect(db).deleteRecord(key)); !gone.ok())
                return Error(gone.error());
        }
        if (const Result<void> committed = tx.commit(); !committed.ok())
            return Error(committed.error());
    }
    GridBusy busy(m_grid, QStringLiteral("Remove"));
    // Bottom up, a run at a time, so the indexes above stay true.
    for (int i = int(doomed.size()) - 1; i >= 0;) {
        int j = i;
        while (j > 0 && doomed.at(j - 1) == doomed.at(j) - 1)
            --j;
        for (int k = j; k <= i; ++k)
            if (const int key = BookRow::of(m_grid, columns, doomed.at(k)).recId(); key > 0)
                m_state.stored.forget(key);
        m_grid.removeRowsAt(doomed.at(j), i - j + 1);
        m_state.rowsRemoved(m_grid, doomed.at(j), i - j + 1);
        i = j - 1;
    }
    m_host.prompt(QStringLiteral("删除以前记录共 %1 条;").arg(doomed.size()) + keptText, !kept.isEmpty());
    return int(doomed.size());
}

} // namespace kx
