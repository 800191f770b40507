#include "data/QtRecordWriter.h"

#include "kxjournal/Database.h"

namespace kx {

QtRecordWriter::QtRecordWriter(const Database &db) : m_db(db) {}

Status QtRecordWriter::remove(int recId)
{
    return m_db.run(m_db.dialect().deleteRecord(recId));
}

Result<int> QtRecordWriter::insert(const RecordValues &row)
{
    Result<QSqlQuery> r = m_db.exec(m_db.dialect().insertRecord(fields(row.withAmounts), bindable(row.values)));
    if (!r.ok())
        return Result<int>::failure(r.error());
    QSqlQuery q = r.takeValue();
    if (q.next())
        return q.value(0).toInt();
    const SqlStatement last = m_db.dialect().lastInsertedKey();
    if (last.text.isEmpty())
        return Result<int>::failure(QStringLiteral("数据库没有给出新记录的编号。"));
    const Result<QVariant> key = m_db.scalar(last);
    if (!key.ok())
        return Result<int>::failure(key.error());
    return key.value().toInt();
}

Result<QHash<int, int>> QtRecordWriter::write(const std::vector<RecordValues> &rows)
{
    QHash<int, int> added;
    for (const RecordValues &row : rows) {
        if (row.recId > 0) {
            Result<QSqlQuery> r = m_db.exec(m_db.dialect().updateRecord(row.recId, fields(row.withAmounts), bindable(row.values)));
            if (!r.ok())
                return Result<QHash<int, int>>::failure(r.error());
            if (r.value().numRowsAffected() > 0)
                continue;
        }
        const Result<int> key = insert(row);
        if (!key.ok())
            return Result<QHash<int, int>>::failure(key.error());
        added.insert(row.gridRow, key.value());
    }
    return added;
}

} // namespace kx
