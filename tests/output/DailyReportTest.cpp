// The daily fund report against the records themselves: each bottom book's
// opening, receipts, payments and closing summed from its loaded records,
// each book above holding its books' totals, on both engines; and the file
// the tool writes.
#include "support/TestDatabase.h"

#include "bank/Reconciliation.h"
#include "bank/StatementMatcher.h"
#include "ledger/LedgerHost.h"
#include "output/BookSession.h"
#include "output/BookSheet.h"
#include "output/DailyReport.h"

#include <kxjournal/SqlAccContext.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kxtest::Engine;

class DailyReporting : public ::testing::TestWithParam<Engine>
{
};

TEST_P(DailyReporting, EachBooksFiguresAreItsRecordsSumsAndBooksAboveHoldTheirTotals)
{
    kxtest::TestDatabase testDb(GetParam());
    {
        kx::Database conn = testDb.open();
        ASSERT_GT(kxtest::fillSampleBooks(conn, 500, 5), 0);
    }
    kx::SqlAccContext acc(testDb.open());
    const QDate from(2025, 3, 1), to(2025, 3, 31);
    const kx::Result<QList<kx::DailyReport::Line>> made = kx::DailyReport::make(acc.Connection(), 0, from, to);
    ASSERT_TRUE(made.ok()) << qPrintable(made.error());
    const QList<kx::DailyReport::Line> &lines = made.value();
    ASSERT_GE(lines.size(), 7);
    QHash<int, kx::DailyReport::Line> byId;
    for (const kx::DailyReport::Line &l : lines)
        byId.insert(l.book.id, l);
    int bottoms = 0;
    for (const kx::DailyReport::Line &l : lines) {
        SCOPED_TRACE(l.book.code.toStdString());
        if (l.book.hasChildren) {
            kx::Currency opening, receipts, payments;
            int in = 0, out = 0;
            for (const kx::DailyReport::Line &c : lines)
                if (c.book.parentId == l.book.id) {
                    opening = opening + c.opening;
                    receipts = receipts + c.receipts;
                    payments = payments + c.payments;
                    in += c.receiptCount;
                    out += c.paymentCount;
                }
            EXPECT_EQ(l.opening, opening);
            EXPECT_EQ(l.receipts, receipts);
            EXPECT_EQ(l.payments, payments);
            EXPECT_EQ(l.receiptCount, in);
            EXPECT_EQ(l.paymentCount, out);
            continue;
        }
        // A bottom book, loaded as the control loads it.
        kx::BookSession session(&acc, l.book.id, kx::LedgerHost::none());
        ASSERT_TRUE(session.load());
        kx::Currency receipts, payments;
        int in = 0, out = 0;
        for (const kx::BankRecord &r : kx::BankRecord::of(session.book())) {
            if (r.date < from || r.date > to)
                continue;
            (r.side == kx::StatementSide::Receipt ? receipts : payments) =
                (r.side == kx::StatementSide::Receipt ? receipts : payments) + r.amount;
            ++(r.side == kx::StatementSide::Receipt ? in : out);
        }
        EXPECT_EQ(l.opening, kx::Reconciliation::balanceOf(session.book(), from.addDays(-1)));
        EXPECT_EQ(l.receipts, receipts);
        EXPECT_EQ(l.payments, payments);
        EXPECT_EQ(l.receiptCount, in);
        EXPECT_EQ(l.paymentCount, out);
        EXPECT_EQ(l.closing(), kx::Reconciliation::balanceOf(session.book(), to));
        bottoms += in + out > 0 ? 1 : 0;
    }
    EXPECT_GE(bottoms, 3) << "books with records in the month";

    const kx::Result<QList<kx::DailyReport::Line>> one = kx::DailyReport::make(acc.Connection(), lines.at(1).book.id, from, to);
    ASSERT_TRUE(one.ok());
    EXPECT_EQ(one.value().first().book.id, lines.at(1).book.id) << "a book and those below it";
    EXPECT_EQ(one.value().first().closing(), lines.at(1).closing());
    EXPECT_FALSE(kx::DailyReport::make(acc.Connection(), 0, to, from).ok()) << "the days the wrong way round";
}

INSTANTIATE_TEST_SUITE_P(Engines, DailyReporting, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

TEST(DailyReportTool, WritesTheReportAsCommaSeparatedText)
{
    kxtest::TestDatabase testDb(Engine::Sqlite);
    {
        kx::Database conn = testDb.open();
        ASSERT_GT(kxtest::fillSampleBooks(conn, 300, 2), 0);
    }
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("日报.csv"));
    QProcess p;
    p.start(QStringLiteral(KX_TOOL), {QStringLiteral("daily"), QStringLiteral("--db"), testDb.url(), QStringLiteral("--book"),
                                      QStringLiteral("02"), QStringLiteral("--from"), QStringLiteral("2025-05-01"),
                                      QStringLiteral("--to"), QStringLiteral("2025-05-31"), QStringLiteral("--out"), file});
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QStringList rows = QString::fromUtf8(f.readAll()).remove(QChar(0xFEFF)).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    ASSERT_GE(rows.size(), 4);
    EXPECT_EQ(rows.at(0), QStringLiteral("资金日报表,2025-05-01 至 2025-05-31"));
    EXPECT_EQ(rows.at(1), kx::DailyReport::headers().join(QLatin1Char(',')));
    EXPECT_TRUE(rows.at(2).startsWith(QStringLiteral("02,银行日记账,"))) << qPrintable(rows.at(2));

    kx::SqlAccContext acc(testDb.open());
    const QList<kx::DailyReport::Line> lines =
        kx::DailyReport::make(acc.Connection(), kx::BookDirectory::read(acc.Connection()).value().byCode(QStringLiteral("02"))->id,
                              QDate(2025, 5, 1), QDate(2025, 5, 31))
            .value();
    const QStringList top = rows.at(2).split(QLatin1Char(','));
    ASSERT_EQ(top.size(), 8);
    EXPECT_EQ(top.at(7), kx::BookSheet::twoDecimals(lines.first().closing()));
    EXPECT_EQ(top.at(3).toInt(), lines.first().receiptCount);

    p.start(QStringLiteral(KX_TOOL), {QStringLiteral("daily"), QStringLiteral("--db"), testDb.url(), QStringLiteral("--from"),
                                      QStringLiteral("2025-05-31"), QStringLiteral("--to"), QStringLiteral("2025-05-01"),
                                      QStringLiteral("--out"), file});
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 1);
    EXPECT_EQ(QString::fromUtf8(p.readAllStandardError()).count(QLatin1Char('\n')), 1);
}
