#include "data/RecordFetcher.h"

#include "data/PgRowReader.h"
#include "data/RawRowQueue.h"
#include "data/SqlAccess.h"
#include "data/SqlValue.h"
#include "grid/CellArrayData.h"
#include "kxjournal/Database.h"

#include <QHash>
#include <QSqlDriver>
#include <QSqlRecord>
#include <algorithm>
#include <cmath>
#include <sqlite3.h>
#include <limits>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace kx {

namespace {

// A stored double amount. Amounts carry at most four decimals; below 1e11
// scaling and rounding to the nearest ten-thousandth is exact. Above, the
// error of the double times 10000 can pass half a ten-thousandth, so the
// amount is read from the double's shortest decimal form, which gives back
// every amount of up to 15 significant digits as it was written.
Currency amountOf(double d)
{
    if (std::fabs(d) < 1e11)
        return Currency::fromRaw(std::llround(d * double(Currency::Scale)));
    return Currency::fromDouble(d).valueOr(Currency::invalid());
}

// True when a stored double has no digits past the fourth decimal (beyond
// the double's own noise), so reading it as an amount changes nothing.
bool holdsExactly(double d)
{
    const double scaled = d * double(Currency::Scale);
    return std::fabs(scaled - std::round(scaled)) <= 1e-6 * std::max(1.0, std::fabs(scaled) * 1e-9);
}

std::vector<bool> amountMask(const QStringList &names, const QStringList &amountFields)
{
    std::vector<bool> mask(std::size_t(names.size()), false);
    for (int i = 0; i < names.size(); ++i)
        mask[std::size_t(i)] = amountFields.contains(names.at(i), Qt::CaseInsensitive);
    return mask;
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
    const std::vector<bool> isAmount = amountMask(out.fieldNames, amountFields);
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
            Cell *cells = block.rowCells(out.cells.appendRow()) + leadingCols;
            for (int c = 0; c < n; ++c) {
                switch (raw.types[type++]) {
                case SQLITE_NULL:
                    break;
                case SQLITE_INTEGER:
                    cells[c] = block.numberCell(raw.numbers[number++]);
                    break;
                case SQLITE_FLOAT: {
                    const double d = raw.reals[real++];
                    // An amount money cannot hold stays the text it is stored as:
                    // the book can tell it from a zero and leave it alone.
                    if (isAmount[std::size_t(c)] && amountOf(d).isValid() && holdsExactly(d)) {
                        cells[c] = block.amountCell(amountOf(d));
                    } else if (isAmount[std::size_t(c)]) {
                        const QByteArray t = QByteArray::number(d, 'g', 17);
                        cells[c] = block.utf8Cell(leadingCols + c, t.constData(), int(t.size()));
                    } else {
                        const QByteArray t = SqlValue::text(d).toUtf8();
                        cells[c] = block.utf8Cell(leadingCols + c, t.constData(), int(t.size()));
                    }
                    break;
                }
                default: {
                    const int size = raw.sizes[text++];
                    const Result<Currency> money = isAmount[std::size_t(c)] && size > 0
                                                       ? Currency::fromStoredText(QString::fromUtf8(bytes, size))
                                                       : Result<Currency>(Error(QString()));
                    if (money.ok() && money.value().isValid())
                        cells[c] = block.amountCell(money.value());
                    else
                        cells[c] = block.utf8Cell(leadingCols + c, bytes, size);
                    bytes += size;
                    break;
                }
                }
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
    const std::vector<bool> isAmount = amountMask(out.fieldNames, amountFields);
    out.cells = CellArray(0, leadingCols + n);
    while (q.next()) {
        const int row = out.cells.appendRow();
        for (int c = 0; c < n; ++c) {
            const QVariant v = q.value(c);
            const int at = leadingCols + c;
            if (v.isNull())
                continue;
            if (isAmount[std::size_t(c)]) {
                const Currency money = SqlValue::amount(v);
                // A stored value that is no amount stays its text, never a zero.
                if (money.isZero() && !Currency::fromText(SqlValue::text(v)).ok())
                    out.cells.setText(row, at, v.toString());
                else
                    out.cells.setAmount(row, at, money);
                continue;
            }
            switch (v.typeId()) {
            case QMetaType::Int:
            case QMetaType::LongLong:
            case QMetaType::Short:
                out.cells.setNumber(row, at, v.toLongLong());
                break;
            case QMetaType::QDate:
                out.cells.setDate(row, at, v.toDate());
                break;
            default:
                out.cells.setText(row, at, SqlValue::text(v));
            }
        }
    }
    return Result<FetchedRows>(std::move(out));
}

} // namespace kx
