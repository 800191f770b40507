#include "grid/Sheet.h"

#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr int Cols = 29;

// Texts shaped like a loaded journal: dates, numbers, amounts, Chinese words.
kx::CellArray journalArray(int rows)
{
    kx::CellArray a(rows, Cols);
    for (int r = 0; r < rows; ++r) {
        a.setText(r, 0, QStringLiteral("2026年%1月%2日").arg(r % 12 + 1, 2, 10, QLatin1Char('0')).arg(r % 28 + 1, 2, 10, QLatin1Char('0')));
        a.setText(r, 1, QStringLiteral("2026-%1-%2").arg(r % 12 + 1, 2, 10, QLatin1Char('0')).arg(r % 28 + 1, 2, 10, QLatin1Char('0')));
        a.setText(r, 2, QString::number(r + 1));
        a.setText(r, 3, QStringLiteral("银行存款"));
        a.setText(r, 5, QStringLiteral("收到货款"));
        a.setText(r, 6, QString::number((r * 37) % 100000) + QStringLiteral(".25"));
        a.setText(r, 11, QString::number(r * 13) + QStringLiteral(".5"));
        for (int c = 19; c < Cols; ++c)
            a.setText(r, c, QString::number(r + c));
    }
    return a;
}

void BM_GridFillFromArray(benchmark::State &state)
{
    const int rows = int(state.range(0));
    const kx::CellArray source = journalArray(rows);
    std::unique_ptr<kx::Sheet> grid;
    for (auto _ : state) {
        // Copying the source and tearing down the previous grid are not part of the fill.
        state.PauseTiming();
        kx::CellArray copy = source;
        grid.reset();
        grid = std::make_unique<kx::Sheet>();
        state.ResumeTiming();
        grid->loadArray(std::move(copy));
        benchmark::DoNotOptimize(grid->rows());
    }
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(BM_GridFillFromArray)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
