#include "ledger/BookSaver.h"

#include "data/RecordWriter.h"
#include "data/SqlAccess.h"
#include "data/Transaction.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/ConflictCheck.h"
#include "ledger/ConflictMerge.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/RecordPrints.h"
#include "ledger/StoredRecords.h"

#include <cmath>
#include <functional>

namespace kx {

namespace {

// The rows a pass writes, each read off the grid as the writer takes it.
class GridRecords : public RecordSource
{
public:
    GridRecords(Sheet &grid, const JournalColumns &columns, int docId, int first,
                const std::vector<BookSaver::Pending> &pending)
        : m_grid(grid), m_columns(columns), m_docId(docId), m_first(first), m_pending(pending)
    {
    }
    std::size_t size() const override { return m_pending.size(); }
    void fill(std::size_t i, RecordValues &out) const override
    {
        const BookSaver::Pending &p = m_pending[i];
        if (p.balancesOnly) {
            const BookRow row(m_grid, m_columns, p.gridRow);
            out.gridRow = p.gridRow;
            out.recId = p.recId;
            out.balancesOnly = true;
            out.set(RecordField::Balance, FieldValue::of(row.amount(JournalColumns::Balance)));
            out.set(RecordField::fxBalance, FieldValue::of(row.amount(JournalColumns::fxBalance)));
            return;
        }
        out.balancesOnly = false;
        StoredRecords::fill(BookRow(m_grid, m_columns, p.gridRow), m_docId, p.gridRow, p.gridRow == m_first, out);
        out.atPlace = p.atPlace;
    }

private:
    Sheet &m_grid;
    const JournalColumns &m_columns;
    const int m_docId;
    const int m_first;
    const std::vector<BookSaver::Pending> &m_pending;
};

} // namespace

BookSaver::BookSaver(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host()), m_acc(book.context())
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
        m_host.failure(QStringLiteral("这个数据库是只读的，不能存储修改。请检查文件的权限。"), false);
        return false;
    }
    if (m_state.dirty) {
        // Each round merges what others stored since the last; a round only
        // comes again when somebody stored more in between.
        for (int round = 0;; ++round) {
            m_conflicts.clear();
            const Result<void> written = writeRecords();
            if (written.ok())
                break;
            m_host.progress(-1);
            if (m_conflicts.isEmpty()) {
                m_host.failure(written.error(), false);
                return false;
            }
            if (round == MergeRounds) {
                m_host.failure(QStringLiteral("其他用户正在不断修改这些记录，没有存储。请稍后再存储。"), false);
                return false;
            }
            if (m_host.stopped() || !m_acc)
                return false;
            ConflictMerge merge(m_book);
            const Result<void> merged = merge.merge(m_acc->Connection(), m_conflicts, m_state.savedDocId());
            // The question may have ended the control or its context.
            if (m_host.stopped() || !m_acc)
                return false;
            if (!merged.ok()) {
                m_host.failure(merged.error(), false);
                return false;
            }
            m_readAgain = m_readAgain || merge.tookStored();
        }
    } else if (const Result<void> reachable = reachDatabase(); !reachable.ok()) {
        // Nothing to write, but "stored" must still mean the database has it.
        m_host.failure(reachable.error(), false);
        return false;
    }
    if (m_readAgain) {
        // Values taken from other users show with their names and labels.
        const int row = m_grid.row();
        const BookLoader::Outcome reload = BookLoader(m_book).load(m_state.savedDocId());
        m_reloaded = reload == BookLoader::Loaded || reload == BookLoader::Empty;
        if (m_reloaded)
            m_grid.setCursor(std::min(row, m_grid.rows() - 1), m_grid.col());
    }
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
    return ensureConnected(m_acc->Connection());
}

bool BookSaver::anyDatedAfter(int row) const
{
    const JournalColumns columns(m_grid);
    for (int r = row + 1; r < m_grid.rows(); ++r)
        if (BookRow::of(m_grid, columns, r).isDated())
            return true;
    return false;
}

Result<void> BookSaver::checkConflicts(const Database &db, const std::vector<Pending> &pending, RecordPrints &rests,
                                      bool &allCurrent)
{
    std::vector<int> keys;
    keys.reserve(pending.size() + std::size_t(m_state.removedRecords.size()));
    for (const Pending &p : pending)
        if (p.recId > 0)
            keys.push_back(p.recId);
    for (int key : std::as_const(m_state.removedRecords))
        if (key > 0)
            keys.push_back(key);
    QList<int> gone;
    const Result<QList<int>> changed = ConflictCheck(db, m_state.stored).changedElsewhere(keys, m_state.savedDocId(), &gone, &rests, &allCurrent);
    if (!changed.ok())
        return Error(changed.error());
    if (changed.value().isEmpty() && gone.isEmpty())
        return {};
    // The grid rows of the keys found, looked up once conflicts are known.
    QHash<int, int> rows;
    const QSet<int> found = QSet<int>(changed.value().cbegin(), changed.value().cend()) +
                            QSet<int>(gone.cbegin(), gone.cend());
    for (const Pending &p : pending)
        if (p.recId > 0 && found.contains(p.recId))
            rows.insert(p.recId, p.gridRow);
    for (int key : changed.value())
        m_conflicts.insert(key, rows.value(key, -1));
    // A record gone that this user removed too is no conflict.
    for (int key : std::as_const(gone))
        if (rows.contains(key))
            m_conflicts.insert(key, rows.value(key));
    if (!m_conflicts.isEmpty())
        return Error(QStringLiteral("其他用户修改了这些记录。"));
    return {};
}

QString BookSaver::badAmount(const JournalColumns &columns, const BookRow &row) const
{
    // The amount fields StoredRecords::recordOf() stores, read as it reads them.
    static const std::pair<JournalColumns::Column, const char16_t *> amounts[] = {
        {JournalColumns::Debit, u"借方金额"},   {JournalColumns::Credit, u"贷方金额"},
        {JournalColumns::Rate, u"汇率"},        {JournalColumns::Forex, u"外币金额"},
        {JournalColumns::Balance, u"余额"},     {JournalColumns::fxBalance, u"外币余额"}};
    for (const auto &[column, name] : amounts) {
        if (!row.amount(column).isValid())
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

bool BookSaver::holdsRecord(const BookRow &row)
{
    // What a user types or pastes into a record; balances, directions and a
    // rate carried down are filled in by the control.
    static const JournalColumns::Column typed[] = {
        JournalColumns::JnlNo,  JournalColumns::AccName, JournalColumns::AccID,  JournalColumns::Explain,
        JournalColumns::Debit,  JournalColumns::Credit,  JournalColumns::Forex,  JournalColumns::Field1,
        JournalColumns::Field2, JournalColumns::Field3,  JournalColumns::Field4, JournalColumns::Remark};
    for (JournalColumns::Column c : typed) {
        if (c == JournalColumns::AccID ? row.number(c) != 0 : !row.text(c).trimmed().isEmpty())
            return true;
    }
    return false;
}

QString BookSaver::undatedRows(const QList<int> &rows)
{
    QStringList named;
    for (int r : rows) {
        if (named.size() == 10)
            break;
        named << QStringLiteral("第%1行").arg(r);
    }
    const QString more = rows.size() > named.size() ? QStringLiteral("等 %1 行").arg(rows.size()) : QString();
    return named.join(QStringLiteral("、")) + more +
           QStringLiteral("有内容但没有日期，没有存储任何记录。请输入日期，或删除这些行后再存储。");
}

Result<void> BookSaver::writeRecords()
{
    m_notStored.clear();
    if (!m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    m_host.progress(0);
    if (m_host.stopped() || !m_acc)
        return Error(QStringLiteral("没有连接到账套。"));
    Database &db = m_acc->Connection();
    if (const Result<void> connected = ensureConnected(db); !connected.ok())
        return connected;

    const JournalColumns columns(m_grid);
    const int docId = m_state.savedDocId();
    // PostgreSQL text cannot hold NUL: it goes before the row is compared or written.
    const bool dropsNul = db.engine() == Database::PostgresEngine;
    int first = 0, last = 0;
    // Only what differs from what the database holds is written: new rows,
    // changed ones, and rows whose place (the stored Row) moved.
    std::vector<Pending> pending;
    QList<int> undated;  // rows with a record's content and no date
    // The pass reports its progress and what it corrects as it goes: a host
    // that changes the grid meanwhile sends it back to the top, so no row it
    // has gone by is left unseen (and none is marked clean unstored).
    // Tells the host something; true when it changed the grid meanwhile.
    const auto told = [this](const std::function<void()> &tell) {
        const quint64 before = m_grid.revision();
        tell();
        return m_grid.revision() != before;
    };
    bool planned = false;
    for (int attempt = 0; !planned; ++attempt) {
        if (attempt == MaxPlans)
            return Error(QStringLiteral("存储时表格一直在被改动，没有存储任何记录。请稍后再存储。"));
        planned = true;
        pending.clear();
        undated.clear();
        m_notStored.clear();
        first = m_grid.fixedRows();
        last = m_grid.rows() - 1;
        const int rows = m_grid.rows();
        // A book whose first row was never stored is written out whole. The
        // grid itself changes only once the pass is stored, so a pass that
        // fails leaves the undo history fitting the grid.
        bool writeAll = false;
        if (last >= first) {
            const BookRow opening(m_grid, columns, first);
            writeAll = opening.number(JournalColumns::Row) == opening.recId();
        }
        int reported = -1;
        const bool shifted = m_grid.rowsShiftedSinceClean();
        for (int r = first; r <= last && planned; ++r) {
            const int percent = int(std::round(double(r) / rows * 100.0));
            if (percent != reported) {
                reported = percent;
                if (told([&] { m_host.progress(percent); })) {
                    planned = false;
                    break;
                }
                if (m_host.stopped() || !m_acc)
                    return Error(QStringLiteral("没有连接到账套。"));
            }
            // A row nobody touched, still at the place it is stored at, is what the
            // database holds (a load or save leaves every other row touched).
            const bool touched = writeAll || m_grid.isRowTouched(r);
            if (!touched && !shifted)
                continue;
            const BookRow row(m_grid, columns, r);
            if (!touched && row.number(JournalColumns::Row) == r && row.recId() > 0)
                continue;
            // Rows without a date are never stored: blank rows and the empty row
            // at the bottom; one that holds anything else stops the save.
            if (!row.isDated()) {
                // A stored record nobody touched here stays as it is stored.
                if (holdsRecord(row) && (m_grid.isRowTouched(r) || row.recId() <= 0))
                    undated << r;
                continue;
            }
            // Nor are records holding values this control cannot hold.
            if (m_state.unwritable.contains(row.recId())) {
                if (m_grid.isRowTouched(r))
                    m_notStored << r;
                continue;
            }
            if (dropsNul) {
                const QStringList dropped = StoredRecords::dropNul(row);
                if (!dropped.isEmpty() && told([&] {
                        m_host.prompt(QStringLiteral("第%1行的%2含有数据库不能存储的空字符，已将它去掉。")
                                          .arg(r)
                                          .arg(dropped.join(QStringLiteral("、"))),
                                      false);
                    })) {
                    planned = false;
                    break;
                }
            }
            const int recId = row.recId();
            quint64 rest = 0;
            const quint64 print = StoredRecords::fingerprint(row, docId, r, r == first, &rest);
            if (recId <= 0 || !m_state.stored.holds(recId, print)) {
                // An amount that is none, or past what money holds, would be
                // stored as some other number: the pass stops before anything is written.
                if (const QString bad = badAmount(columns, row); !bad.isEmpty())
                    return Error(QStringLiteral("第%1行的%2，不能存储。请改正后再存储。").arg(r).arg(bad));
                if (pending.empty())
                    pending.reserve(std::size_t(last - r + 1));
                // A record read or written here with this place keeps its Row and
                // DocID, which the database's check below makes sure of.
                const bool atPlace = recId > 0 && m_state.stored.knows(recId) && row.number(JournalColumns::Row) == r &&
                                     row.number(JournalColumns::DocID) == docId;
                pending.push_back({r, recId, print, atPlace, rest, false});
            }
        }
    }

    if (!undated.isEmpty()) {
        const int show = columns[JournalColumns::ShowName];
        m_grid.setCursor(undated.first(), show >= 0 ? show : columns[JournalColumns::JnlDate]);
        return Error(undatedRows(undated));
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
                sqlRun(db, {QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ"), {}});
            !snapshot.ok())
            return snapshot;
    }
    const auto writer = RecordWriter::create(db);
    // Nothing is written over a change somebody else stored since this
    // control read the record before it is merged. When the database cannot
    // have changed since the last save stored what this control remembers,
    // there is nothing to read back.
    ChangeStamp stamp;
    const bool stamped = writer->changeStamp(stamp);
    const bool current = stamped && m_state.stored.currentAt(stamp);
    RecordPrints readRests;
    // The stamp stored below stands for every fingerprint remembered: only a
    // pass that knows them all to be current (the last stamp held, or the
    // check found the whole book as remembered) may store one.
    bool allCurrent = current;
    if (!current) {
        if (const Result<void> checked = checkConflicts(db, pending, readRests, allCurrent); !checked.ok())
            return checked;
    }
    // A record whose stored fields but its balances are what the database
    // holds gets its balances alone written, where the writer can.
    if (writer->writesBalancesAlone()) {
        for (Pending &p : pending) {
            if (p.recId <= 0 || !p.atPlace || p.rest == 0)
                continue;
            quint64 stored = 0;
            if (current)
                stored = m_state.stored.rest(p.recId);
            else
                readRests.find(p.recId, stored);
            p.balancesOnly = stored == p.rest;
        }
    }
    for (int key : m_state.removedRecords) {
        if (key <= 0)
            continue;
        const Result<void> removed = writer->remove(key);
        if (!removed.ok())
            return removed;
    }
    const Result<QHash<int, int>> written = writer->write(GridRecords(m_grid, columns, docId, first, pending));
    if (!written.ok())
        return Error(written.error());

    // A book that holds nothing but an empty opening row keeps no records at all.
    bool emptied = false;
    const int openingRow = last >= first ? first : -1;
    if (openingRow >= 0 && BookRow::of(m_grid, columns, openingRow).isDated() &&
        BookRow::of(m_grid, columns, openingRow).balance().isZero() && !anyDatedAfter(openingRow)) {
        const Result<QVariant> stored = sqlScalar(db, sqlDialect(db).countRecords(m_state.savedDocId()));
        if (!stored.ok())
            return Error(stored.error());
        // Records other users added since stay: then only this row goes.
        if (stored.value().toInt() <= 1) {
            const Result<void> cleared = sqlRun(db, sqlDialect(db).deleteBook(m_state.savedDocId()));
            if (!cleared.ok())
                return cleared;
            emptied = true;
        }
    }
    // Taken while this transaction still holds the database, so no other
    // commit can slip in between the stamp and what it stands for.
    const bool stampedAfter = writer->changeStamp(stamp);
    const Result<void> committed = tx.commit();
    if (!committed.ok())
        return committed;

    // Only now, with everything stored, does the grid learn the new keys and
    // the control what the database holds.
    const QHash<int, int> &keys = written.value();
    for (int key : m_state.removedRecords)
        m_state.stored.forget(key);
    const bool anyLocked = m_state.lastSumRow != first;
    for (Pending &p : pending) {
        const BookRow row(m_grid, columns, p.gridRow);
        const auto added = keys.constFind(p.gridRow);
        if (added != keys.constEnd()) {
            row.setText(JournalColumns::RecID, QString::number(added.value()));
            p.recId = added.value();
        }
        if (row.number(JournalColumns::Row) != p.gridRow)
            row.setText(JournalColumns::Row, QString::number(p.gridRow));
        row.setChangeMark(BookRow::Saved);
        const bool locked = anyLocked && p.gridRow <= m_state.lastSumRow;
        m_grid.setRowForeColor(p.gridRow, locked ? m_state.looks.lockedColor() : QColor());
        m_state.stored.remember(p.recId, p.print, p.rest);
    }
    if (emptied) {
        BookRow(m_grid, columns, openingRow).setText(JournalColumns::RecID, QStringLiteral("0"));
        m_state.stored.clear();
    } else if (stampedAfter && allCurrent) {
        m_state.stored.setStamp(stamp);
    }
    m_state.removedRecords.clear();
    m_grid.markRowsClean();
    // Clean before the last report: what a handler changes from it stays a change.
    m_state.dirty = false;
    m_host.progress(-1);
    return {};
}

} // namespace kx
