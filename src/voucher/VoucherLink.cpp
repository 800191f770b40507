#include "voucher/VoucherLink.h"

#include "data/SqlAccess.h"
#include "data/SqlDialect.h"
#include "data/Transaction.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/ConflictCheck.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/StoredRecords.h"
#include "voucher/VoucherDirectory.h"

#include <QSet>

namespace kx {

namespace {
const QString NoAccount = QStringLiteral("未指定会计科目，无法指定记账凭证。");
const QString AlreadyLinked = QStringLiteral("不能对已有凭证的记录设置凭证。");
const QString NoContext = QStringLiteral("没有连接到账套。");
} // namespace

bool VoucherLink::isCandidate(const BookRow &row, int relativeAccId)
{
    // A voucher books records: not a summary row, not the opening balance,
    // not a row without a date (it is never stored).
    if (row.tag() < 0 || row.isSummary() || row.dirId() > 0 || !row.isDated() || row.isOpening())
        return false;
    return row.accId() > 0 || relativeAccId > 0;
}

bool VoucherLink::mayChange(int row) const
{
    const JournalColumns columns(m_grid);
    if (m_state.mayModify() && !m_state.unwritable.contains(BookRow(m_grid, columns, row).recId()))
        return true;
    m_host.prompt(QStringLiteral("第%1行的记录不能修改，凭证链接没有改变。").arg(row), false);
    return false;
}

int VoucherLink::dirId(int row) const
{
    if (!m_grid.isDataRow(row) || m_grid.isSubtotal(row))
        return -1;
    const JournalColumns columns(m_grid);
    const BookRow line(m_grid, columns, row);
    return line.recId() == 0 ? -1 : line.dirId();
}

bool VoucherLink::link(int row, int voucherId)
{
    if (!m_grid.isDataRow(row))
        return false;
    if (voucherId <= 0) {
        m_host.prompt(QStringLiteral("没有指定凭证。"), false);
        return false;
    }
    const JournalColumns columns(m_grid);
    const BookRow line(m_grid, columns, row);
    if (isCandidate(line, m_state.book.relativeAccId))
        return mayChange(row) && write({row}, voucherId) == 1;
    m_host.prompt(line.dirId() <= 0 ? NoAccount : AlreadyLinked, false);
    return false;
}

int VoucherLink::linkSelection(int voucherId)
{
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    m_grid.selection(r1, c1, r2, c2);
    if (voucherId <= 0) {
        m_host.prompt(QStringLiteral("没有指定凭证。"), false);
        return 0;
    }
    const JournalColumns columns(m_grid);
    QList<int> fit;
    for (int r = std::max(r1, m_grid.fixedRows()); r <= r2 && r < m_grid.rows(); ++r) {
        const BookRow line(m_grid, columns, r);
        if (isCandidate(line, m_state.book.relativeAccId)) {
            if (mayChange(r))
                fit << r;
        } else if (!line.isDated() && line.tag() >= 0) {
            continue;  // the empty row waiting at the bottom is no record
        }
        else
            m_host.prompt(line.dirId() <= 0 ? NoAccount : AlreadyLinked, false);
    }
    return fit.isEmpty() ? 0 : write(fit, voucherId);
}

bool VoucherLink::removeLinks()
{
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    m_grid.selection(r1, c1, r2, c2);
    r1 = std::max(r1, m_grid.fixedRows());
    r2 = std::min(r2, m_grid.rows() - 1);
    if (r2 < r1)
        return false;
    if (!m_host.ask(QStringLiteral("是否删除被选择的 %1条记录的凭证链接信息？").arg(r2 - r1 + 1),
                    QStringLiteral("删除凭证链接")))
        return false;
    const JournalColumns columns(m_grid);
    QList<int> rows;
    for (int r = r1; r <= r2; ++r) {
        const BookRow line(m_grid, columns, r);
        if (line.tag() >= 0 && !line.isSummary() && (line.dirId() != 0 || line.recId() > 0) && mayChange(r))
            rows << r;
    }
    return !rows.isEmpty() && write(rows, 0) > 0;
}

int VoucherLink::write(const QList<int> &rows, int voucherId)
{
    AccContext *acc = m_acc;
    if (!acc) {
        m_host.prompt(NoContext, false);
        return 0;
    }
    // A link names a voucher that exists; an empty label would be all the user
    // sees of one that does not. Read before the host is told anything: its
    // handler may delete the context.
    const QString label = voucherId > 0 ? VoucherDirectory(acc->Connection()).label(voucherId) : QString();
    if (voucherId > 0 && label.isEmpty()) {
        m_host.prompt(QStringLiteral("没有找到编号为 %1 的凭证，凭证链接没有改变。").arg(voucherId), false);
        return 0;
    }
    const JournalColumns columns(m_grid);
    QList<int> stored, unsaved;
    for (int r : rows) {
        const BookRow line(m_grid, columns, r);
        if (line.recId() > 0)
            stored << r;
        else if (line.dirId() != voucherId)  // an empty row losing no link stays as it is
            unsaved << r;
    }
    QList<int> done;
    QStringList refused;
    if (!stored.isEmpty()) {
        const Result<void> written = writeStored(stored, voucherId, done, refused);
        // Said once the transaction is over, so a host's handler works on a quiet database.
        if (!written.ok()) {
            m_host.prompt(written.error(), false);
            return 0;
        }
    }
    // A row not stored yet takes its link with it at the next save.
    if (!unsaved.isEmpty()) {
        for (int r : unsaved)
            BookRow(m_grid, columns, r).setChangeMark(BookRow::Modified);
        done << unsaved;
        m_state.dirty = true;
        m_host.markDirty();
    }
    for (int r : std::as_const(done)) {
        const BookRow line(m_grid, columns, r);
        line.setText(JournalColumns::AccDoc, label);
        line.setText(JournalColumns::DirID, QString::number(voucherId));
        // A link written to the database is what it holds: a later merge
        // judges other users' changes of it against this.
        if (line.recId() > 0)
            line.setCleanText(JournalColumns::DirID, QString::number(voucherId));
    }
    if (!refused.isEmpty())
        m_host.prompt(refused.join(QStringLiteral("；")) + QStringLiteral("，这些记录的凭证链接没有写入，请刷新后再试。"), false);
    return int(done.size());
}

Result<void> VoucherLink::writeStored(const QList<int> &rows, int voucherId, QList<int> &done, QStringList &refused)
{
    const Database &db = m_acc->Connection();
    const JournalColumns columns(m_grid);
    QHash<int, int> rowOf;  // record key → grid row
    for (int r : rows)
        rowOf.insert(BookRow(m_grid, columns, r).recId(), r);
    QList<int> keys = rowOf.keys();

    Transaction tx(db);
    if (!tx.ok())
        return Error(tx.error());
    // One snapshot for the read and the writes: a link another user stores
    // in between fails this write instead of being overwritten.
    if (db.engine() == Database::PostgresEngine) {
        if (const Result<void> snapshot =
                sqlRun(db, {QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ"), {}});
            !snapshot.ok())
            return snapshot;
    }
    // What each record holds now decides whether it may be written, and
    // what the control will remember of it afterwards.
    struct Seen {
        bool unchanged = false;
        quint64 print = 0;
        bool opening = false;
    };
    QHash<int, Seen> seen;
    QSet<int> found;
    constexpr int Chunk = 500;
    for (int from = 0; from < keys.size(); from += Chunk) {
        const Result<void> read = ConflictCheck::readStored(
            db, sqlDialect(db).storedRecords(keys.mid(from, Chunk)), [&](const BookRow &rec) {
                const int gridRow = rowOf.value(rec.recId());
                found.insert(rec.recId());
                if (int(rec.number(JournalColumns::DocID)) != m_state.savedDocId()) {
                    refused << QStringLiteral("第%1行的记录已被他人移到别的日记账").arg(gridRow);
                    return;
                }
                const int linkedThere = rec.dirId();
                if (linkedThere != BookRow(m_grid, columns, gridRow).dirId()) {
                    refused << QStringLiteral("第%1行的记录已被他人链接到别的凭证").arg(gridRow);
                    return;
                }
                Seen s;
                s.unchanged = ConflictCheck::unchanged(m_state.stored, rec);
                rec.setText(JournalColumns::DirID, QString::number(voucherId));
                const int docId = int(rec.number(JournalColumns::DocID));
                const int storedRow = int(rec.number(JournalColumns::Row));
                s.opening = gridRow == m_grid.fixedRows();
                s.print = StoredRecords::fingerprint(rec, docId, storedRow, s.opening);
                seen.insert(rec.recId(), s);
            });
        if (!read.ok())
            return read;
    }
    for (int key : std::as_const(keys))
        if (!found.contains(key))
            refused << QStringLiteral("第%1行的记录已不在数据库里（可能已被他人删除）").arg(rowOf.value(key));
    for (auto it = seen.cbegin(); it != seen.cend(); ++it) {
        const Result<SqlStatement> update = sqlDialect(db).updateRecordField(QStringLiteral("DirID"), voucherId, it.key());
        const Result<void> ran = update.ok() ? sqlRun(db, update.value()) : Result<void>(Error(update.error()));
        if (!ran.ok())
            return ran;
    }
    const Result<void> committed = tx.commit();
    if (!committed.ok())
        return committed;
    for (auto it = seen.cbegin(); it != seen.cend(); ++it) {
        // A record somebody else changed keeps its old fingerprint, so the
        // next save still asks before it overwrites that change.
        if (it.value().unchanged)
            m_state.stored.remember(it.key(), it.value().print);
        done << rowOf.value(it.key());
    }
    std::sort(done.begin(), done.end());
    return {};
}

} // namespace kx
