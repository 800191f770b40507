#include "data/SqlAccess.h"

#include "data/DatabasePrivate.h"
#include "data/PgRowReader.h"

#include <QSqlRecord>

namespace kx {

namespace {

Result<QVariant> pgFirstRowField(DatabasePrivate &d, pg_conn *conn, const SqlStatement &statement,
                                 const QString &field)
{
    Result<FetchedRows> rows = PgRowReader::read(conn, statement, {}, 1, 0);
    if (!rows.ok()) {
        d.m_lastError = rows.error();
        return Error(d.m_lastError);
    }
    const FetchedRows &got = rows.value();
    // The exact name first, then any case (the server folds unquoted names).
    qsizetype col = field.isEmpty() ? 0 : got.fieldNames.indexOf(field);
    for (qsizetype i = 0; col < 0 && i < got.fieldNames.size(); ++i)
        if (got.fieldNames.at(i).compare(field, Qt::CaseInsensitive) == 0)
            col = i;
    if (col < 0 || got.cells.rows() == 0 || col >= got.cells.cols() || got.cells.text(0, int(col)).isEmpty())
        return QVariant();
    return QVariant(got.cells.text(0, int(col)));
}

} // namespace

const SqlDialect &sqlDialect(const Database &db)
{
    return *DatabasePrivate::get(db).m_dialect;
}

Result<QSqlQuery> sqlExec(const Database &db, const SqlStatement &statement, bool forwardOnly)
{
    DatabasePrivate &d = DatabasePrivate::get(db);
    if (!db.isOpen()) {
        if (d.m_lastError.isEmpty())
            d.m_lastError = QStringLiteral("数据库没有打开。");
        return Error(d.m_lastError);
    }
    QSqlQuery q(d.m_db);
    q.setForwardOnly(forwardOnly);
    // Amounts are fixed-point; numbers come back as text so no digit is lost.
    q.setNumericalPrecisionPolicy(QSql::HighPrecision);
    bool ok = false;
    if (statement.binds.isEmpty()) {
        ok = q.exec(statement.text);
    } else if (q.prepare(statement.text)) {
        for (const QVariant &v : statement.binds)
            q.addBindValue(v);
        ok = q.exec();
    }
    if (!ok) {
        d.m_lastError = QStringLiteral("数据库操作失败：%1").arg(DatabasePrivate::errorText(q.lastError()));
        return Error(d.m_lastError);
    }
    d.m_lastError.clear();
    return Result<QSqlQuery>(std::move(q));
}

Result<QVariant> sqlScalar(const Database &db, const SqlStatement &statement)
{
    // On PostgreSQL values go as libpq parameters, never into the text.
    if (pg_conn *conn = PgRowReader::connectionOf(db))
        return pgFirstRowField(DatabasePrivate::get(db), conn, statement, QString());
    Result<QSqlQuery> r = sqlExec(db, statement);
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    return q.next() ? q.value(0) : QVariant();
}

Result<QVariant> sqlFirstRowField(const Database &db, const SqlStatement &statement, const QString &field)
{
    if (pg_conn *conn = PgRowReader::connectionOf(db))
        return pgFirstRowField(DatabasePrivate::get(db), conn, statement, field);
    Result<QSqlQuery> r = sqlExec(db, statement);
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    if (!q.next())
        return QVariant();
    const QSqlRecord rec = q.record();
    for (int i = 0; i < rec.count(); ++i)
        if (rec.fieldName(i) == field)
            return q.value(i);
    for (int i = 0; i < rec.count(); ++i)
        if (rec.fieldName(i).compare(field, Qt::CaseInsensitive) == 0)
            return q.value(i);
    return QVariant();
}

bool sqlHasTable(const Database &db, const QString &table)
{
    if (!db.isOpen())
        return false;
    if (db.engine() == Database::PostgresEngine) {
        // NULL when no table of that name is on the search path.
        const QVariant found = sqlScalar(db, {QStringLiteral("SELECT to_regclass(?)::text"), {table.toLower()}}).valueOr(QVariant());
        return found.isValid() && !found.isNull();
    }
    if (db.engine() == Database::SqliteEngine)
        return sqlScalar(db, {QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = ? COLLATE NOCASE"),
                              {table}})
                   .valueOr(QVariant(0))
                   .toInt() > 0;
    for (const QString &name : db.handle().tables())
        if (name.compare(table, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

Result<void> sqlRun(const Database &db, const SqlStatement &statement)
{
    if (pg_conn *conn = PgRowReader::connectionOf(db)) {
        const Result<void> done = PgRowReader::run(conn, statement);
        if (!done.ok())
            DatabasePrivate::get(db).m_lastError = done.error();
        return done;
    }
    Result<QSqlQuery> r = sqlExec(db, statement);
    if (!r.ok())
        return Error(r.error());
    return {};
}

} // namespace kx
