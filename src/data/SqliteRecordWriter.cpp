#include "data/SqliteRecordWriter.h"

#include "data/SqlDialect.h"
#include "kxjournal/Currency.h"

#include <QStringEncoder>
#include <sqlite3.h>

namespace kx {

SqliteRecordWriter::SqliteRecordWriter(void *handle) : m_db(static_cast<sqlite3 *>(handle)) {}

SqliteRecordWriter::~SqliteRecordWriter()
{
    for (sqlite3_stmt *s : {m_update[0], m_update[1], m_insert[0], m_insert[1]})
        sqlite3_finalize(s);
}

QString SqliteRecordWriter::error() const
{
    return QStringLiteral("数据库操作失败：%1").arg(QString::fromUtf8(sqlite3_errmsg(m_db)));
}

sqlite3_stmt *SqliteRecordWriter::prepare(const QString &sql)
{
    sqlite3_stmt *stmt = nullptr;
    const QByteArray utf8 = sql.toUtf8();
    if (sqlite3_prepare_v2(m_db, utf8.constData(), int(utf8.size()), &stmt, nullptr) != SQLITE_OK) {
        sqlite3_finalize(stmt);
        return nullptr;
    }
    return stmt;
}

Result<void> SqliteRecordWriter::bindAll(sqlite3_stmt *stmt, const RecordValues &record, int recId)
{
    sqlite3_reset(stmt);
    // All of the row's texts go into one buffer, sized once: the engine then
    // takes them as they are, without a conversion and an allocation each.
    const std::vector<RecordField> &order = fields(record.withAmounts);
    qsizetype room = 0;
    for (RecordField f : order)
        if (const FieldValue &v = record[f]; v.kind == FieldValue::Text)
            room += v.text.size() * 3;
    if (m_utf8.size() < room)
        m_utf8.resize(room);
    QStringEncoder encoder(QStringEncoder::Utf8);
    char *out = m_utf8.data();
    int i = 1;
    for (RecordField f : order) {
        const FieldValue &v = record[f];
        int rc = SQLITE_OK;
        switch (v.kind) {
        case FieldValue::Number:
            rc = sqlite3_bind_int64(stmt, i, v.number);
            break;
        case FieldValue::Amount:
            // The amount columns keep numbers; a whole amount stays an integer.
            rc = v.number % Currency::Scale == 0 ? sqlite3_bind_int64(stmt, i, v.number / Currency::Scale)
                                                 : sqlite3_bind_double(stmt, i, Currency::fromRaw(v.number).toDouble());
            break;
        case FieldValue::Text: {
            char *start = out;
            out = encoder.appendToBuffer(out, v.text);
            rc = sqlite3_bind_text(stmt, i, start, int(out - start), SQLITE_STATIC);
            break;
        }
        }
        if (rc != SQLITE_OK)
            return Error(error());
        ++i;
    }
    if (recId > 0 && sqlite3_bind_int64(stmt, i, recId) != SQLITE_OK)
        return Error(error());
    return {};
}

Result<void> SqliteRecordWriter::remove(int recId)
{
    const QByteArray sql = SqlDialect::create(SqlDialect::Sqlite)->deleteRecord(recId).text.toUtf8();
    char *message = nullptr;
    if (sqlite3_exec(m_db, sql.constData(), nullptr, nullptr, &message) != SQLITE_OK) {
        const QString why = QString::fromUtf8(message ? message : "");
        sqlite3_free(message);
        return Error(QStringLiteral("数据库操作失败：%1").arg(why));
    }
    return {};
}

Result<QHash<int, int>> SqliteRecordWriter::write(const std::vector<RecordValues> &rows)
{
    const auto dialect = SqlDialect::create(SqlDialect::Sqlite);
    QHash<int, int> added;
    for (const RecordValues &row : rows) {
        const int shape = row.withAmounts ? 1 : 0;
        if (row.recId > 0) {
            sqlite3_stmt *&update = m_update[shape];
            if (!update) {
                // The key goes last, as one more bound value.
                QString sql = dialect->updateRecord(0, fieldNames(row.withAmounts), {}).text;
                sql.chop(1);
                update = prepare(sql + QLatin1Char('?'));
                if (!update)
                    return Error(error());
            }
            const Result<void> bound = bindAll(update, row, row.recId);
            if (!bound.ok())
                return Error(bound.error());
            if (sqlite3_step(update) != SQLITE_DONE)
                return Error(error());
            if (sqlite3_changes(m_db) > 0)
                continue;
        }
        sqlite3_stmt *&insert = m_insert[shape];
        if (!insert) {
            insert = prepare(dialect->insertRecord(fieldNames(row.withAmounts), {}).text);
            if (!insert)
                return Error(error());
        }
        const Result<void> bound = bindAll(insert, row, 0);
        if (!bound.ok())
            return Error(bound.error());
        if (sqlite3_step(insert) != SQLITE_ROW)
            return Error(error());
        added.insert(row.gridRow, int(sqlite3_column_int64(insert, 0)));
        if (sqlite3_step(insert) != SQLITE_DONE)
            return Error(error());
    }
    return added;
}

} // namespace kx
