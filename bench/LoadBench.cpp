// Opening a book, next to the bare fetch of the same query, on one SQLite file.
#include "ledger/Book.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "data/JournalDefinition.h"
#include "BenchBook.h"
#include "SampleBooks.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookLoader.h"
#include "editing/EditSession.h"
#include "ledger/EditHistory.h"
#include "ledger/LedgerStep.h"
#include "rows/BlockPaste.h"
#include "rows/GridClipboard.h"
#include "rows/RowOperations.h"
#include "kxjournal/EditCycle.h"
#include "data/SqlAccess.h"

#include <kxjournal/Database.h>
#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSqlDriver>
#include <QSqlQuery>
#include <QSqlRecord>
#include <benchmark/benchmark.h>
#include <map>
#include <memory>
#include <sqlite3.h>

namespace {

// One sample database per size, made once per run; all records in one book.
struct Fixture {
    std::unique_ptr<kx::SqlAccContext> acc;
    int docId = 0;
};

std::map<int, Fixture> &fixtures()
{
    static std::map<int, Fixture> made;
    return made;
}

// The databases close while Qt is still there to close them.
void dropFixtures()
{
    fixtures().clear();
}

Fixture &fixture(int records)
{
    if (fixtures().empty())
        qAddPostRoutine(dropFixtures);
    Fixture &f = fixtures()[records];
    if (f.acc)
        return f;
    kx::Database db = kx::Database::open(QStringLiteral("sqlite:") + kxbench::freshFilePath(QStringLiteral("bench"), records));
    if (!kxbench::fillSample(db, records))
        std::abort();
    f.docId = kxbench::sampleBookId(db);
    f.acc = std::make_unique<kx::SqlAccContext>(std::move(db));
    return f;
}

QString loadQuery(Fixture &f)
{
    return kx::sqlDialect(f.acc->Connection()).loadBook(f.docId).text;
}

// The book as a control would hold it, with its messages going nowhere.
void prepareBook(Fixture &f, kx::LedgerState &book)
{
    book.fields.accountFormat = QStringLiteral("#,##0.00");
    kx::JournalDefinition(f.acc->Connection(), book.book).read(f.docId);
}

void BM_Load(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    kx::Book ledger(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    prepareBook(f, book);
    for (auto _ : state) {
        if (kx::BookLoader(ledger).load(0) != kx::BookLoader::Loaded)
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(grid.rows());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_FetchQtSql(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    const QString sql = loadQuery(f);
    for (auto _ : state) {
        QSqlQuery q(f.acc->Connection().handle());
        q.setForwardOnly(true);
        q.exec(sql);
        const int n = q.record().count();
        qint64 touched = 0;
        while (q.next())
            for (int c = 0; c < n; ++c)
                touched += q.value(c).isNull() ? 0 : 1;
        benchmark::DoNotOptimize(touched);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The engine's own typed fetch of the load statement: every value read, nothing kept.
void bareFetch(Fixture &f)
{
    const QByteArray sql = loadQuery(f).toUtf8();
    const QVariant handle = f.acc->Connection().handle().driver()->handle();
    sqlite3 *db = *static_cast<sqlite3 *const *>(handle.constData());
    sqlite3_stmt *stmt = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &stmt, nullptr);
    const int n = sqlite3_column_count(stmt);
    qint64 sum = 0;
    double dsum = 0;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        for (int c = 0; c < n; ++c) {
            switch (sqlite3_column_type(stmt, c)) {
            case SQLITE_INTEGER: sum += sqlite3_column_int64(stmt, c); break;
            case SQLITE_FLOAT: dsum += sqlite3_column_double(stmt, c); break;
            case SQLITE_TEXT: sum += sqlite3_column_bytes(stmt, c) + (sqlite3_column_text(stmt, c) != nullptr); break;
            default: break;
            }
        }
    }
    sqlite3_finalize(stmt);
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(dsum);
}

void BM_FetchSqliteC(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    for (auto _ : state)
        bareFetch(f);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Load and the bare fetch taken turn about in every iteration, so a machine
// that speeds up or slows down mid-run moves both alike; the ratio is the figure.
void BM_LoadBesideFetch(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    kx::Book ledger(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    prepareBook(f, book);
    double fetchNs = 0, loadNs = 0;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        bareFetch(f);
        fetchNs += double(clock.nsecsElapsed());
        clock.restart();
        if (kx::BookLoader(ledger).load(0) != kx::BookLoader::Loaded)
            state.SkipWithError("load failed");
        loadNs += double(clock.nsecsElapsed());
    }
    const double n = double(state.iterations());
    state.counters["fetch_ms"] = fetchNs / n / 1e6;
    state.counters["load_ms"] = loadNs / n / 1e6;
    state.counters["ratio"] = fetchNs > 0 ? loadNs / fetchNs : 0;
}

// A million records: the load beside the bare fetch once each, and what the
// loaded book adds to the process (resident) and what the grid's store holds.
void BM_LoadMillion(benchmark::State &state)
{
    const int records = int(state.range(0));
    Fixture &f = fixture(records);
    double fetchMs = 0, loadMs = 0, resident = 0, store = 0;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        bareFetch(f);
        fetchMs = double(clock.nsecsElapsed()) / 1e6;
        const long long before = kxbench::residentBytes();
        auto ledger = std::make_unique<kx::Book>(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
        prepareBook(f, ledger->state());
        kx::Sheet *grid = &ledger->sheet();
        clock.restart();
        if (kx::BookLoader(*ledger).load(0) != kx::BookLoader::Loaded)
            state.SkipWithError("load failed");
        loadMs = double(clock.nsecsElapsed()) / 1e6;
        resident = double(kxbench::residentBytes() - before) / records;
        store = double(grid->storeBytes()) / records;
    }
    state.counters["fetch_ms"] = fetchMs;
    state.counters["load_ms"] = loadMs;
    state.counters["ratio"] = fetchMs > 0 ? loadMs / fetchMs : 0;
    state.counters["resident_B_per_record"] = resident;
    state.counters["store_B_per_record"] = store;
}

void BM_Calculate(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    kx::Book ledger(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    prepareBook(f, book);
    kx::BookLoader(ledger).load(0);
    for (auto _ : state)
        kx::BalanceCalculator(ledger).calculate(grid.fixedRows());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// One amount typed into row 2, as the edit cycle runs it: the check, the
// write, the balances of every row below worked out again, the row marked,
// and the whole step kept for undo. Its baseline is BM_Calculate, the bare
// recalculation of the same book.
void BM_EditAmountRow2(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    kx::Book ledger(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    prepareBook(f, book);
    kx::BookLoader(ledger).load(0);
    // As if no month were closed yet: row 2 is open and every row below it
    // is worked out again, the most an amount edit can cost.
    const int locked = grid.colIndex(QStringLiteral("Locked"));
    for (int r = grid.fixedRows(); r < grid.rows(); ++r)
        grid.setText(r, locked, QStringLiteral("0"));
    book.lastSumRow = 0;
    kx::EditSession session{kx::EditContext(ledger)};
    const int row = grid.fixedRows() + 1;
    const int debit = grid.colIndex(QStringLiteral("Debit"));
    grid.setCursor(row, debit);
    bool odd = false;
    for (auto _ : state) {
        odd = !odd;
        if (!grid.editCycle()->editCell(row, debit, odd ? QStringLiteral("123.45") : QStringLiteral("67.8*9")))
            state.SkipWithError("edit refused");
    }
    state.counters["undo"] = session.history().stack().count();
}

// Ten thousand rows pasted below a 100k-row book, every cell checked as if
// typed (date, account, explanation, amount), the book grown, balances
// worked out once, the whole paste one undo step. Its baseline writes the
// same cells unchecked and recalculates once.
struct PasteBook {
    kx::Book ledger;
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    QString text;
    QStringList dates, codes;
    int top = 0;
};

void preparePaste(Fixture &f, PasteBook &p, int rows)
{
    prepareBook(f, p.book);
    p.ledger.setContext([&f] { return f.acc.get(); });
    kx::BookLoader(p.ledger).load(0);
    const kx::JournalColumns columns(p.grid);
    // Pasted below the book, on the empty row that waits there.
    p.top = p.grid.rows();
    p.grid.setRows(p.top + 1);
    const QString day = p.grid.text(p.top - 1, columns[kx::JournalColumns::JnlDate]);
    const QString code = p.grid.text(p.grid.fixedRows() + 1, columns[kx::JournalColumns::AccCode]);
    QStringList lines;
    for (int i = 0; i < rows; ++i) {
        QStringList cells;
        for (int c = columns[kx::JournalColumns::ShowName]; c < p.grid.cols(); ++c) {
            if (p.grid.isColHidden(c))
                continue;
            const QString key = p.grid.colKey(c);
            cells << (key == QLatin1String("ShowName") ? day
                      : key == QLatin1String("AccName") ? code
                      : key == QLatin1String("Explain") ? QStringLiteral("粘贴%1").arg(i % 97)
                      : key == QLatin1String((i % 2) ? "Debit" : "Credit") ? QString::number(10 + i % 300)
                                                                          : QString());
        }
        lines << cells.join(QLatin1Char('\t'));
    }
    p.text = lines.join(QStringLiteral("\r\n"));
}

void BM_Paste10kInto100k(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    PasteBook p;
    preparePaste(f, p, 10000);
    kx::EditSession session{kx::EditContext(p.ledger)};
    const int col = p.grid.colIndex(QStringLiteral("ShowName"));
    for (auto _ : state) {
        p.grid.setCursor(p.top, col);
        const bool pasted = kx::LedgerStep::record(p.ledger, &session.history(),
                                                   QStringLiteral("粘贴"), [&] {
                                                       kx::BlockPaste paste(session.context(), session.rules());
                                                       const bool changed = paste.paste(p.text);
                                                       if (!paste.rejected().isEmpty())
                                                           state.SkipWithError("cells refused");
                                                       return changed;
                                                   });
        if (!pasted)
            state.SkipWithError("nothing pasted");
        if (state.error_occurred())
            break;
        state.PauseTiming();
        session.history().undo();
        state.ResumeTiming();
    }
}

void BM_PasteBaselineBareWrites(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    PasteBook p;
    preparePaste(f, p, 10000);
    const QList<QStringList> block = kx::GridClipboard::parse(p.text);
    QList<int> targets;
    for (int c = p.grid.colIndex(QStringLiteral("ShowName")); c < p.grid.cols(); ++c)
        if (!p.grid.isColHidden(c))
            targets << c;
    for (auto _ : state) {
        p.grid.setRows(p.top + int(block.size()) + 1);
        for (int i = 0; i < block.size(); ++i)
            for (int j = 0; j < block.at(i).size(); ++j)
                p.grid.setText(p.top + i, targets.at(j), block.at(i).at(j));
        kx::BalanceCalculator(p.ledger).calculate(p.grid.fixedRows());
        state.PauseTiming();
        p.grid.setRows(p.top + 1);
        state.ResumeTiming();
    }
}

// Ten thousand selected rows deleted from a 100k-row book: keys collected,
// rows kept for undo, balances worked out again. Its baseline removes the
// same rows from the grid alone.
void BM_Delete10kFrom100k(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    kx::Book ledger(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    prepareBook(f, book);
    kx::BookLoader(ledger).load(0);
    kx::EditHistory history(grid);
    const int from = grid.rows() / 2;
    // Closed and booked records stay where they are: the rows deleted are
    // open ones (the sample book's closed months reopened, its links taken off).
    book.lastSumRow = 0;
    for (int r = from; r < from + 10000 && r < grid.rows(); ++r) {
        grid.setText(r, QStringLiteral("Locked"), QStringLiteral("0"));
        grid.setText(r, QStringLiteral("DirID"), QString());
    }
    for (auto _ : state) {
        int removed = 0;
        kx::LedgerStep::record(ledger, &history, QStringLiteral("删除行"), [&] {
            removed = kx::RowOperations(ledger).removeRows(from, from + 9999);
            return removed > 0;
        });
        if (removed < 9000)
            state.SkipWithError("the rows were not deleted");
        state.PauseTiming();
        history.undo();
        book.removedRecords.clear();
        state.ResumeTiming();
    }
}

void BM_DeleteBaselineBareRemove(benchmark::State &state)
{
    Fixture &f = fixture(int(state.range(0)));
    kx::Book ledger(kx::LedgerHost::none(), [&f] { return f.acc.get(); });
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
    prepareBook(f, book);
    kx::BookLoader(ledger).load(0);
    const int from = grid.rows() / 2;
    for (auto _ : state) {
        state.PauseTiming();
        kx::Sheet copy;
        copy.setCols(grid.cols());
        copy.setRows(grid.rows());
        state.ResumeTiming();
        copy.removeRowsAt(from, 10000);
    }
}

} // namespace

BENCHMARK(BM_Paste10kInto100k)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_PasteBaselineBareWrites)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_Delete10kFrom100k)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_DeleteBaselineBareRemove)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_EditAmountRow2)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(40);
BENCHMARK(BM_FetchSqliteC)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FetchQtSql)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadBesideFetch)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadMillion)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_Calculate)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
