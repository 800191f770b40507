// Reading a bank's 100,000-line statement (GBK, quoted fields, a header
// block and totals) beside the floor: the same bytes split into lines.
#include "bank/StatementReader.h"

#include <QDate>
#include <QLocale>
#include <QStringEncoder>
#include <benchmark/benchmark.h>

namespace {

const QByteArray &statementBytes()
{
    static const QByteArray bytes = [] {
        QString text = QStringLiteral("账号：6222020200112233445\r\n户名：华南贸易有限公司\r\n\r\n"
                                      "交易日期,摘要,收入金额,支出金额,余额,对方户名,对方账号,交易流水号\r\n");
        qint64 balance = 0;
        QDate date(2020, 1, 1);
        for (int i = 0; i < 100000; ++i) {
            const qint64 cents = 100 + (i * 7919) % 2000000;
            const bool in = i % 3 != 0;
            balance += in ? cents : -cents;
            const QString amount = QStringLiteral("\"%1.%2\"").arg(QLocale::c().toString(cents / 100)).arg(cents % 100, 2, 10, QLatin1Char('0'));
            if (i % 100 == 0)
                date = date.addDays(1);
            text += date.toString(QStringLiteral("yyyy-MM-dd")) + QStringLiteral(" 10:22:01,\"货款,第%1笔\",").arg(i)
                    + (in ? amount + QStringLiteral(",,") : QStringLiteral(",") + amount + QStringLiteral(","))
                    + QString::number(balance / 100) + QLatin1Char('.') + QStringLiteral("%1").arg(std::abs(balance % 100), 2, 10, QLatin1Char('0'))
                    + QStringLiteral(",广州永达有限公司,6222000011112222,TX%1\r\n").arg(i);
        }
        text += QStringLiteral("合计,,,,,,,\r\n");
        QStringEncoder enc("GBK");
        return QByteArray(enc.encode(text));
    }();
    return bytes;
}

void BM_ReadStatementCsv(benchmark::State &state)
{
    const QByteArray &bytes = statementBytes();
    qsizetype lines = 0;
    for (auto _ : state) {
        kx::Result<kx::Statement> st = kx::StatementReader::read(bytes, QStringLiteral("statement.csv"));
        if (!st)
            state.SkipWithError(qPrintable(st.error()));
        else
            lines = st.value().lines.size();
    }
    state.counters["lines"] = double(lines);
}

// The floor: the file's bytes split on newlines, nothing decoded.
void BM_ReadStatementCsv_Floor(benchmark::State &state)
{
    const QByteArray &bytes = statementBytes();
    qsizetype lines = 0;
    for (auto _ : state) {
        const QList<QByteArray> split = bytes.split('\n');
        lines = split.size();
        benchmark::DoNotOptimize(split.constData());
    }
    state.counters["lines"] = double(lines);
}

} // namespace

BENCHMARK(BM_ReadStatementCsv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadStatementCsv_Floor)->Unit(benchmark::kMillisecond);
