// Saving: a whole book with every row changed next to a bare loop of prepared
// statements through the sqlite3 C API; one corrected explanation; one amount
// that moves every balance below it, at 100k and 1M records, beside the
// engine's own set-based UPDATE of the same balances; a book of new rows; and
// on PostgreSQL the same beside the server's own set-based UPDATE and COPY.
#include "BenchBook.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "data/JournalDefinition.h"
#include "SampleBooks.h"
#include "ledger/BookLoader.h"
#include "ledger/BookSaver.h"
#include "ledger/BalanceCalculator.h"
#include "data/SqlAccess.h"

#include <kxjournal/Database.h>
#include "grid/Sheet.h"
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QSqlDriver>
#include <benchmark/benchmark.h>
#include <QElapsedTimer>
#include <libpq-fe.h>
#include <map>
#include <memory>
#include <sqlite3.h>
#include <vector>

namespace {

using kxbench::Opened;
using kxbench::openBook;
using kxbench::sqliteBook;

bool save(Opened &o)
{
    return kx::BookSaver(o.ledger).save(QStringLiteral("bench"), 1);
}

void touchEveryRow(Opened &o, int pass)
{
    for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r)
        o.grid.setText(r, QStringLiteral("Remark"), QStringLiteral("第%1遍").arg(pass));
    o.book.dirty = true;
}

// One book per size, made once per run and shared by the benchmarks that
// compare with each other, so a save and its floor work on the same file.
std::map<int, std::unique_ptr<Opened>> &sharedBooks()
{
    static std::map<int, std::unique_ptr<Opened>> books;
    return books;
}

void dropSharedBooks()
{
    sharedBooks().clear();
}

Opened *sharedBook(int records)
{
    if (sharedBooks().empty())
        qAddPostRoutine(dropSharedBooks);
    std::unique_ptr<Opened> &book = sharedBooks()[records];
    if (!book)
        book = sqliteBook(records, QStringLiteral("balances"));
    return book.get();
}

// Saves the whole book once an iteration, every row changed beforehand.
void saveRepeatedly(benchmark::State &state, Opened *o)
{
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    int pass = 0;
    for (auto _ : state) {
        state.PauseTiming();
        touchEveryRow(*o, ++pass);
        state.ResumeTiming();
        if (!save(*o))
            state.SkipWithError("save failed");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// One corrected explanation in the middle of the book, saved.
void saveOneExplanation(benchmark::State &state, Opened *o)
{
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    const int row = o->grid.rows() / 2;
    int pass = 0;
    for (auto _ : state) {
        state.PauseTiming();
        o->grid.setText(row, QStringLiteral("Explain"), QStringLiteral("更正第%1次").arg(++pass));
        o->book.dirty = true;
        state.ResumeTiming();
        if (!save(*o))
            state.SkipWithError("save failed");
    }
}

// A changed amount on the first record after the opening row: every balance below moves.
void saveOneAmount(benchmark::State &state, Opened *o)
{
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    const int row = o->grid.fixedRows() + 1;
    int pass = 0;
    double firstMs = 0, laterMs = 0;
    for (auto _ : state) {
        state.PauseTiming();
        o->grid.setText(row, QStringLiteral("Debit"), QString::number(1000 + (++pass)));
        o->grid.setText(row, QStringLiteral("Credit"), QString());
        kx::BalanceCalculator(o->ledger).calculate(o->grid.fixedRows());
        o->book.dirty = true;
        state.ResumeTiming();
        QElapsedTimer clock;
        clock.start();
        if (!save(*o))
            state.SkipWithError("save failed");
        (pass == 1 ? firstMs : laterMs) += double(clock.nsecsElapsed()) / 1e6;
    }
    // The first save after a load reads back every record it overwrites; a
    // later one skips that when the database has not changed since.
    state.counters["first_ms"] = firstMs;
    state.counters["later_ms"] = pass > 1 ? laterMs / (pass - 1) : 0;
}

// The floor of the save above, through the sqlite3 C API on the same book
// file: the moved balances (balance and fxBalance of every record below the
// changed one, already in the engine's types) are inserted into a temporary
// table through one prepared INSERT, then one UPDATE … FROM sets them, in one
// transaction. Each pass stores balances one higher than the last, so every
// record really changes.
void BM_SaveBalancesFloor(benchmark::State &state)
{
    Opened *o = sharedBook(int(state.range(0)));
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    struct Moved { qint64 key; qint64 balance; qint64 fxBalance; };
    std::vector<Moved> moved;
    for (int r = o->grid.fixedRows() + 1; r < o->grid.rows(); ++r) {
        const qint64 key = qint64(o->grid.value(r, QStringLiteral("RecID")));
        if (key > 0)
            moved.push_back({key, o->grid.amount(r, o->grid.colIndex(QStringLiteral("Balance"))).raw(),
                             o->grid.amount(r, o->grid.colIndex(QStringLiteral("fxBalance"))).raw()});
    }
    const QVariant h = o->acc->Connection().handle().driver()->handle();
    sqlite3 *db = *static_cast<sqlite3 *const *>(h.constData());
    // As the save binds an amount: whole as an integer, else as a number.
    const auto bindAmount = [](sqlite3_stmt *stmt, int i, qint64 raw) {
        if (raw % kx::Currency::Scale == 0)
            sqlite3_bind_int64(stmt, i, raw / kx::Currency::Scale);
        else
            sqlite3_bind_double(stmt, i, kx::Currency::fromRaw(raw).toDouble());
    };
    qint64 pass = 0;
    for (auto _ : state) {
        const qint64 step = (++pass) * kx::Currency::Scale;
        sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
        sqlite3_exec(db, "CREATE TEMP TABLE kx_floor (RecID, balance, fxBalance)", nullptr, nullptr, nullptr);
        sqlite3_stmt *stmt = nullptr;
        sqlite3_prepare_v2(db, "INSERT INTO temp.kx_floor VALUES (?,?,?)", -1, &stmt, nullptr);
        for (const Moved &m : moved) {
            sqlite3_reset(stmt);
            sqlite3_bind_int64(stmt, 1, m.key);
            bindAmount(stmt, 2, m.balance + step);
            bindAmount(stmt, 3, m.fxBalance);
            sqlite3_step(stmt);
        }
        sqlite3_finalize(stmt);
        if (sqlite3_exec(db,
                         "UPDATE kxJournalRecs AS r SET balance=s.balance, fxBalance=s.fxBalance "
                         "FROM temp.kx_floor AS s WHERE r.RecID=s.RecID",
                         nullptr, nullptr, nullptr) != SQLITE_OK)
            state.SkipWithError("floor update failed");
        sqlite3_exec(db, "DROP TABLE temp.kx_floor", nullptr, nullptr, nullptr);
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    }
    state.counters["records"] = double(moved.size());
}

// Every row new (as after pasting a whole book): all of them inserted.
void saveAllNew(benchmark::State &state, Opened *o)
{
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    const int key = o->grid.colIndex(QStringLiteral("RecID"));
    for (auto _ : state) {
        state.PauseTiming();
        (void)kx::sqlRun(o->acc->Connection(),
                         {QStringLiteral("Delete From kxJournalRecs Where DocID=?"), {o->book.book.docId}});
        for (int r = o->grid.fixedRows(); r < o->grid.rows(); ++r)
            o->grid.setText(r, key, QString());
        o->book.stored.clear();
        o->book.dirty = true;
        state.ResumeTiming();
        if (!save(*o))
            state.SkipWithError("save failed");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Save(benchmark::State &state)
{
    auto o = sqliteBook(int(state.range(0)));
    saveRepeatedly(state, o.get());
}

void BM_SaveOneExplanation(benchmark::State &state)
{
    auto o = sqliteBook(int(state.range(0)));
    saveOneExplanation(state, o.get());
}

void BM_SaveOneAmountOnRow2(benchmark::State &state)
{
    saveOneAmount(state, sharedBook(int(state.range(0))));
}

void BM_SaveAllNew(benchmark::State &state)
{
    auto o = sqliteBook(int(state.range(0)));
    saveAllNew(state, o.get());
}

// The same rows, already in the engine's own types, written by the plainest
// loop the C API allows: one prepared UPDATE, one transaction.
void BM_SaveSqliteC(benchmark::State &state)
{
    auto o = sqliteBook(int(state.range(0)));
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    touchEveryRow(*o, 1);
    struct Row { std::vector<QByteArray> texts; std::vector<qint64> ints; qint64 key; };
    std::vector<Row> rows;
    const char *texts[] = {"JnlDate", "JnlNo", "Explain", "Debit", "Credit", "Rate", "Forex", "Balance", "fxBalance",
                           "Field1", "Field2", "Field3", "Field4", "Remark"};
    const char *ints[] = {"AccID", "Flag", "Tag", "DirID"};
    for (int r = o->grid.fixedRows(); r < o->grid.rows(); ++r) {
        Row row;
        for (const char *k : texts)
            row.texts.push_back(o->grid.text(r, QLatin1String(k)).toUtf8());
        for (const char *k : ints)
            row.ints.push_back(qint64(o->grid.value(r, QLatin1String(k))));
        row.ints.push_back(r);
        row.ints.push_back(o->book.book.docId);
        row.key = qint64(o->grid.value(r, QStringLiteral("RecID")));
        rows.push_back(std::move(row));
    }
    const QVariant h = o->acc->Connection().handle().driver()->handle();
    sqlite3 *db = *static_cast<sqlite3 *const *>(h.constData());
    const char *sql =
        "Update kxJournalRecs Set JnlDate=?,JnlNo=?,Explain=?,Debit=?,Credit=?,Rate=?,Forex=?,balance=?,fxBalance=?,"
        "Field1=?,Field2=?,Field3=?,Field4=?,Remark=?,AccID=?,Flag=?,Tag=?,DirID=?,Row=?,DocID=? Where RecID=?";
    for (auto _ : state) {
        sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
        sqlite3_stmt *stmt = nullptr;
        sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
        for (const Row &row : rows) {
            int i = 1;
            for (const QByteArray &t : row.texts)
                sqlite3_bind_text(stmt, i++, t.constData(), int(t.size()), SQLITE_STATIC);
            for (qint64 v : row.ints)
                sqlite3_bind_int64(stmt, i++, v);
            sqlite3_bind_int64(stmt, i, row.key);
            sqlite3_step(stmt);
            sqlite3_reset(stmt);
        }
        sqlite3_finalize(stmt);
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// On a PostgreSQL server named by KX_BENCH_PG_URL (make bench-pg starts one).
std::unique_ptr<Opened> postgresBook(benchmark::State &state)
{
    const QString url = qEnvironmentVariable("KX_BENCH_PG_URL");
    if (url.isEmpty()) {
        state.SkipWithError("set KX_BENCH_PG_URL (make bench-pg) to measure PostgreSQL");
        return nullptr;
    }
    {
        kx::Database admin = kx::Database::open(url);
        (void)kx::sqlRun(admin, {QStringLiteral("SET client_min_messages = warning"), {}});
        (void)kx::sqlRun(admin, {QStringLiteral("DROP SCHEMA IF EXISTS bench CASCADE"), {}});
        (void)kx::sqlRun(admin, {QStringLiteral("CREATE SCHEMA bench"), {}});
    }
    return openBook(url + QStringLiteral("?schema=bench"), int(state.range(0)), true);
}

void BM_SavePostgres(benchmark::State &state)
{
    auto o = postgresBook(state);
    if (o)
        saveRepeatedly(state, o.get());
}

void BM_SaveOneExplanationPostgres(benchmark::State &state)
{
    auto o = postgresBook(state);
    if (o)
        saveOneExplanation(state, o.get());
}

void BM_SaveOneAmountOnRow2Postgres(benchmark::State &state)
{
    auto o = postgresBook(state);
    if (o)
        saveOneAmount(state, o.get());
}

void BM_SaveAllNewPostgres(benchmark::State &state)
{
    auto o = postgresBook(state);
    if (o)
        saveAllNew(state, o.get());
}

// The server's own floor for the same rows: a set-based UPDATE … FROM a copy
// that is already on the server, and a COPY … FROM a file it reads itself.
void BM_PostgresServerUpdate(benchmark::State &state)
{
    auto o = postgresBook(state);
    if (!o)
        return;
    const kx::Database &db = o->acc->Connection();
    (void)kx::sqlRun(db, {QStringLiteral("CREATE TABLE copy_src AS SELECT * FROM kxJournalRecs"), {}});
    int pass = 0;
    for (auto _ : state) {
        state.PauseTiming();
        (void)kx::sqlRun(db, {QStringLiteral("UPDATE copy_src SET Remark='第%1遍'").arg(++pass), {}});
        state.ResumeTiming();
        (void)kx::sqlRun(db, {QStringLiteral("UPDATE kxJournalRecs AS r SET JnlDate=s.JnlDate, JnlNo=s.JnlNo, AccID=s.AccID, "
                                     "Explain=s.Explain, Debit=s.Debit, Credit=s.Credit, Rate=s.Rate, Forex=s.Forex, "
                                     "balance=s.balance, fxBalance=s.fxBalance, Field1=s.Field1, Field2=s.Field2, "
                                     "Field3=s.Field3, Field4=s.Field4, Flag=s.Flag, Remark=s.Remark, Tag=s.Tag, "
                                     "DirID=s.DirID, Row=s.Row, DocID=s.DocID FROM copy_src AS s "
                                     "WHERE r.RecID=s.RecID"),
                      {}});
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The bare pipe: the same rows, already in COPY's text form, sent with libpq
// into a table of the same shape.
void BM_PostgresServerCopy(benchmark::State &state)
{
    auto o = postgresBook(state);
    if (!o)
        return;
    const kx::Database &db = o->acc->Connection();
    (void)kx::sqlRun(db, {QStringLiteral("CREATE TABLE copy_dst AS SELECT * FROM kxJournalRecs WITH NO DATA"), {}});
    PGconn *conn = *static_cast<PGconn *const *>(db.handle().driver()->handle().constData());
    QByteArray rows;
    PQclear(PQexec(conn, "COPY kxJournalRecs TO STDOUT"));
    char *line = nullptr;
    int n = 0;
    while ((n = PQgetCopyData(conn, &line, 0)) > 0) {
        rows.append(line, n);
        PQfreemem(line);
    }
    while (PGresult *r = PQgetResult(conn))
        PQclear(r);
    for (auto _ : state) {
        state.PauseTiming();
        PQclear(PQexec(conn, "TRUNCATE copy_dst"));
        state.ResumeTiming();
        PQclear(PQexec(conn, "COPY copy_dst FROM STDIN"));
        PQputCopyData(conn, rows.constData(), int(rows.size()));
        PQputCopyEnd(conn, nullptr);
        while (PGresult *r = PQgetResult(conn))
            PQclear(r);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(BM_SaveSqliteC)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveOneExplanation)->Arg(100000)->Unit(benchmark::kMillisecond);
// Each save beside its floor, on the same file; the million only a few times.
BENCHMARK(BM_SaveOneAmountOnRow2)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_SaveBalancesFloor)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_SaveOneAmountOnRow2)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveBalancesFloor)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveAllNew)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PostgresServerUpdate)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_PostgresServerCopy)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SavePostgres)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveOneExplanationPostgres)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_SaveOneAmountOnRow2Postgres)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveAllNewPostgres)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
