// Saving a whole book with every row changed, next to a bare loop of
// prepared statements through the sqlite3 C API writing the same rows.
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "data/JournalDefinition.h"
#include "kxjournal/SampleBooks.h"
#include "ledger/BookLoader.h"
#include "ledger/BookSaver.h"

#include <kxjournal/Database.h>
#include <kxjournal/GridModel.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QSqlDriver>
#include <benchmark/benchmark.h>
#include <memory>
#include <sqlite3.h>
#include <vector>

namespace {

struct Opened {
    std::unique_ptr<kx::SqlAccContext> acc;
    kx::GridModel grid;
    kx::LedgerState book;
};

std::unique_ptr<Opened> openBook(const QString &url, int records, bool fresh)
{
    auto o = std::make_unique<Opened>();
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen())
        return nullptr;
    if (fresh) {
        kx::SampleOptions options;
        options.records = records;
        options.books = 1;
        options.year = 2025;
        if (!kx::SampleBooks::create(db, options).ok())
            return nullptr;
    }
    const int docId =
        db.scalar({QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {QStringLiteral("020101")}}).value().toInt();
    o->acc = std::make_unique<kx::SqlAccContext>(std::move(db));
    kx::JournalDefinition(o->acc->Connection(), o->book.book).read(docId);
    if (kx::BookLoader(o->grid, o->book, kx::LedgerHost::none(), o->acc.get()).load(0) != kx::BookLoader::Loaded)
        return nullptr;
    return o;
}

void touchEveryRow(Opened &o, int pass)
{
    for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r)
        o.grid.setText(r, QStringLiteral("Remark"), QStringLiteral("第%1遍").arg(pass));
    o.book.dirty = true;
}

QString sqlitePath(int records)
{
    return QDir::tempPath() + QStringLiteral("/kxjournal-save-%1.db").arg(records);
}

std::unique_ptr<Opened> sqliteBook(int records)
{
    const QString path = sqlitePath(records);
    for (const char *suffix : {"", "-wal", "-shm"})
        QFile::remove(path + QLatin1String(suffix));
    return openBook(QStringLiteral("sqlite:") + path, records, true);
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
        if (!kx::BookSaver(o->grid, o->book, kx::LedgerHost::none(), o->acc.get()).save(QStringLiteral("bench"), 1))
            state.SkipWithError("save failed");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Save(benchmark::State &state)
{
    auto o = sqliteBook(int(state.range(0)));
    saveRepeatedly(state, o.get());
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

// On a PostgreSQL server named by KX_BENCH_PG_URL (tests/support/pg-cluster starts one).
void BM_SavePostgres(benchmark::State &state)
{
    const QString url = qEnvironmentVariable("KX_BENCH_PG_URL");
    if (url.isEmpty()) {
        state.SkipWithError("set KX_BENCH_PG_URL to measure PostgreSQL");
        return;
    }
    {
        kx::Database admin = kx::Database::open(url);
        admin.run({QStringLiteral("DROP SCHEMA IF EXISTS bench CASCADE"), {}});
        admin.run({QStringLiteral("CREATE SCHEMA bench"), {}});
    }
    auto o = openBook(url + QStringLiteral("?schema=bench"), int(state.range(0)), true);
    saveRepeatedly(state, o.get());
}

} // namespace

BENCHMARK(BM_SaveSqliteC)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Save)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SavePostgres)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
