// A bank statement of 100,000 lines imported into a 100,000-record bank
// book and matched with it automatically, beside its floor in the same
// run: the file's bytes read and the two lists joined in a hash by amount.
#include "BenchBook.h"

#include "bank/StatementMatcher.h"
#include "bank/StatementReader.h"
#include "bank/StatementStore.h"
#include "data/SqlAccess.h"
#include "ledger/Book.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QStringEncoder>
#include <benchmark/benchmark.h>

namespace {

// The statement a bank would give for the book's records: each the same
// day or up to two days later, GBK with a header block and a totals line.
QString statementFile(const QList<kx::BankRecord> &records)
{
    const QString path = QDir::temp().filePath(QStringLiteral("kxjournal-bench-statement.csv"));
    QString text = QStringLiteral("账号：6222020200112233445\r\n户名：华南贸易有限公司\r\n"
                                  "交易日期,摘要,收入金额,支出金额,余额,对方户名,对方账号,交易流水号\r\n");
    int i = 0;
    for (const kx::BankRecord &r : records) {
        ++i;
        const bool in = r.side == kx::StatementSide::Receipt;
        text += r.date.addDays(i % 3).toString(QStringLiteral("yyyyMMdd")) + QLatin1Char(',') + r.explain +
                QLatin1Char(',') + (in ? r.amount.toString() : QString()) + QLatin1Char(',') +
                (in ? QString() : r.amount.toString()) + QStringLiteral(",,广州永达有限公司,6222000011112222,TX") +
                QString::number(i) + QStringLiteral("\r\n");
    }
    text += QStringLiteral("合计,,,,,,,\r\n");
    QFile f(path);
    if (f.open(QIODevice::WriteOnly)) {
        QStringEncoder gbk("GBK");
        f.write(gbk.encode(text));
    }
    return path;
}

void BM_ImportAndMatch100k(benchmark::State &state)
{
    static std::unique_ptr<kxbench::Opened> o = kxbench::sqliteBook(int(state.range(0)), QStringLiteral("reconcile"));
    if (!o) {
        state.SkipWithError("no book");
        return;
    }
    kx::Database &db = o->acc->Connection();
    const QList<kx::BankRecord> records = kx::BankRecord::of(o->ledger);
    const QString file = statementFile(records);
    const int docId = o->book.savedDocId();
    double importMs = 0, matchMs = 0, floorMs = 0, matched = 0, lines = 0;
    for (auto _ : state) {
        state.PauseTiming();
        for (const char *table : {"kxBankMatch", "kxBankStmt", "kxBankImport"})
            if (!kx::sqlRun(db, {QStringLiteral("DELETE FROM %1").arg(QLatin1String(table)), {}}).ok())
                state.SkipWithError("cannot empty the bank tables");
        state.ResumeTiming();
        QElapsedTimer clock;
        clock.start();
        const kx::Result<kx::Statement> read = kx::StatementReader::read(file);
        kx::StatementStore store(db);
        if (!read.ok() || !store.import(docId, read.value(), QStringLiteral("bench.csv"), QString()).ok()) {
            state.SkipWithError("import failed");
            return;
        }
        importMs = double(clock.nsecsElapsed()) / 1e6;
        clock.restart();
        const QList<kx::StoredLine> stored = store.lines(docId).value();
        const kx::StatementMatcher::Outcome found = kx::StatementMatcher::match(stored, kx::BankRecord::of(o->ledger));
        if (!store.match(found.pairs, QStringLiteral("bench"), true).ok())
            state.SkipWithError("match failed");
        matchMs = double(clock.nsecsElapsed()) / 1e6;
        matched = double(found.pairs.size());
        lines = double(stored.size());

        // The floor: the bytes read, and the two lists joined by amount.
        state.PauseTiming();
        clock.restart();
        QFile f(file);
        f.open(QIODevice::ReadOnly);
        const QByteArray bytes = f.readAll();
        benchmark::DoNotOptimize(bytes.constData());
        QHash<qint64, int> byAmount;
        byAmount.reserve(records.size());
        for (const kx::BankRecord &r : records)
            byAmount.insert(r.amount.raw(), r.recId);
        qint64 joined = 0;
        for (const kx::StoredLine &l : stored)
            joined += byAmount.value(l.line.amount.raw());
        benchmark::DoNotOptimize(joined);
        floorMs = double(clock.nsecsElapsed()) / 1e6;
        state.ResumeTiming();
    }
    state.counters["import_ms"] = importMs;
    state.counters["match_ms"] = matchMs;
    state.counters["total_ms"] = importMs + matchMs;
    state.counters["floor_ms"] = floorMs;
    state.counters["ratio"] = floorMs > 0 ? (importMs + matchMs) / floorMs : 0;
    state.counters["lines"] = lines;
    state.counters["matched"] = matched;
}

} // namespace

BENCHMARK(BM_ImportAndMatch100k)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(3);
