#include "data/SqliteRecordWriter.h"

#include "data/SqlDialect.h"
#include "kxjournal/Currency.h"

#include <QAtomicInteger>
#include <QStringEncoder>
#include <sqlite3.h>

#include <memory>

namespace kx {

namespace {

// The temporary table: the key, every stored field in writer order, whether
// the row brings its amounts (a summary row keeps the stored ones) and what
// is written of it (Shape). Columns without a type keep each value as it was bound.
const char *const CreateStage =
    "CREATE TEMP TABLE kx_stage (RecID, JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, balance, "
    "fxBalance, Field1, Field2, Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID, amounts, shape)";

enum Shape { Balances, InPlace, Moved };

const char *const FillStage = "INSERT INTO temp.kx_stage VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
const char *const FillStageBalances = "INSERT INTO temp.kx_stage (RecID, balance, fxBalance, shape) VALUES (?,?,?,0)";

// A record whose balances alone moved has only they set.
const char *const UpdateBalances = "UPDATE kxJournalRecs AS r SET balance=s.balance, fxBalance=s.fxBalance"
                                   " FROM temp.kx_stage AS s WHERE s.shape = 0 AND r.RecID = s.RecID";

// Row and DocID are set only where they moved: setting them costs the
// engine a change to the book's index for every record.
#define KX_SET_FIELDS                                                                                            \
    "JnlDate=s.JnlDate, JnlNo=s.JnlNo, AccID=s.AccID, Explain=s.Explain, "                                       \
    "Debit=CASE WHEN s.amounts THEN s.Debit ELSE r.Debit END, "                                                  \
    "Credit=CASE WHEN s.amounts THEN s.Credit ELSE r.Credit END, "                                               \
    "Rate=CASE WHEN s.amounts THEN s.Rate ELSE r.Rate END, "                                                     \
    "Forex=CASE WHEN s.amounts THEN s.Forex ELSE r.Forex END, "                                                  \
    "balance=s.balance, fxBalance=s.fxBalance, Field1=s.Field1, Field2=s.Field2, Field3=s.Field3, "             \
    "Field4=s.Field4, Flag=s.Flag, Remark=s.Remark, Tag=s.Tag, DirID=s.DirID"

// Whether a record stands where the grid has it is the database's to say: a
// place another user changed, merged since, is written back as a move.
const char *const UpdateInPlace = "UPDATE kxJournalRecs AS r SET " KX_SET_FIELDS
                                  " FROM temp.kx_stage AS s WHERE s.shape = 1 AND s.RecID > 0 AND r.RecID = s.RecID"
                                  " AND r.Row IS s.Row AND r.DocID IS s.DocID";

const char *const UpdateMoved = "UPDATE kxJournalRecs AS r SET " KX_SET_FIELDS ", Row=s.Row, DocID=s.DocID"
                                " FROM temp.kx_stage AS s WHERE s.shape IN (1, 2) AND s.RecID > 0 AND r.RecID = s.RecID"
                                " AND (s.shape = 2 OR r.Row IS NOT s.Row OR r.DocID IS NOT s.DocID)";
#undef KX_SET_FIELDS

#define KX_INSERT_HEAD                                                                                           \
    "INSERT INTO kxJournalRecs (JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, balance, fxBalance, " \
    "Field1, Field2, Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID) "                                   \
    "SELECT JnlDate, JnlNo, AccID, Explain, CASE WHEN amounts THEN Debit END, CASE WHEN amounts THEN Credit END, " \
    "CASE WHEN amounts THEN Rate END, CASE WHEN amounts THEN Forex END, balance, fxBalance, Field1, Field2, "   \
    "Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID FROM temp.kx_stage AS s "

// New rows, in grid order, so their keys ascend down the book. Records
// someone else deleted since they were read are looked for only when the
// updates found fewer records than were staged with a key.
const char *const InsertNew = KX_INSERT_HEAD "WHERE s.shape <> 0 AND s.RecID <= 0 ORDER BY s.Row RETURNING RecID, Row";
const char *const InsertNewOrGone =
    KX_INSERT_HEAD "WHERE s.shape <> 0 AND (s.RecID <= 0 OR NOT EXISTS "
                   "(SELECT 1 FROM kxJournalRecs AS r WHERE r.RecID = s.RecID)) ORDER BY s.Row RETURNING RecID, Row";
#undef KX_INSERT_HEAD

struct Finalize {
    void operator()(sqlite3_stmt *stmt) const { sqlite3_finalize(stmt); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

} // namespace

SqliteRecordWriter::SqliteRecordWriter(void *handle) : m_db(static_cast<sqlite3 *>(handle)) {}

SqliteRecordWriter::~SqliteRecordWriter()
{
    for (sqlite3_stmt *s : {m_update[0], m_update[1], m_insert[0], m_insert[1], m_balances})
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
    const std::vector<RecordField> &order = fields(record.withAmounts);
    if (const Result<void> bound = bindFields(stmt, record, order, 1); !bound.ok())
        return bound;
    if (recId > 0 && sqlite3_bind_int64(stmt, int(order.size()) + 1, recId) != SQLITE_OK)
        return Error(error());
    return {};
}

Result<void> SqliteRecordWriter::bindFields(sqlite3_stmt *stmt, const RecordValues &record,
                                            const std::vector<RecordField> &order, int first)
{
    // All of the row's texts go into one buffer, sized once: the engine then
    // takes them as they are, without a conversion and an allocation each.
    qsizetype room = 0;
    for (RecordField f : order)
        if (const FieldValue &v = record[f]; v.kind == FieldValue::Text)
            room += v.text.size() * 3;
    if (m_utf8.size() < room)
        m_utf8.resize(room);
    QStringEncoder encoder(QStringEncoder::Utf8);
    char *out = m_utf8.data();
    int i = first;
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

Result<int> SqliteRecordWriter::run(const char *sql)
{
    const Statement stmt(prepare(QString::fromLatin1(sql)));
    if (!stmt || sqlite3_step(stmt.get()) != SQLITE_DONE)
        return Error(error());
    return sqlite3_changes(m_db);
}

bool SqliteRecordWriter::writesBalancesAlone() const
{
    return true;
}

Result<void> SqliteRecordWriter::updateBalances(const RecordValues &row)
{
    if (!m_balances) {
        m_balances = prepare(QStringLiteral("UPDATE kxJournalRecs SET balance=?, fxBalance=? WHERE RecID=?"));
        if (!m_balances)
            return Error(error());
    }
    sqlite3_reset(m_balances);
    static const std::vector<RecordField> balances{RecordField::Balance, RecordField::fxBalance};
    if (const Result<void> bound = bindFields(m_balances, row, balances, 1); !bound.ok())
        return bound;
    if (sqlite3_bind_int64(m_balances, 3, row.recId) != SQLITE_OK || sqlite3_step(m_balances) != SQLITE_DONE)
        return Error(error());
    if (sqlite3_changes(m_db) == 0)
        return Error(QStringLiteral("数据库操作失败：要更新余额的记录已不存在。"));
    return {};
}

bool SqliteRecordWriter::changeStamp(ChangeStamp &stamp)
{
    // The version moves with every commit of another connection; the count
    // with every row this one changes, through this writer or any other way.
    const Statement version(prepare(QStringLiteral("PRAGMA data_version")));
    if (!version || sqlite3_step(version.get()) != SQLITE_ROW)
        return false;
    stamp.connection = m_db;
    stamp.version = sqlite3_column_int64(version.get(), 0);
    stamp.changes = sqlite3_total_changes64(m_db);
    stamp.inTransaction = sqlite3_get_autocommit(m_db) == 0;
    // A connection closed and opened again may come back at the same
    // address, counting from the start again. Its temporary schema does not
    // come back: a number kept there names this connection alone. Setting
    // it counts as no change and moves no version.
    const Statement session(prepare(QStringLiteral("PRAGMA temp.user_version")));
    if (!session || sqlite3_step(session.get()) != SQLITE_ROW)
        return false;
    stamp.session = sqlite3_column_int64(session.get(), 0);
    if (stamp.session == 0) {
        static QAtomicInteger<int> sessions;
        stamp.session = sessions.fetchAndAddRelaxed(1) + 1;
        const Statement name(prepare(QStringLiteral("PRAGMA temp.user_version = %1").arg(stamp.session)));
        if (!name || sqlite3_step(name.get()) != SQLITE_DONE)
            return false;
    }
    return true;
}

Result<QHash<int, int>> SqliteRecordWriter::write(const RecordSource &rows)
{
    return rows.size() < BulkFrom ? writeEach(rows) : writeBulk(rows);
}

Result<QHash<int, int>> SqliteRecordWriter::writeBulk(const RecordSource &rows)
{
    if (const Result<int> dropped = run("DROP TABLE IF EXISTS temp.kx_stage"); !dropped.ok())
        return Error(dropped.error());
    if (const Result<int> created = run(CreateStage); !created.ok())
        return Error(created.error());
    const Statement fill(prepare(QString::fromLatin1(FillStage)));
    const Statement fillBalances(prepare(QString::fromLatin1(FillStageBalances)));
    if (!fill || !fillBalances)
        return Error(error());
    const std::vector<RecordField> &order = fields(true);
    static const std::vector<RecordField> balances{RecordField::Balance, RecordField::fxBalance};
    const int amountsAt = int(order.size()) + 2;
    qsizetype counts[3] = {0, 0, 0};
    RecordValues row;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows.fill(i, row);
        const Shape shape = row.balancesOnly ? Balances : row.atPlace ? InPlace : Moved;
        sqlite3_stmt *stmt = shape == Balances ? fillBalances.get() : fill.get();
        sqlite3_reset(stmt);
        if (sqlite3_bind_int64(stmt, 1, row.recId) != SQLITE_OK)
            return Error(error());
        if (const Result<void> bound = bindFields(stmt, row, shape == Balances ? balances : order, 2); !bound.ok())
            return Error(bound.error());
        if (shape != Balances && (sqlite3_bind_int(stmt, amountsAt, row.withAmounts ? 1 : 0) != SQLITE_OK ||
                                  sqlite3_bind_int(stmt, amountsAt + 1, shape) != SQLITE_OK))
            return Error(error());
        if (sqlite3_step(stmt) != SQLITE_DONE)
            return Error(error());
        if (row.recId > 0)
            ++counts[shape];
    }
    qsizetype updated = 0;
    for (const auto &[sql, shape] : {std::pair{UpdateBalances, Balances}, std::pair{UpdateInPlace, InPlace},
                                     std::pair{UpdateMoved, Moved}}) {
        // In-place rows found moved are written with the moved ones.
        if (counts[shape] == 0 && !(shape == Moved && counts[InPlace] > 0))
            continue;
        const Result<int> done = run(sql);
        if (!done.ok())
            return Error(done.error());
        // Balances alone cannot make a record again.
        if (shape == Balances && done.value() != counts[shape])
            return Error(QStringLiteral("数据库操作失败：要更新余额的记录已不存在。"));
        updated += done.value();
    }
    QHash<int, int> added;
    {
        const Statement insert(prepare(QString::fromLatin1(updated == counts[Balances] + counts[InPlace] + counts[Moved] ? InsertNew : InsertNewOrGone)));
        if (!insert)
            return Error(error());
        int rc = SQLITE_ROW;
        while ((rc = sqlite3_step(insert.get())) == SQLITE_ROW)
            added.insert(sqlite3_column_int(insert.get(), 1), sqlite3_column_int(insert.get(), 0));
        if (rc != SQLITE_DONE)
            return Error(error());
    }
    if (const Result<int> dropped = run("DROP TABLE temp.kx_stage"); !dropped.ok())
        return Error(dropped.error());
    return added;
}

Result<QHash<int, int>> SqliteRecordWriter::writeEach(const RecordSource &rows)
{
    const auto dialect = SqlDialect::create(SqlDialect::Sqlite);
    QHash<int, int> added;
    RecordValues row;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows.fill(i, row);
        if (row.balancesOnly) {
            if (const Result<void> set = updateBalances(row); !set.ok())
                return Error(set.error());
            continue;
        }
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
