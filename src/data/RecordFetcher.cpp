#include "data/RecordFetcher.h"

#include "data/SqlValue.h"
#include "kxjournal/Database.h"

#include <QHash>
#include <QSqlDriver>
#include <QSqlRecord>
#include <cmath>
#include <sqlite3.h>
#include <vector>

namespace kx {

namespace {

// A stored double amount in plain currency text. Amounts carry at most four
// decimals, so scaling and rounding to the nearest ten-thousandth is exact
// well inside the range a double holds them in.
QString amountText(double d)
{
    if (std::fabs(d) < 1e14)
        return Currency::fromRaw(std::llround(d * double(Currency::Scale))).toString();
    return Currency::fromDouble(d).valueOr(Currency()).toString();
}

std::vector<bool> amountMask(const QStringList &names, const QStringList &amountFields)
{
    std::vector<bool> mask(std::size_t(names.size()), false);
    for (int i = 0; i < names.size(); ++i)
        mask[std::size_t(i)] = amountFields.contains(names.at(i), Qt::CaseInsensitive);
    return mask;
}

// Integers as text in one allocation; 0, the commonest, shares one string.
QString integerText(qint64 v)
{
    static const QString zero = QStringLiteral("0");
    if (v == 0)
        return zero;
    char16_t buf[24];
    char16_t *end = buf + 24;
    char16_t *p = end;
    quint64 mag = v < 0 ? quint64(-v) : quint64(v);
    do {
        *--p = char16_t(u'0' + mag % 10);
        mag /= 10;
    } while (mag != 0);
    if (v < 0)
        *--p = u'-';
    return QString(reinterpret_cast<const QChar *>(p), int(end - p));
}

// Journal texts repeat: account and book names, directions, dates, common
// explanations. Handing out one shared copy per distinct text saves both the
// decoding and the memory of a copy per row. Each column keeps at most a few
// thousand texts, so a column of unique texts costs little.
class TextPool
{
public:
    const QString &get(int col, const char *bytes, int size)
    {
        if (size == 0)
            return m_empty;
        auto &pool = m_pools[std::size_t(col)];
        const QByteArray key = QByteArray::fromRawData(bytes, size);
        auto it = pool.find(key);
        if (it != pool.end())
            return it.value();
        m_scratch = QString::fromUtf8(bytes, size);
        if (pool.size() < Cap)
            return *pool.insert(QByteArray(bytes, size), m_scratch);
        return m_scratch;
    }
    explicit TextPool(int cols) : m_pools(std::size_t(cols)) {}

private:
    static constexpr int Cap = 4096;
    std::vector<QHash<QByteArray, QString>> m_pools;
    QString m_empty;
    QString m_scratch;
};

sqlite3 *sqliteHandle(const Database &db)
{
    if (db.engine() != Database::SqliteEngine || !db.isOpen() || !db.handle().driver())
        return nullptr;
    const QVariant v = db.handle().driver()->handle();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(v.constData());
}

} // namespace

Result<FetchedRows> RecordFetcher::fetch(const Database &db, const SqlStatement &statement,
                                         const QStringList &amountFields, int expectedRows)
{
    if (sqlite3 *h = sqliteHandle(db))
        return fetchSqlite(h, statement, amountFields, expectedRows);
    return fetchQt(db, statement, amountFields);
}

Result<FetchedRows> RecordFetcher::fetchSqlite(void *handle, const SqlStatement &statement,
                                               const QStringList &amountFields, int expectedRows)
{
    auto *db = static_cast<sqlite3 *>(handle);
    sqlite3_stmt *stmt = nullptr;
    const QByteArray sql = statement.text.toUtf8();
    if (sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &stmt, nullptr) != SQLITE_OK)
        return Error(QStringLiteral("数据库操作失败：%1").arg(QString::fromUtf8(sqlite3_errmsg(db))));
    std::vector<QByteArray> texts;
    for (int i = 0; i < statement.binds.size(); ++i) {
        const QVariant &v = statement.binds.at(i);
        if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong) {
            sqlite3_bind_int64(stmt, i + 1, v.toLongLong());
        } else {
            texts.push_back(v.toString().toUtf8());
            sqlite3_bind_text(stmt, i + 1, texts.back().constData(), int(texts.back().size()), SQLITE_TRANSIENT);
        }
    }
    FetchedRows out;
    const int n = sqlite3_column_count(stmt);
    for (int c = 0; c < n; ++c)
        out.fieldNames << QString::fromUtf8(sqlite3_column_name(stmt, c));
    const std::vector<bool> isAmount = amountMask(out.fieldNames, amountFields);
    out.cells = CellArray(0, n);
    out.cells.reserveRows(expectedRows);
    TextPool pool(n);
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
        const int r = out.cells.appendRow();
        for (int c = 0; c < n; ++c) {
            QString &cell = out.cells.at(r, c);
            switch (sqlite3_column_type(stmt, c)) {
            case SQLITE_NULL:
                break;
            case SQLITE_INTEGER:
                cell = integerText(sqlite3_column_int64(stmt, c));
                break;
            case SQLITE_FLOAT: {
                const double d = sqlite3_column_double(stmt, c);
                cell = isAmount[std::size_t(c)] ? amountText(d) : SqlValue::text(d);
                break;
            }
            default: {
                const auto *p = reinterpret_cast<const char *>(sqlite3_column_text(stmt, c));
                cell = pool.get(c, p, sqlite3_column_bytes(stmt, c));
                if (isAmount[std::size_t(c)] && !cell.isEmpty())
                    cell = Currency::fromText(cell).valueOr(Currency()).toString();
                break;
            }
            }
        }
    }
    const QString error = rc == SQLITE_DONE ? QString() : QString::fromUtf8(sqlite3_errmsg(db));
    sqlite3_finalize(stmt);
    if (!error.isEmpty())
        return Error(QStringLiteral("数据库操作失败：%1").arg(error));
    return Result<FetchedRows>(std::move(out));
}

Result<FetchedRows> RecordFetcher::fetchQt(const Database &db, const SqlStatement &statement,
                                           const QStringList &amountFields)
{
    Result<QSqlQuery> r = db.exec(statement, true);
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    FetchedRows out;
    const QSqlRecord rec = q.record();
    const int n = rec.count();
    for (int c = 0; c < n; ++c)
        out.fieldNames << rec.fieldName(c);
    const std::vector<bool> isAmount = amountMask(out.fieldNames, amountFields);
    out.cells = CellArray(0, n);
    while (q.next()) {
        const int row = out.cells.appendRow();
        for (int c = 0; c < n; ++c) {
            const QVariant v = q.value(c);
            if (isAmount[std::size_t(c)])
                out.cells.at(row, c) = v.isNull() ? QString() : SqlValue::amount(v).toString();
            else
                out.cells.at(row, c) = SqlValue::text(v);
        }
    }
    return Result<FetchedRows>(std::move(out));
}

} // namespace kx
