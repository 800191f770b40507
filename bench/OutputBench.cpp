// Output, each beside its baseline: Find of two keywords over a 100k book,
// and of one keyword hitting a quarter of the records of a 1M book, each
// beside one bare pass reading every shown cell's text; comma-separated and
// spreadsheet export of 100k beside writing the same cells plainly (no
// quoting, no totals, no number formats); the print layout of 10k beside
// measuring each of its texts once.
#include "BenchBook.h"
#include "ledger/LedgerHost.h"
#include "output/BookExporter.h"
#include "output/BookFinder.h"
#include "output/PageLayout.h"
#include "output/ShownColumns.h"

#include <QFile>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <map>
#include <xlsxwriter.h>

namespace {

kxbench::Opened &book(int records)
{
    static std::map<int, std::unique_ptr<kxbench::Opened>> books;
    auto &b = books[records];
    if (!b)
        b = kxbench::sqliteBook(records, QStringLiteral("output"));
    if (!b)
        std::abort();
    return *b;
}

QTemporaryDir &scratch()
{
    static QTemporaryDir dir;
    return dir;
}

void BM_Find(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    qsizetype hits = 0;
    for (auto _ : state)
        hits = kx::BookFinder(o.grid).find(QStringLiteral("华南 货款")).value().size();
    state.counters["hits"] = double(hits);
}

// What the control's Find (and the find bar) runs: BookFinder::find, which
// collects every hit row with the description the host is told. "2025年1"
// is in the date label of every row of October to December (and in those
// months' summary rows): a quarter of the sample year's records.
void BM_FindQuarter(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    qsizetype hits = 0;
    for (auto _ : state)
        hits = kx::BookFinder(o.grid).find(QStringLiteral("2025年1")).value().size();
    state.counters["hits"] = double(hits);
}

// The floor of a find: one pass over the data rows reading the text of every
// shown cell (Sheet::text(), the cell's text as written) and adding up its
// length, matching nothing and formatting nothing.
void BM_FindBaseline_ReadEveryShownCell(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QVector<int> cols = kx::shownColumns(o.grid);
    for (auto _ : state) {
        qsizetype chars = 0;
        for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r)
            for (int c : cols)
                chars += o.grid.text(r, c).size();
        benchmark::DoNotOptimize(chars);
    }
}

void BM_ExportCsv(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QString path = scratch().filePath(QStringLiteral("book.csv"));
    for (auto _ : state)
        if (!kx::BookExporter(o.ledger).write(path, kx::BookExporter::Csv, QString()).ok())
            state.SkipWithError("export failed");
    state.counters["bytes"] = double(QFile(path).size());
}

void BM_ExportCsvBaseline_PlainCells(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QVector<int> cols = kx::shownColumns(o.grid);
    for (auto _ : state) {
        QFile out(scratch().filePath(QStringLiteral("plain.csv")));
        out.open(QIODevice::WriteOnly);
        QString chunk;
        for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r) {
            for (int c : cols) {
                chunk += o.grid.text(r, c);
                chunk += QLatin1Char(',');
            }
            chunk += QStringLiteral("\r\n");
            if (chunk.size() > (1 << 16)) {
                out.write(chunk.toUtf8());
                chunk.clear();
            }
        }
        out.write(chunk.toUtf8());
    }
}

void BM_ExportXlsx(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QString path = scratch().filePath(QStringLiteral("book.xlsx"));
    for (auto _ : state)
        if (!kx::BookExporter(o.ledger).write(path, kx::BookExporter::Xlsx, QString()).ok())
            state.SkipWithError("export failed");
}

void BM_ExportXlsxBaseline_PlainCells(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QVector<int> cols = kx::shownColumns(o.grid);
    const QByteArray path = QFile::encodeName(scratch().filePath(QStringLiteral("plain.xlsx")));
    for (auto _ : state) {
        lxw_workbook_options options{};
        options.constant_memory = LXW_TRUE;
        lxw_workbook *wb = workbook_new_opt(path.constData(), &options);
        lxw_worksheet *ws = workbook_add_worksheet(wb, nullptr);
        for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r)
            for (int k = 0; k < cols.size(); ++k) {
                const int c = cols[k];
                if (o.grid.colDataType(c) == kx::Sheet::TypeCurrency)
                    worksheet_write_number(ws, lxw_row_t(r), lxw_col_t(k), o.grid.amount(r, c).toDouble(), nullptr);
                else
                    worksheet_write_string(ws, lxw_row_t(r), lxw_col_t(k), o.grid.text(r, c).toUtf8().constData(), nullptr);
            }
        workbook_close(wb);
    }
}

void BM_PrintLayout(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QFont font = kx::PageLayout::bodyFont(QGuiApplication::font());
    kx::Sheet pages;
    int count = 0;
    for (auto _ : state)
        count = kx::PageLayout(o.grid, font).layout(kx::PageLayout::defaultArea(), pages);
    state.counters["pages"] = count;
}

void BM_PrintLayoutBaseline_MeasureEachText(benchmark::State &state)
{
    kxbench::Opened &o = book(int(state.range(0)));
    const QFontMetricsF fm(kx::PageLayout::bodyFont(QGuiApplication::font()));
    const QVector<int> cols = kx::shownColumns(o.grid);
    for (auto _ : state) {
        double width = 0;
        for (int r = o.grid.fixedRows(); r < o.grid.rows(); ++r)
            for (int c : cols)
                width += fm.horizontalAdvance(o.grid.text(r, c));
        benchmark::DoNotOptimize(width);
    }
}

} // namespace

BENCHMARK(BM_Find)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindBaseline_ReadEveryShownCell)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindQuarter)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FindBaseline_ReadEveryShownCell)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExportCsv)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ExportCsvBaseline_PlainCells)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ExportXlsx)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_ExportXlsxBaseline_PlainCells)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_PrintLayout)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_PrintLayoutBaseline_MeasureEachText)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(3);
