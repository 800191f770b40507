// Fitting the figure columns of a 1M-row book to their widest value, beside
// its baseline: one bare pass reading every amount of the same columns.
#include "BenchBook.h"
#include "ledger/ColumnFit.h"
#include "ledger/JournalColumns.h"

#include <QFontMetrics>
#include <benchmark/benchmark.h>

namespace {

kxbench::Opened &book()
{
    static std::unique_ptr<kxbench::Opened> b = kxbench::sqliteBook(1000000, QStringLiteral("layout"));
    if (!b)
        std::abort();
    return *b;
}

const kx::JournalColumns::Column Figures[] = {kx::JournalColumns::Debit, kx::JournalColumns::Credit,
                                              kx::JournalColumns::Balance};

void BM_FitFigureColumns(benchmark::State &state)
{
    kxbench::Opened &o = book();
    for (auto _ : state) {
        kx::ColumnFit fit(o.ledger,
                          [](const QString &t, const QFont &f) { return QFontMetrics(f).horizontalAdvance(t); });
        int width = 0;
        const kx::JournalColumns columns(o.grid);
        for (auto c : Figures)
            width += fit.figureWidth(columns[c]);
        benchmark::DoNotOptimize(width);
    }
}

void BM_FitFigureColumnsBaseline_ReadEveryAmount(benchmark::State &state)
{
    kxbench::Opened &o = book();
    const kx::JournalColumns columns(o.grid);
    for (auto _ : state) {
        kx::Currency sum;
        for (auto c : Figures)
            for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r)
                sum += o.grid.amount(r, columns[c]);
        benchmark::DoNotOptimize(sum);
    }
}

} // namespace

BENCHMARK(BM_FitFigureColumns)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FitFigureColumnsBaseline_ReadEveryAmount)->Unit(benchmark::kMillisecond);
