// An explanation typed on the empty row of a 100,000-record book fills the
// account and amount from the latest record carrying it: the explanation
// entered as typing does (check, write, the rule's fill, the row's balance),
// beside the floor: looking the explanation up in a hash made beforehand.
#include "BenchBook.h"

#include "editing/EditContext.h"
#include "editing/EditPipeline.h"
#include "editing/EditRules.h"
#include "editing/ExplainRule.h"
#include "grid/ColumnReader.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/BookRow.h"

#include <QElapsedTimer>
#include <QHash>
#include <benchmark/benchmark.h>

namespace {

void BM_QuickFill100k(benchmark::State &state)
{
    static std::unique_ptr<kxbench::Opened> o = kxbench::sqliteBook(int(state.range(0)), QStringLiteral("quickfill"));
    if (!o) {
        state.SkipWithError("no book");
        return;
    }
    kx::Book &book = o->ledger;
    kx::Sheet &grid = book.sheet();
    kx::EditContext ctx(book);
    const kx::EditRules rules;
    kx::EditPipeline pipeline(ctx, rules);
    ctx.keepBlankRow();
    const int row = grid.rows() - 1;
    const kx::JournalColumns &columns = ctx.columns;
    // An explanation of the book's first records: the search goes nearly all the way up.
    QString explain;
    for (int r = grid.fixedRows() + 1; r < grid.rows() && explain.isEmpty(); ++r)
        if (kx::BookRow::of(grid, columns, r).isDated())
            explain = grid.text(r, columns[kx::JournalColumns::Explain]);
    if (!pipeline.enter(row, columns[kx::JournalColumns::ShowName], QStringLiteral("2025-12-31"), kx::EditOrigin::Typing).ok()) {
        state.SkipWithError("no date");
        return;
    }
    QHash<QString, int> latest;
    for (int r = grid.fixedRows(); r < row; ++r)
        latest.insert(grid.text(r, columns[kx::JournalColumns::Explain]), r);
    double floorNs = 0;
    bool filled = false;
    for (auto _ : state) {
        state.PauseTiming();
        for (kx::JournalColumns::Column c : {kx::JournalColumns::Explain, kx::JournalColumns::AccName,
                                             kx::JournalColumns::AccID, kx::JournalColumns::Debit, kx::JournalColumns::Credit})
            grid.setText(row, columns[c], QString());
        state.ResumeTiming();
        const kx::Result<bool> entered = pipeline.enter(row, columns[kx::JournalColumns::Explain], explain, kx::EditOrigin::Typing);
        benchmark::DoNotOptimize(entered.ok());
        state.PauseTiming();
        filled = !grid.text(row, columns[kx::JournalColumns::AccName]).isEmpty();
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 1000; ++i)
            benchmark::DoNotOptimize(latest.value(explain));
        floorNs = double(clock.nsecsElapsed()) / 1000;
        state.ResumeTiming();
    }
    state.counters["filled"] = filled ? 1 : 0;
    state.counters["floor_us"] = floorNs / 1000;
}

// The explanation list of a 1,000,000-record book opening: each offered
// explanation's latest record found for its hint, one text among them that
// only the opening row holds (the column is read to its top); beside the floor: one
// pass reading the explanation column's cells.
void BM_ExplainListHints1M(benchmark::State &state)
{
    static std::unique_ptr<kxbench::Opened> o = kxbench::sqliteBook(1000000, QStringLiteral("explainhints"));
    if (!o) {
        state.SkipWithError("no book");
        return;
    }
    kx::Book &book = o->ledger;
    const kx::Sheet &grid = book.sheet();
    kx::EditContext ctx(book);
    QStringList items = kx::ExplainRule::texts(ctx).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    const int col = ctx.columns[kx::JournalColumns::Explain];
    // The opening row's text: held by a cell, carried by no record.
    items.prepend(grid.text(grid.fixedRows(), col));
    int hinted = 0;
    double floorMs = 0;
    for (auto _ : state) {
        const QStringList hints = kx::ExplainRule::hints(ctx, items);
        state.PauseTiming();
        hinted = int(hints.size() - hints.count(QString()));
        QElapsedTimer clock;
        clock.start();
        kx::ColumnReader cells(grid.cellStore(), col);
        std::uint64_t mix = 0;
        for (int r = grid.rows() - 1; r >= grid.fixedRows(); --r)
            mix += cells.at(r).bits();
        benchmark::DoNotOptimize(mix);
        floorMs = double(clock.nsecsElapsed()) / 1e6;
        state.ResumeTiming();
    }
    state.counters["offered"] = double(items.size());
    state.counters["hinted"] = hinted;
    state.counters["floor_ms"] = floorMs;
}

} // namespace

BENCHMARK(BM_ExplainListHints1M)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_QuickFill100k)->Arg(100000)->Unit(benchmark::kMillisecond);
