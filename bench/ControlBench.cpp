// What a cashier waits for on a million-record book, through the control a
// host embeds: one amount typed on the second record until the view is
// painted again (every balance below moves), and the undo of that amount.
// Beside them, the floor: one pass of running sums over the book's amounts
// held in a plain array.
#include "BenchBook.h"
#include "SampleBooks.h"
#include "data/SqlAccess.h"

#include <kxjournal/Database.h>
#include <kxjournal/EditCycle.h>
#include <kxjournal/GridModel.h>
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

namespace {

struct ControlBook {
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::Journal> journal;
    int row = -1;   ///< the second record: open, on no voucher
    int debit = -1;
    double residentPerRecord = 0;
    std::vector<qint64> amounts;  ///< debit − credit of every row, for the floor
};

ControlBook *openControlBook(int records)
{
    kx::Database db = kx::Database::open(QStringLiteral("sqlite:") + kxbench::freshFilePath(QStringLiteral("control"), records));
    if (!kxbench::fillSample(db, records))
        return nullptr;
    const int docId = kxbench::sampleBookId(db);
    // No month closed yet: every record is open, and a change on the second
    // moves every balance below it.
    if (!kx::sqlExec(db, {QStringLiteral("Delete From kxJournalRecs Where Tag<0"), {}}).ok())
        return nullptr;
    auto *b = new ControlBook;
    b->acc = std::make_unique<kx::SqlAccContext>(std::move(db));
    b->acc->setCurPeriod(QStringLiteral("202512"));
    b->acc->setPeriodStart(QDate(2025, 12, 1));
    b->acc->setPeriodEnd(QDate(2025, 12, 31));
    b->acc->setBeginDate(QDate(2025, 1, 1));
    const long long before = kxbench::residentBytes();
    b->journal = std::make_unique<kx::Journal>();
    b->journal->resize(1100, 640);
    b->journal->setAcc(b->acc.get());
    b->journal->setDocID(docId);
    b->journal->show();
    if (!b->journal->Load())
        return nullptr;
    QApplication::processEvents();
    b->residentPerRecord = double(kxbench::residentBytes() - before) / records;
    kx::GridModel *grid = b->journal->Grid();
    b->debit = grid->colIndex(QStringLiteral("Debit"));
    const int dirId = grid->colIndex(QStringLiteral("DirID"));
    const int credit = grid->colIndex(QStringLiteral("Credit"));
    // The opening row is the first; the second record is the first one after
    // it that carries no voucher.
    for (int r = grid->fixedRows() + 1; r < grid->rows() && b->row < 0; ++r)
        if (grid->value(r, dirId) == 0 && !grid->text(r, QStringLiteral("JnlDate")).isEmpty())
            b->row = r;
    b->amounts.reserve(std::size_t(grid->rows()));
    for (int r = grid->fixedRows(); r < grid->rows(); ++r)
        b->amounts.push_back(grid->amount(r, b->debit).raw() - grid->amount(r, credit).raw());
    return b->row < 0 ? nullptr : b;
}

ControlBook &book()
{
    static ControlBook *b = openControlBook(1000000);
    if (!b)
        std::abort();
    return *b;
}

void typeAmount(ControlBook &b, bool odd)
{
    kx::GridModel *grid = b.journal->Grid();
    grid->setCursor(b.row, b.debit);
    if (!grid->editCycle()->editCell(b.row, b.debit, odd ? QStringLiteral("123.45") : QStringLiteral("67.8")))
        std::abort();
}

void paint(ControlBook &b)
{
    QApplication::processEvents();
    b.journal->gridView()->viewport()->repaint();
}

void BM_TypeAmountOnSecondRecord1M(benchmark::State &state)
{
    ControlBook &b = book();
    bool odd = false;
    for (auto _ : state) {
        odd = !odd;
        typeAmount(b, odd);
        paint(b);
    }
    state.counters["resident_B_per_record"] = b.residentPerRecord;
}

void BM_UndoTypedAmount1M(benchmark::State &state)
{
    ControlBook &b = book();
    bool odd = false;
    for (auto _ : state) {
        state.PauseTiming();
        odd = !odd;
        typeAmount(b, odd);
        paint(b);
        state.ResumeTiming();
        if (!b.journal->undo())
            state.SkipWithError("nothing to undo");
        paint(b);
    }
}

// The floor: the running balance of every row from the amounts, in one pass.
void BM_TypeAmountFloor_RunningSums1M(benchmark::State &state)
{
    ControlBook &b = book();
    std::vector<qint64> balances(b.amounts.size());
    for (auto _ : state) {
        qint64 sum = 0;
        for (std::size_t i = 0; i < b.amounts.size(); ++i)
            balances[i] = sum += b.amounts[i];
        benchmark::DoNotOptimize(balances.data());
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK(BM_TypeAmountFloor_RunningSums1M)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TypeAmountOnSecondRecord1M)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_UndoTypedAmount1M)->Unit(benchmark::kMillisecond)->Iterations(10);
