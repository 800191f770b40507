// The side panel's month figures, worked out with no widget and compared
// with sums made here row by row from what the test wrote.
#include "QtPrinters.h"

#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/ColumnModel.h"
#include "ledger/LedgerState.h"
#include "ledger/MonthTotals.h"

#include <QDate>
#include <QRandomGenerator>
#include <gtest/gtest.h>

#include <iostream>
#include <vector>

using kx::Currency;
using kx::MonthTotals;

namespace {

Currency money(const QString &text)
{
    return text.isEmpty() ? Currency() : Currency::fromText(text).value();
}

// One row as the test wrote it; the expected figures are made from these.
struct Line {
    QString date, debit, credit;
    bool summary = false;
};

class MonthFigures : public ::testing::Test
{
protected:
    void SetUp() override { kx::ColumnModel::define(book); }

    int add(const Line &line)
    {
        const int r = grid.rows();
        grid.setRows(r + 1);
        grid.setText(r, QStringLiteral("JnlDate"), line.date);
        grid.setText(r, QStringLiteral("Debit"), line.debit);
        grid.setText(r, QStringLiteral("Credit"), line.credit);
        grid.setText(r, QStringLiteral("Tag"), line.summary ? QStringLiteral("-1") : QStringLiteral("0"));
        lines.push_back(line);
        return r;
    }

    // The figures of \a year straight from the lines: the first data row is
    // the opening row, which moves the balance and nothing else.
    void expectFigures(const MonthTotals &totals, int year, bool creditBook = false) const
    {
        ASSERT_EQ(totals.year(), year);
        for (int m = 1; m <= 12; ++m) {
            const QDate end = QDate(year, m, 1).addMonths(1).addDays(-1);
            Currency in, out, balance;
            int first = -1;
            for (std::size_t i = 0; i < lines.size(); ++i) {
                const Line &l = lines[i];
                const QDate day = QDate::fromString(l.date, Qt::ISODate);
                if (l.summary || !day.isValid())
                    continue;
                const int row = grid.fixedRows() + int(i);
                if (day <= end)
                    balance = creditBook ? balance + money(l.credit) - money(l.debit)
                                         : balance + money(l.debit) - money(l.credit);
                if (i == 0 || day.year() != year || day.month() != m)
                    continue;
                // A 贷 book takes in on its credit side.
                in = in + money(creditBook ? l.credit : l.debit);
                out = out + money(creditBook ? l.debit : l.credit);
                if (first < 0)
                    first = row;
            }
            const MonthTotals::Month &got = totals.month(m);
            EXPECT_EQ(got.receipts, in) << "month " << m;
            EXPECT_EQ(got.payments, out) << "month " << m;
            EXPECT_EQ(got.closing, balance) << "month " << m;
            EXPECT_EQ(got.firstRow, first) << "month " << m;
        }
    }

    kx::Book book;
    kx::Sheet &grid = book.sheet();
    std::vector<Line> lines;
};

} // namespace

TEST_F(MonthFigures, MonthsOfOneYearWithSummaryRowsUndatedRowsAndAQuietMonth)
{
    add({"2026-01-01", "1000", ""});                // opening: balance only
    const int jan = add({"2026-01-05", "250.50", ""});
    add({"2026-01-20", "", "100.25"});
    add({"2026-01-31", "", "", true});              // summary: counts nothing
    add({"", "999", "999"});                       // no day: passed over
    const int mar = add({"2026-03-02", "", "40"});   // February has no records
    add({"2026-03-31", "", "", true});
    add({"2026-12-31", "0.0001", ""});

    const MonthTotals totals(book);
    expectFigures(totals, 2026);
    EXPECT_EQ(totals.month(1).firstRow, jan);
    EXPECT_EQ(totals.month(1).receipts, money("250.50")) << "the opening row is no receipt";
    EXPECT_EQ(totals.month(2).closing, money("1150.25")) << "a month without records carries the balance";
    EXPECT_EQ(totals.month(2).firstRow, -1);
    EXPECT_EQ(totals.month(3).firstRow, mar);
    EXPECT_EQ(totals.month(11).closing, money("1110.25"));
    EXPECT_EQ(totals.month(12).closing, money("1110.2501"));
    EXPECT_EQ(totals.opening(), Currency());
    EXPECT_EQ(totals.month(0).firstRow, -1);
    EXPECT_EQ(totals.month(13).receipts, Currency());
}

TEST_F(MonthFigures, ABookOfTwoYearsShowsTheLaterOneWithTheEarlierBroughtIn)
{
    add({"2025-01-01", "500", ""});
    add({"2025-06-10", "300", ""});
    add({"2025-11-30", "", "120"});
    add({"2025-12-31", "", "", true});
    add({"2026-02-14", "70", "20"});
    // A row typed out of order, dated in the earlier year, still counts there.
    add({"2025-12-20", "", "5"});

    const MonthTotals totals(book);
    expectFigures(totals, 2026);
    EXPECT_EQ(totals.opening(), money("675"));
    EXPECT_EQ(totals.month(1).closing, money("675"));
    EXPECT_EQ(totals.month(2).closing, money("725"));
    EXPECT_EQ(totals.month(2).receipts, money("70"));
    EXPECT_EQ(totals.month(2).payments, money("20"));
}

TEST_F(MonthFigures, ACreditBookCountsItsBalanceOnTheCreditSide)
{
    book.state().book.direction = kx::BalanceSide::Credit;
    add({"2026-01-01", "", "800"});
    add({"2026-04-03", "100", ""});
    add({"2026-04-09", "", "30"});
    const MonthTotals totals(book);
    expectFigures(totals, 2026, true);
    EXPECT_EQ(totals.month(4).closing, money("730"));
    EXPECT_EQ(totals.month(4).receipts, money("30")) << "the credit side takes in";
    EXPECT_EQ(totals.month(4).payments, money("100"));
}

TEST_F(MonthFigures, SumsPastWhatMoneyHoldsAreInvalidAndTheExactBalanceComesBack)
{
    add({"2026-01-01", "", ""});
    add({"2026-05-02", "900000000000000", ""});
    add({"2026-05-03", "900000000000000", ""});
    add({"2026-06-04", "", "900000000000000"});
    const MonthTotals totals(book);
    EXPECT_FALSE(totals.month(5).receipts.isValid());
    EXPECT_FALSE(totals.month(5).closing.isValid());
    EXPECT_EQ(totals.month(6).closing, money("900000000000000")) << "the sum is kept exact, not wrapped";
    EXPECT_EQ(totals.month(6).payments, money("900000000000000"));
}

TEST_F(MonthFigures, ABookWithoutDaysHasNoYear)
{
    add({"", "10", ""});
    const MonthTotals totals(book);
    EXPECT_EQ(totals.year(), 0);
    for (int m = 1; m <= 12; ++m) {
        EXPECT_EQ(totals.month(m).receipts, Currency());
        EXPECT_EQ(totals.month(m).firstRow, -1);
    }
}

TEST_F(MonthFigures, RandomBooksAgreeWithSumsRowByRow)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::global()->generate();
    std::cout << "MonthFigures seed " << seed << " (KX_SEED replays)" << std::endl;
    QRandomGenerator random(seed);
    for (int round = 0; round < 20; ++round) {
        grid.setRows(grid.fixedRows());
        lines.clear();
        // Mostly in date order, now and then a row out of order or across
        // a year; amounts with fractions, whole and zero.
        QDate day(2024 + int(random.bounded(2)), 1 + int(random.bounded(12)), 1);
        const int rows = 1 + int(random.bounded(300));
        int latest = 0;
        for (int i = 0; i < rows; ++i) {
            day = day.addDays(int(random.bounded(4)));
            QDate at = random.bounded(10) == 0 ? day.addDays(-int(random.bounded(400))) : day;
            Line l;
            const int kind = int(random.bounded(20));
            l.date = kind == 0 ? QString() : at.toString(Qt::ISODate);
            l.summary = kind == 1;
            const auto amount = [&] {
                const int pick = int(random.bounded(4));
                return pick == 0 ? QString() : pick == 1 ? QString::number(random.bounded(1000))
                                                         : QString::number(random.bounded(100000) / 100.0, 'f', 2);
            };
            l.debit = amount();
            l.credit = amount();
            if (!l.date.isEmpty() && !l.summary)
                latest = std::max(latest, at.year());
            add(l);
        }
        const MonthTotals totals(book);
        SCOPED_TRACE(testing::Message() << "round " << round << " seed " << seed);
        if (latest == 0)
            EXPECT_EQ(totals.year(), 0);
        else
            expectFigures(totals, latest);
    }
}
