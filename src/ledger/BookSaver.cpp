#include "ledger/BookSaver.h"

#include "data/RecordWriter.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/Transaction.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/ConflictCheck.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/StoredRecords.h"

#include <cmath>

namespace kx {

BookSaver::BookSaver(GridModel &grid, LedgerState &state, LedgerHost &host, AccContext *acc)
    : m_grid(grid), m_state(state), m_host(host), m_acc(acc)
{
}

bool BookSaver::save(const QString &caption, int instance)
{
    // A grid loaded consolidated holds several books' records, whatever the
    // switches say now.
    if (m_state.isConsolidated() || m_state.loadedConsolidated) {
        m_host.prompt(QStringLiteral("合并日记账是不能被存储的。"), true);
        return false;
    }
    if (m_host.cancels(QStringLiteral("Save")) || m_host.stopped())
        return false;
    if (m_state.dirty && m_acc && m_acc->Connection().isReadOnly()) {
        m_host.prompt(QStringLiteral("这个数据库是只读的，不能存储修改。请检查文件的权限。"), false);
        return false;
    }
    if (m_state.dirty) {
        // Each round adds the records the user chose to write over, so it ends.
        QSet<int> overwrite;
        for (;;) {
            m_conflicts.clear();
            m_conflictRows.clear();
            const Result<void> written = writeRecords(overwrite);
            if (written.ok())
                break;
            m_host.progress(-1);
            if (m_conflicts.isEmpty()) {
                m_host.prompt(written.error(), false);
                return false;
            }
            if (!m_host.ask(conflictQuestion())) {
                if (m_host.stopped())
                    return false;
                const BookLoader::Outcome reload = BookLoader(m_grid, m_state, m_host, m_acc).load(m_state.savedDocId());
                m_reloaded = reload == BookLoader::Loaded || reload == BookLoader::Empty;
                // What the grid shows now is what is stored.
                if (m_reloaded)
                    m_state.dirty = false;
                m_host.prompt(m_reloaded ? QStringLiteral("没有存储：已重新读入账簿，显示其他用户存储的内容。")
                                         : QStringLiteral("没有存储：其他用户已修改了这些记录。"),
                              false);
                return false;
            }
            for (int key : std::as_const(m_conflicts))
                overwrite.insert(key);
        }
    } else if (const Result<void> reachable = reachDatabase(); !reachable.ok()) {
        // Nothing to write, but "stored" must still mean the database has it.
        m_host.prompt(reachable.error(), false);
        return false;
    }
    m_state.dirty = false;
    if (m_acc)
        m_acc->SaveNotice(QStringLiteral("%1|All|JournalRec|%2||").arg(instance).arg(m_state.savedDocId()));
    m_host.prompt(QStringLiteral("已存储“") + caption + QStringLiteral("”的记录;"), false);
    if (!m_notStored.isEmpty()) {
        QStringList rows;
        for (int r : std::as_const(m_notStored))
            rows << QStringLiteral("第%1行").arg(r);
        m_host.prompt(rows.join(QStringLiteral("、")) +
                          QStringLiteral("含有不能识别的日期或金额，是只读的：对它们的修改没有存储。"),
                      true);
    }
    m_host.saved();
    return true;
}

Result<void> BookSaver::reachDatabase()
{
    if (!m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    return m_acc->Connection().ensureConnected();
}

bool BookSaver::anyDatedAfter(int row) const
{
    const JournalColumns columns(m_grid);
    for (int r = row + 1; r < m_grid.rows(); ++r)
        if (BookRow::of(m_grid, columns, r).isDated())
            return true;
    return false;
}

Result<void> BookSaver::checkConflicts(const Database &db, const std::vector<RecordValues> &records,
                                       const QSet<int> &overwrite)
{
    QList<int> keys;
    QHash<int, int> rows;
    for (const RecordValues &rec : records) {
        if (rec.recId > 0 && !overwrite.contains(rec.recId)) {
            keys << rec.recId;
            rows.insert(rec.recId, rec.gridRow);
        }
    }
    for (int key : std::as_const(m_state.removedRecords))
        if (key > 0 && !overwrite.contains(key))
            keys << key;
    const Result<QList<int>> changed = ConflictCheck(db, m_state.stored).changedElsewhere(keys, m_state.savedDocId());
    if (!changed.ok())
        return Error(changed.error());
    for (int key : changed.value()) {
        m_conflicts << key;
        if (rows.contains(key))
            m_conflictRows.insert(key, rows.value(key));
    }
    if (!m_conflicts.isEmpty())
        return Error(conflictQuestion());
    return {};
}

QString BookSaver::badAmount(const JournalColumns &columns, const BookRow &row, const RecordValues &rec) const
{
    static const std::tuple<RecordField, JournalColumns::Column, const char16_t *> amounts[] = {
        {RecordField::Debit, JournalColumns::Debit, u"借方金额"},
        {RecordField::Credit, JournalColumns::Credit, u"贷方金额"},
        {RecordField::Rate, JournalColumns::Rate, u"汇率"},
        {RecordField::Forex, JournalColumns::Forex, u"外币金额"},
        {RecordField::Balance, JournalColumns::Balance, u"余额"},
        {RecordField::fxBalance, JournalColumns::fxBalance, u"外币余额"}};
    for (const auto &[field, column, name] : amounts) {
        const FieldValue &v = rec[field];
        if (v.kind != FieldValue::Amount)
            continue;
        if (!Currency::fromRaw(v.number).isValid())
            return QStringLiteral("%1超出了金额的范围").arg(QString::fromUtf16(name));
        // Read as 0 otherwise: a text that is no amount ("100元", "#溢出").
        // A total row's cells hold two lines; the first is its amount.
        const int col = columns[column];
        if (col < 0 || m_grid.holdsAmount(row.index(), col))
            continue;
        const QString text = row.text(column).section(QLatin1Char('\n'), 0, 0).trimmed();
        const Result<Currency> parsed = Currency::fromText(text);
        if (!parsed.ok() || !parsed.value().isValid())
            return QStringLiteral("%1“%2”不是有效的金额").arg(QString::fromUtf16(name), text);
    }
    return {};
}

QString BookSaver::conflictQuestion() const
{
    const JournalColumns columns(m_grid);
    QStringList lines;
    for (int key : m_conflicts) {
        if (lines.size() == 10) {
            lines << QStringLiteral("……共 %1 条").arg(m_conflicts.size());
            break;
        }
        const auto at = m_conflictRows.constFind(key);
        if (at == m_conflictRows.constEnd()) {
            lines << QStringLiteral("已删除的记录（编号 %1）").arg(key);
            continue;
        }
        const BookRow row(m_grid, columns, at.value());
        lines << QStringLiteral("第%1行 %2 %3").arg(at.value()).arg(row.dateText(), row.text(JournalColumns::Explain));
    }
    return QStringLiteral("以下记录在您读入之后已被其他用户修改并存储：\n") + lines.join(QLatin1Char('\n')) +
           QStringLiteral("\n\n选“是”用您的内容覆盖它们；选“否”放弃您所有未存储的修改，重新读入账簿。");
}

Result<void> BookSaver::writeRecords(const QSet<int> &overwrite)
{
    m_notStored.clear();
    if (!m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    m_host.progress(0);
    if (m_host.stopped() || !m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    Database &db = m_acc->Connection();
    if (const Result<void> connected = db.ensureConnected(); !connected.ok())
        return connected;

    const JournalColumns columns(m_grid);
    const int first = m_grid.fixedRows();
    const int last = m_grid.rows() - 1;
    const int rows = m_grid.rows();
    // A book whose first row was never stored is written out whole.
    if (last >= first) {
        const BookRow opening(m_grid, columns, first);
        if (opening.number(JournalColumns::Row) == opening.recId())
            for (int r = first; r <= last; ++r)
                BookRow(m_grid, columns, r).setChangeMark(BookRow::Modified);
    }

    // Only what differs from what the database holds is written: new rows,
    // changed ones, and rows whose place (the stored Row) moved.
    std::vector<RecordValues> records;
    std::vector<quint64> prints;  // what each written record will be known by
    int reported = -1;
    const bool shifted = m_grid.rowsShiftedSinceClean();
    // PostgreSQL text cannot hold NUL: it goes before the row is compared or written.
    const bool dropsNul = db.engine() == Database::PostgresEngine;
    for (int r = first; r <= last; ++r) {
        const int percent = int(std::round(double(r) / rows * 100.0));
        if (percent != reported) {
            reported = percent;
            m_host.progress(percent);
        }
        // A row nobody touched, still at the place it is stored at, is what the
        // database holds (a load or save leaves every other row touched).
        if (!m_grid.isRowTouched(r) && !shifted)
            continue;
        const BookRow row(m_grid, columns, r);
        if (!m_grid.isRowTouched(r) && row.number(JournalColumns::Row) == r && row.recId() > 0)
            continue;
        // Rows without a date are never stored: blank rows and the empty row
        // at the bottom; nor are records holding values this control cannot hold.
        if (!row.isDated())
            continue;
        if (m_state.unwritable.contains(row.recId())) {
            if (m_grid.isRowTouched(r))
                m_notStored << r;
            continue;
        }
        if (dropsNul) {
            const QStringList dropped = StoredRecords::dropNul(row);
            if (!dropped.isEmpty())
                m_host.prompt(QStringLiteral("第%1行的%2含有数据库不能存储的空字符，已将它去掉。")
                                  .arg(r)
                                  .arg(dropped.join(QStringLiteral("、"))),
                              false);
        }
        const quint64 print = StoredRecords::fingerprint(row, m_state.savedDocId(), r, r == first);
        if (row.recId() <= 0 || !m_state.stored.holds(row.recId(), print)) {
            records.push_back(StoredRecords::recordOf(row, m_state.savedDocId(), r, r == first));
            prints.push_back(print);
            // An amount that is none, or past what money holds, would be
            // stored as some other number: the pass stops before anything is written.
            if (const QString bad = badAmount(columns, row, records.back()); !bad.isEmpty())
                return Error(QStringLiteral("第%1行的%2，不能存储。请改正后再存储。").arg(r).arg(bad));
        }
    }

    // The handlers of the reports above may have deleted the control or the
    // context (and with it the connection): then nothing is written.
    if (m_host.stopped() || !m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    Transaction tx(db);
    if (!tx.ok())
        return Error(tx.error());
    // One snapshot for the check and the writes: a record another user
    // changes in between fails the write instead of being overwritten.
    if (db.engine() == Database::PostgresEngine) {
        if (const Result<void> snapshot =
                db.run({QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ"), {}});
            !snapshot.ok())
            return snapshot;
    }
    // Nothing is written over a change somebody else stored since this
    // control read the record, unless the user said so.
    if (const Result<void> checked = checkConflicts(db, records, overwrite); !checked.ok())
        return checked;
    const auto writer = RecordWriter::create(db);
    for (int key : m_state.removedRecords) {
        if (key <= 0)
            continue;
        const Result<void> removed = writer->remove(key);
        if (!removed.ok())
            return removed;
    }
    const Result<QHash<int, int>> written = writer->write(records);
    if (!written.ok())
        return Error(written.error());

    // A book that holds nothing but an empty opening row keeps no records at all.
    bool emptied = false;
    const int openingRow = last >= first ? first : -1;
    if (openingRow >= 0 && BookRow::of(m_grid, columns, openingRow).isDated() &&
        BookRow::of(m_grid, columns, openingRow).balance().isZero() && !anyDatedAfter(openingRow)) {
        const Result<QVariant> stored = db.scalar(db.dialect().countRecords(m_state.savedDocId()));
        if (!stored.ok())
            return Error(stored.error());
        // Records other users added since stay: then only this row goes.
        if (stored.value().toInt() <= 1) {
            const Result<void> cleared = db.run(db.dialect().deleteBook(m_state.savedDocId()));
            if (!cleared.ok())
                return cleared;
            emptied = true;
        }
    }
    const Result<void> committed = tx.commit();
    if (!committed.ok())
        return committed;

    // Only now, with everything stored, does the grid learn the new keys and
    // the control what the database holds.
    const QHash<int, int> &keys = written.value();
    for (int key : m_state.removedRecords)
        m_state.stored.forget(key);
    const bool anyLocked = m_state.lastSumRow != first;
    for (std::size_t i = 0; i < records.size(); ++i) {
        RecordValues &rec = records[i];
        const BookRow row(m_grid, columns, rec.gridRow);
        const auto added = keys.constFind(rec.gridRow);
        if (added != keys.constEnd()) {
            row.setText(JournalColumns::RecID, QString::number(added.value()));
            rec.recId = added.value();
        }
        row.setText(JournalColumns::Row, QString::number(rec.gridRow));
        row.setChangeMark(BookRow::Saved);
        const bool locked = anyLocked && rec.gridRow <= m_state.lastSumRow;
        m_grid.setRowForeColor(rec.gridRow, locked ? m_state.looks.lockedColor() : QColor());
        m_state.stored.remember(rec.recId, prints[i]);
    }
    if (emptied) {
        BookRow(m_grid, columns, openingRow).setText(JournalColumns::RecID, QStringLiteral("0"));
        m_state.stored.clear();
    }
    m_state.removedRecords.clear();
    m_grid.markRowsClean();
    m_host.progress(-1);
    return {};
}

} // namespace kx
