// The side panel's month figures of a 1M-row book (receipts, payments and
// the balance at each month's end, read from the typed cells), beside the
// floor: one pass summing the book's amounts held in a plain array.
#include "BenchBook.h"
#include "ledger/JournalColumns.h"
#include "ledger/MonthTotals.h"

#include <benchmark/benchmark.h>
#include <vector>

namespace {

struct ChartBook {
    std::unique_ptr<kxbench::Opened> opened;
    std::vector<qint64> amounts;  ///< debit − credit of every row, for the floor
};

ChartBook &book()
{
    static ChartBook *b = [] {
        auto *made = new ChartBook;
        made->opened = kxbench::sqliteBook(1000000, QStringLiteral("chart"));
        if (!made->opened)
            std::abort();
        const kx::Sheet &grid = made->opened->grid;
        const kx::JournalColumns columns(grid);
        const int debit = columns[kx::JournalColumns::Debit], credit = columns[kx::JournalColumns::Credit];
        made->amounts.reserve(std::size_t(grid.rows()));
        for (int r = grid.fixedRows(); r < grid.rows(); ++r)
            made->amounts.push_back(grid.amount(r, debit).raw() - grid.amount(r, credit).raw());
        return made;
    }();
    return *b;
}

void BM_MonthFigures1M(benchmark::State &state)
{
    ChartBook &b = book();
    int months = 0;
    for (auto _ : state) {
        const kx::MonthTotals totals(b.opened->ledger);
        benchmark::DoNotOptimize(totals.month(12).closing);
        months = 0;
        for (int m = 1; m <= 12; ++m)
            months += totals.month(m).firstRow >= 0;
    }
    state.counters["months_with_records"] = months;
}

// The floor: the book's amounts summed in one pass over a plain array.
void BM_MonthFiguresFloor_SumAmounts1M(benchmark::State &state)
{
    ChartBook &b = book();
    for (auto _ : state) {
        qint64 sum = 0;
        for (qint64 amount : b.amounts)
            sum += amount;
        benchmark::DoNotOptimize(sum);
    }
}

} // namespace

BENCHMARK(BM_MonthFiguresFloor_SumAmounts1M)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MonthFigures1M)->Unit(benchmark::kMillisecond);
