#include "bank/StatementStore.h"

#include "data/BankSchema.h"
#include "data/SqlAccess.h"
#include "data/SqlValue.h"
#include "data/Transaction.h"
#include "kxjournal/Database.h"

#include <QDateTime>
#include <algorithm>
#include <QSet>
#include <QSqlDriver>
#include <sqlite3.h>

namespace kx {

namespace {

const QString Receipt = QStringLiteral("收");
const QString Payment = QStringLiteral("付");

QDate dateOf(const QVariant &v)
{
    if (v.typeId() == QMetaType::QDate)
        return v.toDate();
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime().date();
    return QDate::fromString(v.toString().left(10), Qt::ISODate);
}

// What tells a line stored from one file apart from the same line in another.
QString lineKey(const QDate &date, StatementSide side, Currency amount, const QString &reference)
{
    return date.toString(Qt::ISODate) + QLatin1Char('|') + (side == StatementSide::Receipt ? Receipt : Payment) +
           QLatin1Char('|') + amount.toString() + QLatin1Char('|') + reference;
}

sqlite3 *sqliteOf(const Database &db)
{
    if (db.engine() != Database::SqliteEngine || !db.handle().driver())
        return nullptr;
    const QVariant h = db.handle().driver()->handle();
    if (!h.isValid() || qstrcmp(h.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(h.constData());
}

const char InsertLine[] = "INSERT INTO kxBankStmt (DocID, ImportID, LineNo, TxnDate, Side, Amount, BankRef, CpName, "
                          "CpAccount, Memo, Balance) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

} // namespace

StatementStore::StatementStore(Database &db) : m_db(db) {}

QString StatementStore::sideText(StatementSide side)
{
    return side == StatementSide::Receipt ? Receipt : Payment;
}

Result<void> StatementStore::ready() const
{
    return BankSchema::ensure(m_db);
}

Result<ImportOutcome> StatementStore::import(int docId, const Statement &statement, const QString &fileName,
                                             const QString &user)
{
    if (const Result<void> r = ready(); !r.ok())
        return Error(r.error());
    ImportOutcome outcome;
    outcome.read = int(statement.lines.size());
    const QString hash = QString::fromLatin1(statement.hash.toHex());
    const Result<QVariant> earlier = sqlScalar(
        m_db, {QStringLiteral("SELECT MIN(ImportedAt) FROM kxBankImport WHERE DocID = %1 AND FileHash = ?").arg(docId),
               {hash}});
    if (!earlier.ok())
        return Error(earlier.error());
    if (!earlier.value().isNull() && earlier.value().isValid()) {
        outcome.again = true;
        const QVariant at = earlier.value();
        outcome.before = at.typeId() == QMetaType::QDateTime ? at.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                                                             : at.toString().left(16);
        return outcome;
    }

    // Lines another file brought already (statements of overlapping periods).
    QSet<QString> stored;
    {
        Result<QSqlQuery> q = sqlExec(
            m_db, {QStringLiteral("SELECT TxnDate, Side, Amount, BankRef FROM kxBankStmt WHERE DocID = %1").arg(docId), {}});
        if (!q.ok())
            return Error(q.error());
        QSqlQuery query = q.takeValue();
        while (query.next())
            stored.insert(lineKey(dateOf(query.value(0)),
                                  query.value(1).toString() == Payment ? StatementSide::Payment : StatementSide::Receipt,
                                  SqlValue::amount(query.value(2)), query.value(3).toString()));
    }
    QList<const StatementLine *> adding;
    adding.reserve(statement.lines.size());
    // A bank that lists its newest lines first: kept oldest first, so the
    // lines of a day stand in the order the bank booked them.
    QList<const StatementLine *> ordered;
    for (const StatementLine &line : statement.lines)
        ordered << &line;
    if (ordered.size() > 1 && ordered.first()->date > ordered.last()->date)
        std::reverse(ordered.begin(), ordered.end());
    for (const StatementLine *each : ordered) {
        const StatementLine &line = *each;
        if (!line.reference.isEmpty() && stored.contains(lineKey(line.date, line.side, line.amount, line.reference)))
            ++outcome.skipped;
        else
            adding << &line;
    }

    Transaction tx(m_db);
    if (!tx.ok())
        return Error(tx.error());
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const bool closing = statement.closingBalance.has_value() && statement.closingDate.isValid();
    Result<void> made = sqlRun(
        m_db, {QStringLiteral("INSERT INTO kxBankImport (DocID, FileName, FileHash, Format, ImportedAt, ImportedBy, "
                              "Lines, ClosingDate, ClosingBalance) VALUES (%1, ?, ?, ?, ?, ?, %2, ?, ?)")
                   .arg(docId)
                   .arg(adding.size()),
               {fileName, hash, statement.format, now, user, closing ? QVariant(statement.closingDate) : QVariant(),
                closing ? SqlValue::bindAmount(*statement.closingBalance) : QVariant()}});
    if (!made.ok())
        return Error(made.error());
    const Result<QVariant> id = sqlScalar(
        m_db, {QStringLiteral("SELECT MAX(ImportID) FROM kxBankImport WHERE DocID = %1 AND FileHash = ?").arg(docId),
               {hash}});
    if (!id.ok())
        return Error(id.error());
    const Result<int> added = insertLines(docId, id.value().toInt(), adding);
    if (!added.ok())
        return Error(added.error());
    if (const Result<void> done = tx.commit(); !done.ok())
        return Error(done.error());
    outcome.added = added.value();
    return outcome;
}

Result<int> StatementStore::insertLines(int docId, int importId, const QList<const StatementLine *> &lines)
{
    if (sqlite3 *h = sqliteOf(m_db)) {
        // Through the engine's own prepared statement: a statement of a
        // hundred thousand lines goes in at the engine's pace.
        sqlite3_stmt *stmt = nullptr;
        if (sqlite3_prepare_v2(h, InsertLine, -1, &stmt, nullptr) != SQLITE_OK)
            return Error(QString::fromUtf8(sqlite3_errmsg(h)));
        QByteArray texts[6];
        auto text = [&](int at, int slot, const QString &value) {
            if (value.isNull())
                return sqlite3_bind_null(stmt, at);
            texts[slot] = value.toUtf8();
            return sqlite3_bind_text(stmt, at, texts[slot].constData(), int(texts[slot].size()), SQLITE_STATIC);
        };
        int rc = SQLITE_OK;
        for (const StatementLine *line : lines) {
            sqlite3_reset(stmt);
            rc = sqlite3_bind_int(stmt, 1, docId);
            rc = rc ? rc : sqlite3_bind_int(stmt, 2, importId);
            rc = rc ? rc : sqlite3_bind_int(stmt, 3, line->sourceLine);
            rc = rc ? rc : text(4, 0, line->date.toString(Qt::ISODate));
            rc = rc ? rc : text(5, 1, sideText(line->side));
            rc = rc ? rc : text(6, 2, line->amount.toString());
            rc = rc ? rc : text(7, 3, line->reference);
            rc = rc ? rc : text(8, 4, line->counterparty);
            rc = rc ? rc : text(9, 5, line->counterpartyAccount);
            QByteArray memo = line->memo.toUtf8();
            rc = rc ? rc : sqlite3_bind_text(stmt, 10, memo.constData(), int(memo.size()), SQLITE_TRANSIENT);
            QByteArray balance = line->balance ? line->balance->toString().toUtf8() : QByteArray();
            rc = rc ? rc
                    : line->balance ? sqlite3_bind_text(stmt, 11, balance.constData(), int(balance.size()), SQLITE_TRANSIENT)
                                    : sqlite3_bind_null(stmt, 11);
            if (rc == SQLITE_OK && sqlite3_step(stmt) != SQLITE_DONE)
                rc = SQLITE_ERROR;
            if (rc != SQLITE_OK)
                break;
        }
        const QString why = rc == SQLITE_OK ? QString() : QString::fromUtf8(sqlite3_errmsg(h));
        sqlite3_finalize(stmt);
        if (rc != SQLITE_OK)
            return Error(why);
        return int(lines.size());
    }
    for (const StatementLine *line : lines) {
        const Result<void> r = sqlRun(
            m_db, {QString::fromLatin1(InsertLine),
                   {docId, importId, line->sourceLine, line->date, sideText(line->side),
                    SqlValue::bindAmount(line->amount), line->reference, line->counterparty, line->counterpartyAccount,
                    line->memo, line->balance ? SqlValue::bindAmount(*line->balance) : QVariant()}});
        if (!r.ok())
            return Error(r.error());
    }
    return int(lines.size());
}

Result<QList<StoredLine>> StatementStore::lines(int docId, const QDate &to) const
{
    if (const Result<void> r = ready(); !r.ok())
        return Error(r.error());
    SqlStatement s{QStringLiteral("SELECT StmtID, LineNo, TxnDate, Side, Amount, BankRef, CpName, CpAccount, Memo, "
                                  "Balance FROM kxBankStmt WHERE DocID = %1")
                       .arg(docId),
                   {}};
    s.text += QStringLiteral(" ORDER BY TxnDate, StmtID");
    Result<QSqlQuery> q = sqlExec(m_db, s);
    if (!q.ok())
        return Error(q.error());
    QSqlQuery query = q.takeValue();
    QList<StoredLine> out;
    while (query.next()) {
        StoredLine s;
        s.id = query.value(0).toInt();
        StatementLine &l = s.line;
        l.sourceLine = query.value(1).toInt();
        l.date = dateOf(query.value(2));
        if (to.isValid() && l.date > to)
            continue;
        l.side = query.value(3).toString() == Payment ? StatementSide::Payment : StatementSide::Receipt;
        l.amount = SqlValue::amount(query.value(4));
        l.reference = query.value(5).toString();
        l.counterparty = query.value(6).toString();
        l.counterpartyAccount = query.value(7).toString();
        l.memo = query.value(8).toString();
        if (!query.value(9).isNull())
            l.balance = SqlValue::amount(query.value(9));
        out << s;
    }
    return out;
}

Result<QMultiHash<int, int>> StatementStore::matches(int docId) const
{
    if (const Result<void> r = ready(); !r.ok())
        return Error(r.error());
    Result<QSqlQuery> q = sqlExec(
        m_db, {QStringLiteral("SELECT m.StmtID, m.RecID FROM kxBankMatch m INNER JOIN kxBankStmt s ON s.StmtID = "
                              "m.StmtID WHERE s.DocID = %1")
                   .arg(docId),
               {}});
    if (!q.ok())
        return Error(q.error());
    QSqlQuery query = q.takeValue();
    QMultiHash<int, int> out;
    while (query.next())
        out.insert(query.value(0).toInt(), query.value(1).toInt());
    return out;
}

Result<void> StatementStore::match(const QList<QPair<int, int>> &pairs, const QString &user, bool automatic)
{
    if (const Result<void> r = ready(); !r.ok())
        return r;
    Transaction tx(m_db);
    if (!tx.ok())
        return Error(tx.error());
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (sqlite3 *h = sqliteOf(m_db)) {
        sqlite3_stmt *stmt = nullptr;
        if (sqlite3_prepare_v2(h,
                               "INSERT INTO kxBankMatch (StmtID, RecID, MatchedBy, MatchedAt, IsAuto) "
                               "VALUES (?, ?, ?, ?, ?)",
                               -1, &stmt, nullptr) != SQLITE_OK)
            return Error(QString::fromUtf8(sqlite3_errmsg(h)));
        const QByteArray who = user.toUtf8();
        const QByteArray when = now.toUtf8();
        int rc = sqlite3_bind_text(stmt, 3, who.constData(), int(who.size()), SQLITE_STATIC);
        rc = rc ? rc : sqlite3_bind_text(stmt, 4, when.constData(), int(when.size()), SQLITE_STATIC);
        rc = rc ? rc : sqlite3_bind_int(stmt, 5, automatic ? 1 : 0);
        for (const QPair<int, int> &p : pairs) {
            if (rc != SQLITE_OK)
                break;
            sqlite3_reset(stmt);
            rc = sqlite3_bind_int(stmt, 1, p.first);
            rc = rc ? rc : sqlite3_bind_int(stmt, 2, p.second);
            if (rc == SQLITE_OK && sqlite3_step(stmt) != SQLITE_DONE)
                rc = SQLITE_ERROR;
        }
        const QString why = rc == SQLITE_OK ? QString() : QString::fromUtf8(sqlite3_errmsg(h));
        sqlite3_finalize(stmt);
        if (rc != SQLITE_OK)
            return Error(why);
        return tx.commit();
    }
    for (const QPair<int, int> &p : pairs) {
        const Result<void> r = sqlRun(m_db, {QStringLiteral("INSERT INTO kxBankMatch (StmtID, RecID, MatchedBy, "
                                                            "MatchedAt, IsAuto) VALUES (%1, %2, ?, ?, %3)")
                                                 .arg(p.first)
                                                 .arg(p.second)
                                                 .arg(automatic ? 1 : 0),
                                             {user, now}});
        if (!r.ok())
            return r;
    }
    return tx.commit();
}

Result<int> StatementStore::unmatch(const QList<int> &lineIds)
{
    if (const Result<void> r = ready(); !r.ok())
        return Error(r.error());
    Transaction tx(m_db);
    if (!tx.ok())
        return Error(tx.error());
    int taken = 0;
    for (const int id : lineIds) {
        const Result<QVariant> n =
            sqlScalar(m_db, {QStringLiteral("SELECT COUNT(*) FROM kxBankMatch WHERE StmtID = %1").arg(id), {}});
        if (!n.ok())
            return Error(n.error());
        const Result<void> r = sqlRun(m_db, {QStringLiteral("DELETE FROM kxBankMatch WHERE StmtID = %1").arg(id), {}});
        if (!r.ok())
            return Error(r.error());
        taken += n.value().toInt();
    }
    if (const Result<void> done = tx.commit(); !done.ok())
        return Error(done.error());
    return taken;
}

Result<QList<QPair<QDate, Currency>>> StatementStore::closings(int docId) const
{
    if (const Result<void> r = ready(); !r.ok())
        return Error(r.error());
    Result<QSqlQuery> q = sqlExec(m_db, {QStringLiteral("SELECT ClosingDate, ClosingBalance FROM kxBankImport "
                                                              "WHERE DocID = %1 AND ClosingBalance IS NOT NULL")
                                                   .arg(docId),
                                               {}});
    if (!q.ok())
        return Error(q.error());
    QSqlQuery query = q.takeValue();
    QList<QPair<QDate, Currency>> out;
    while (query.next())
        out.append({dateOf(query.value(0)), SqlValue::amount(query.value(1))});
    return out;
}

Result<std::optional<ColumnMapping>> StatementStore::mapping(int docId) const
{
    if (const Result<void> r = ready(); !r.ok())
        return Error(r.error());
    const Result<QVariant> v =
        sqlScalar(m_db, {QStringLiteral("SELECT Mapping FROM kxBankMapping WHERE DocID = %1").arg(docId), {}});
    if (!v.ok())
        return Error(v.error());
    if (v.value().isNull() || !v.value().isValid())
        return std::optional<ColumnMapping>();
    return ColumnMapping::fromString(v.value().toString());
}

Result<void> StatementStore::rememberMapping(int docId, const ColumnMapping &mapping)
{
    if (const Result<void> r = ready(); !r.ok())
        return r;
    Transaction tx(m_db);
    if (!tx.ok())
        return Error(tx.error());
    Result<void> r = sqlRun(m_db, {QStringLiteral("DELETE FROM kxBankMapping WHERE DocID = %1").arg(docId), {}});
    if (r.ok())
        r = sqlRun(m_db, {QStringLiteral("INSERT INTO kxBankMapping (DocID, Mapping) VALUES (%1, ?)").arg(docId),
                          {mapping.toString()}});
    if (!r.ok())
        return r;
    return tx.commit();
}

} // namespace kx
