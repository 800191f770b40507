#include "data/QtRecordWriter.h"

#include "kxjournal/Database.h"

namespace kx {

QtRecordWriter::QtRecordWriter(const Database &db) : m_db(db) {}

Result<void> QtRecordWriter::remove(int recId)
{
    return m_db.run(m_db.dialect().deleteRecord(recId));
}

Result<int> QtRecordWriter::insert(const RecordValues &row)
{
    Result<QSqlQuery> r = m_db.exec(m_db.dialect().insertRecord(fieldNames(row.withAmounts), bindable(row)));
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    if (q.next())
        return q.value(0).toInt();
    const SqlStatement last = m_db.dialect().lastInsertedKey();
    if (last.text.isEmpty())
        return Error(QStringLiteral("数据库没有给出新记录的编号。"));
    const Result<QVariant> key = m_db.scalar(last);
    if (!key.ok())
        return Error(key.error());
    return key.value().toInt();
}

Result<QHash<int, int>> QtRecordWriter::write(const std::vector<RecordValues> &rows)
{
    QHash<int, int> added;
    for (const RecordValues &row : rows) {
        if (row.recId > 0) {
            Result<QSqlQuery> r = m_db.exec(m_db.dialect().updateRecord(row.recId, fieldNames(row.withAmounts), bindable(row)));
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
