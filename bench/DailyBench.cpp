// The daily fund report of a whole year for a 1,000,000-record book and
// the book tree above it, beside its floor in the same run: one pass over
// the loaded book's amounts.
#include "BenchBook.h"

#include "ledger/Book.h"
#include "ledger/RowAmounts.h"
#include "output/DailyReport.h"

#include <QElapsedTimer>
#include <benchmark/benchmark.h>

namespace {

void BM_DailyReportYear(benchmark::State &state)
{
    static std::unique_ptr<kxbench::Opened> o = kxbench::sqliteBook(int(state.range(0)), QStringLiteral("daily"));
    if (!o) {
        state.SkipWithError("no book");
        return;
    }
    double floorMs = 0;
    int lines = 0;
    for (auto _ : state) {
        const kx::Result<QList<kx::DailyReport::Line>> made =
            kx::DailyReport::make(o->acc->Connection(), 0, QDate(2025, 1, 1), QDate(2025, 12, 31));
        if (!made.ok()) {
            state.SkipWithError("report failed");
            return;
        }
        lines = int(made.value().size());
        state.PauseTiming();
        QElapsedTimer clock;
        clock.start();
        kx::RowAmounts read(o->ledger);
        kx::Currency in, out;
        for (int r = o->grid.fixedRows(); r < o->grid.rows(); ++r)
            if (read.read(r) == kx::RowAmounts::Record) {
                in += read.debit;
                out += read.credit;
            }
        benchmark::DoNotOptimize(in);
        benchmark::DoNotOptimize(out);
        floorMs = double(clock.nsecsElapsed()) / 1e6;
        state.ResumeTiming();
    }
    state.counters["books"] = lines;
    state.counters["floor_ms"] = floorMs;
}

} // namespace

BENCHMARK(BM_DailyReportYear)->Arg(1000000)->Unit(benchmark::kMillisecond)->Iterations(3);
