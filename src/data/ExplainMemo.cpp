#include "data/ExplainMemo.h"

#include "data/SqlAccess.h"
#include "data/Transaction.h"
#include "kxjournal/Database.h"

#include <QSqlDatabase>

namespace kx {

QString ExplainMemo::statement(SqlDialect::Kind kind)
{
    switch (kind) {
    case SqlDialect::Server:
        return QStringLiteral("CREATE TABLE kxExplainMemo (DocID INT NOT NULL PRIMARY KEY, Explains NVARCHAR(MAX))");
    case SqlDialect::Desktop:
        return QStringLiteral("CREATE TABLE kxExplainMemo (DocID INTEGER NOT NULL PRIMARY KEY, Explains MEMO)");
    case SqlDialect::Postgres:
    case SqlDialect::Sqlite:
        break;
    }
    return QStringLiteral("CREATE TABLE IF NOT EXISTS kxExplainMemo (DocID INTEGER NOT NULL PRIMARY KEY, Explains TEXT)");
}

Result<QStringList> ExplainMemo::cleaned(const QStringList &texts)
{
    QStringList out;
    for (const QString &text : texts) {
        // A tab becomes a blank, as in a typed explanation.
        const QString t = QString(text).replace(QLatin1Char('\t'), QLatin1Char(' ')).trimmed();
        if (t.contains(QLatin1Char('|')) || t.contains(QLatin1Char('\n')) || t.contains(QLatin1Char('\r')))
            return Error(QStringLiteral("常用摘要“%1”不能含有“|”或换行。").arg(t.simplified()));
        if (!t.isEmpty() && !out.contains(t))
            out << t;
    }
    return out;
}

Result<QStringList> ExplainMemo::load(const Database &db, int docId)
{
    if (!db.isOpen())
        return Error(QStringLiteral("数据库没有打开。"));
    if (!sqlHasTable(db, QStringLiteral("kxExplainMemo")))
        return QStringList();
    const Result<QVariant> v =
        sqlScalar(db, {QStringLiteral("SELECT Explains FROM kxExplainMemo WHERE DocID = %1").arg(docId), {}});
    if (!v.ok())
        return Error(v.error());
    return v.value().toString().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

Result<QStringList> ExplainMemo::save(Database &db, int docId, const QStringList &texts)
{
    if (!db.isOpen())
        return Error(QStringLiteral("数据库没有打开。"));
    const Result<QStringList> kept = cleaned(texts);
    if (!kept.ok())
        return kept;
    const SqlDialect::Kind kind = sqlDialect(db).kind();
    const bool made = sqlHasTable(db, QStringLiteral("kxExplainMemo"));
    Transaction tx(db);
    if (!tx.ok())
        return Error(tx.error());
    Result<void> r;
    if (!made)
        r = sqlRun(db, {statement(kind), {}});
    if (r.ok())
        r = sqlRun(db, {QStringLiteral("DELETE FROM kxExplainMemo WHERE DocID = %1").arg(docId), {}});
    if (r.ok() && !kept.value().isEmpty())
        r = sqlRun(db, {QStringLiteral("INSERT INTO kxExplainMemo (DocID, Explains) VALUES (%1, ?)").arg(docId),
                        {kept.value().join(QLatin1Char('\n'))}});
    if (!r.ok())
        return Error(r.error());
    if (const Result<void> done = tx.commit(); !done.ok())
        return Error(done.error());
    return kept;
}

} // namespace kx
