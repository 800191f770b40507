#include "data/RecordFetcher.h"

#include "data/FetchedCell.h"
#include "data/PgRowReader.h"
#include "data/RawRowQueue.h"
#include "data/SqlAccess.h"
#include "grid/CellArrayData.h"
#include "kxjournal/Database.h"

#include <QHash>
#include <QSqlDriver>
#include <QSqlRecord>
#include <algorithm>
#include <sqlite3.h>
#include <limits>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace kx {

namespace {

// What each field holds as far as typing goes: the amounts named, and
// \a other for the rest.
std::vector<FetchedCell::Declared> declaredTypes(const QStringList &names, const QStringList &amountFields,
                                                 FetchedCell::Declared other)
{
    std::vector<FetchedCell::Declared> types(std::size_t(names.size()), other);
    for (int i = 0; i < names.size(); ++i)
        if (amountFields.contains(names.at(i), Qt::CaseInsensitive))
            types[std::size_t(i)] = FetchedCell::Declared::Amount;
    return types;
}

// A value Qt SQL read, and what its field holds.
struct QtValue {
    FetchedCell::Declared declared;
    FetchedCell::Raw raw;
    QByteArray text;  ///< the bytes raw points into
};

QtValue qtValue(const QVariant &v, FetchedCell::Declared declared)
{
    using Raw = FetchedCell::Raw;
    using Declared = FetchedCell::Declared;
    QtValue out{declared, Raw::null(), {}};
    if (v.isNull())
        return out;
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UInt:
        out.raw = Raw::number(v.toLongLong());
        return out;
    case QMetaType::Double:
    case QMetaType::Float:
        out.raw = Raw::decimal(v.toDouble());
        return out;
    case QMetaType::QDate:
        out.text = v.toDate().toString(Qt::ISODate).toUtf8();
        out.declared = declared == Declared::Any ? Declared::Day : declared;
        break;
    case QMetaType::QDateTime:
        out.text = v.toDateTime().toString(Qt::ISODate).toUtf8();
        out.declared = declared == Declared::Any ? Declared::Moment : declared;
        break;
    case QMetaType::Bool:
        out.text = v.toBool() ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
        break;
    default:
        out.text = v.toString().toUtf8();
    }
    out.raw = Raw::text(out.text.constData(), int(out.text.size()));
    return out;
}

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
                                         const QStringList &amountFields, int expectedRows, int leadingCols)
{
    leadingCols = std::max(leadingCols, 0);
    if (sqlite3 *h = sqliteHandle(db))
        return fetchSqlite(h, statement, amountFields, expectedRows, leadingCols);
    if (pg_conn *conn = PgRowReader::connectionOf(db))
        return PgRowReader::read(conn, statement, amountFields, expectedRows, leadingCols);
    return fetchQt(db, statement, amountFields, leadingCols);
}

Result<FetchedRows> RecordFetcher::fetchSqlite(void *handle, const SqlStatement &statement,
                                               const QStringList &amountFields, int expectedRows, int leadingCols)
{
    auto *db = static_cast<sqlite3 *>(handle);
    sqlite3_stmt *stmt = nullptr;
    const QByteArray sql = statement.text.toUtf8();
    if (sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &stmt, nullptr) != SQLITE_OK)
        return Error(QStringLiteral("数据库操作失败：%1").arg(QString::fromUtf8(sqlite3_errmsg(db))));
    // Finalised on every path; the connection cannot close while it lives.
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statementGuard(stmt, sqlite3_finalize);
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
    // The engine types each value itself; only the amounts are said.
    const std::vector<FetchedCell::Declared> declared =
        declaredTypes(out.fieldNames, amountFields, FetchedCell::Declared::Any);
    out.cells = CellArray(0, leadingCols + n);
    out.cells.reserveRows(expectedRows);

    // The engine steps on its own thread while this one types what it read:
    // on a big book the two take about as long, so a load costs little more
    // than the engine's own reading. Nothing else uses the connection
    // meanwhile; the reader is joined before anything returns, on every path.
    // A look-up of a row or two is read on this thread: a thread would cost
    // more than the reading.
    const bool small = expectedRows > 0 && expectedRows <= 64;
    RawRowQueue queue(small ? std::numeric_limits<int>::max() : 4);
    int rc = SQLITE_OK;
    bool readFailed = false;
    const auto read = [db, stmt, n, &queue, &rc, &readFailed] {
        constexpr int Run = 1024;
        try {
            RawRows raw = queue.take();
            while (!queue.cancelled() && (rc = sqlite3_step(stmt)) == SQLITE_ROW) {
                for (int c = 0; c < n; ++c) {
                    const int type = sqlite3_column_type(stmt, c);
                    raw.types.push_back((unsigned char)type);
                    switch (type) {
                    case SQLITE_NULL: break;
                    case SQLITE_INTEGER: raw.numbers.push_back(sqlite3_column_int64(stmt, c)); break;
                    case SQLITE_FLOAT: raw.reals.push_back(sqlite3_column_double(stmt, c)); break;
                    default: {
                        const auto *p = reinterpret_cast<const char *>(sqlite3_column_text(stmt, c));
                        // A value the engine could not hand out is an error, never an empty text.
                        if (!p && sqlite3_errcode(db) == SQLITE_NOMEM)
                            throw std::bad_alloc();
                        const int size = p ? sqlite3_column_bytes(stmt, c) : 0;
                        raw.bytes.insert(raw.bytes.end(), p, p + size);
                        raw.sizes.push_back(size);
                    }
                    }
                }
                if (++raw.rows == Run) {
                    queue.push(std::move(raw));
                    raw = queue.take();
                }
            }
            if (raw.rows > 0)
                queue.push(std::move(raw));
        } catch (...) {
            readFailed = true;
        }
        queue.close();
    };
    std::thread reader;
    if (small)
        read();
    else
        reader = std::thread(read);
    // Should typing fail (memory), the reader is stopped and joined before
    // the statement goes.
    struct Joiner {
        std::thread &thread;
        RawRowQueue &queue;
        ~Joiner()
        {
            if (thread.joinable()) {
                queue.cancel();
                thread.join();
            }
        }
    } joiner{reader, queue};

    // Rows start empty, so cells are written in place with nothing to release.
    CellArrayData &block = out.cells.data();
    RawRows raw;
    while (queue.pop(raw)) {
        std::size_t type = 0, number = 0, real = 0, text = 0;
        const char *bytes = raw.bytes.data();
        for (int r = 0; r < raw.rows; ++r) {
            const int row = out.cells.appendRow();
            for (int c = 0; c < n; ++c) {
                FetchedCell::Raw value;
                switch (raw.types[type++]) {
                case SQLITE_NULL:
                    break;
                case SQLITE_INTEGER:
                    value = FetchedCell::Raw::number(raw.numbers[number++]);
                    break;
                case SQLITE_FLOAT:
                    value = FetchedCell::Raw::decimal(raw.reals[real++]);
                    break;
                default: {
                    const int size = raw.sizes[text++];
                    value = FetchedCell::Raw::text(bytes, size);
                    bytes += size;
                    break;
                }
                }
                block.fill(row, leadingCols + c, FetchedCell::of(block, leadingCols + c, declared[std::size_t(c)], value));
            }
        }
        queue.recycle(std::move(raw));
    }
    if (reader.joinable())
        reader.join();
    const QString error = readFailed          ? QStringLiteral("内存不足")
                          : rc == SQLITE_DONE ? QString()
                                              : QString::fromUtf8(sqlite3_errmsg(db));
    if (!error.isEmpty())
        return Error(QStringLiteral("数据库操作失败：%1").arg(error));
    return Result<FetchedRows>(std::move(out));
}

Result<FetchedRows> RecordFetcher::fetchQt(const Database &db, const SqlStatement &statement,
                                           const QStringList &amountFields, int leadingCols)
{
    Result<QSqlQuery> r = sqlExec(db, statement, true);
    if (!r.ok())
        return Error(r.error());
    QSqlQuery q = r.takeValue();
    FetchedRows out;
    const QSqlRecord rec = q.record();
    const int n = rec.count();
    for (int c = 0; c < n; ++c)
        out.fieldNames << rec.fieldName(c);
    const std::vector<FetchedCell::Declared> declared =
        declaredTypes(out.fieldNames, amountFields, FetchedCell::Declared::Any);
    out.cells = CellArray(0, leadingCols + n);
    CellArrayData &block = out.cells.data();
    while (q.next()) {
        const int row = out.cells.appendRow();
        for (int c = 0; c < n; ++c) {
            const QtValue value = qtValue(q.value(c), declared[std::size_t(c)]);
            block.fill(row, leadingCols + c, FetchedCell::of(block, leadingCols + c, value.declared, value.raw));
        }
    }
    return Result<FetchedRows>(std::move(out));
}

} // namespace kx
