#include "data/QtRecordWriter.h"

#include "data/SqlAccess.h"
#include "kxjournal/Database.h"

namespace kx {

QtRecordWriter::QtRecordWriter(const Database &db) : m_db(db) {}

Result<void> QtRecordWriter::remove(int recId)
{
    return sqlRun(m_db, sqlDialect(m_db).deleteRecord(recId));
}

Result<int> QtRecordWriter::insert(const RecordValues &row)
{
    Result<QSqlQuery> r = sqlExec(m_db, sqlDialect(m_db).insertRecord(fieldNames(row.withAmounts), bindable(row)));
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    if (q.next())
        return q.value(0).toInt();
    const SqlStatement last = sqlDialect(m_db).lastInsertedKey();
    if (last.text.isEmpty())
        return Error(QStringLiteral("数据库没有给出新记录的编号。"));
    const Result<QVariant> key = sqlScalar(m_db, last);
    if (!key.ok())
        return Error(key.error());
    return key.value().toInt();
}

Result<QHash<int, int>> QtRecordWriter::write(const RecordSource &rows)
{
    QHash<int, int> added;
    RecordValues row;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows.fill(i, row);
        if (row.recId > 0) {
            Result<QSqlQuery> r =
                sqlExec(m_db, sqlDialect(m_db).updateRecord(row.recId, fieldNames(row.withAmounts), bindable(row)));
            if (!r.ok())
                return Error(r.error());
            if (r.value().numRowsAffected() > 0)
                continue;
        }
        const Result<int> key = insert(row);
        if (!key.ok())
            return Error(key.error());
        added.insert(row.gridRow, key.value());
    }
    return added;
}

} // namespace kx
