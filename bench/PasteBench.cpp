// A hundred thousand lines pasted below a 100k-record book, every cell
// checked as typing checks it (date, account, explanation, amount), the
// balances worked out once, the whole paste one undo step; each line has an
// explanation of its own, as an imported statement has. Beside it, in the
// same iterations, its floor: the same cells written straight into the grid
// and the balances worked out once. Reported as paste_ms, floor_ms and ratio.
#include "BenchBook.h"
#include "editing/EditSession.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/EditHistory.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerStep.h"
#include "rows/BlockPaste.h"
#include "rows/GridClipboard.h"

#include "grid/Sheet.h"

#include <QElapsedTimer>
#include <benchmark/benchmark.h>

namespace {

// The block: the visible columns from the date on, a line per record.
QString pasteText(const kx::Sheet &grid, int top, int lines)
{
    const kx::JournalColumns columns(grid);
    const QString day = grid.text(top - 1, columns[kx::JournalColumns::JnlDate]);
    const QString code = grid.text(grid.fixedRows() + 1, columns[kx::JournalColumns::AccCode]);
    QStringList out;
    out.reserve(lines);
    for (int i = 0; i < lines; ++i) {
        QStringList cells;
        for (int c = columns[kx::JournalColumns::ShowName]; c < grid.cols(); ++c) {
            if (grid.isColHidden(c))
                continue;
            const QString key = grid.colKey(c);
            cells << (key == QLatin1String("ShowName") ? day
                      : key == QLatin1String("AccName") ? code
                      : key == QLatin1String("Explain") ? QStringLiteral("导入流水第%1笔").arg(i)
                      : key == QLatin1String((i % 2) ? "Debit" : "Credit") ? QStringLiteral("%1.25").arg(10 + i % 300)
                                                                          : QString());
        }
        out << cells.join(QLatin1Char('\t'));
    }
    return out.join(QStringLiteral("\r\n"));
}

void BM_PasteIntoA100kBookBesideFloor(benchmark::State &state)
{
    const int lines = int(state.range(0));
    auto o = kxbench::sqliteBook(100000, QStringLiteral("paste"));
    if (!o) {
        state.SkipWithError("no sample book");
        return;
    }
    kx::Sheet &grid = o->grid;
    const int top = grid.rows();
    grid.setRows(top + 1);
    const QString text = pasteText(grid, top, lines);
    const QList<QStringList> block = kx::GridClipboard::parse(text);
    QList<int> targets;
    for (int c = grid.colIndex(QStringLiteral("ShowName")); c < grid.cols(); ++c)
        if (!grid.isColHidden(c))
            targets << c;
    kx::EditSession session{kx::EditContext(o->ledger)};
    const int dateCol = grid.colIndex(QStringLiteral("ShowName"));
    double pasteNs = 0, floorNs = 0;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        grid.setCursor(top, dateCol);
        const bool pasted = kx::LedgerStep::record(o->ledger, &session.history(),
                                                   QStringLiteral("粘贴"), [&] {
                                                       kx::BlockPaste paste(session.context(), session.rules());
                                                       const bool changed = paste.paste(text);
                                                       if (!paste.rejected().isEmpty())
                                                           state.SkipWithError("cells refused");
                                                       return changed;
                                                   });
        pasteNs += double(clock.nsecsElapsed());
        if (!pasted)
            state.SkipWithError("nothing pasted");
        if (state.error_occurred())
            break;
        state.PauseTiming();
        session.history().undo();
        session.context().explainHistory.clear();
        state.ResumeTiming();

        clock.restart();
        grid.setRows(top + int(block.size()) + 1);
        for (int i = 0; i < block.size(); ++i)
            for (int j = 0; j < block.at(i).size(); ++j)
                grid.setText(top + i, targets.at(j), block.at(i).at(j));
        kx::BalanceCalculator(o->ledger).calculate(grid.fixedRows());
        floorNs += double(clock.nsecsElapsed());
        state.PauseTiming();
        grid.setRows(top);  // the floor's rows go, an empty one waits again
        grid.setRows(top + 1);
        state.ResumeTiming();
    }
    const double n = double(state.iterations());
    state.counters["paste_ms"] = pasteNs / n / 1e6;
    state.counters["floor_ms"] = floorNs / n / 1e6;
    state.counters["ratio"] = floorNs > 0 ? pasteNs / floorNs : 0;
}

} // namespace

BENCHMARK(BM_PasteIntoA100kBookBesideFloor)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
