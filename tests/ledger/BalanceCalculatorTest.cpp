#include "QtPrinters.h"

#include "ledger/Book.h"
#include "ledger/LedgerState.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/ColumnFit.h"
#include "ledger/ColumnModel.h"

#include "grid/Sheet.h"
#include <kxjournal/Journal.h>

#include <QAction>
#include <QMenu>
#include <QSignalSpy>
#include <gtest/gtest.h>

using kx::Sheet;

namespace {

// A laid-out journal grid; rows are added as date, debit, credit, forex, tag.
class Balances : public ::testing::Test
{
protected:
    void SetUp() override
    {
        kx::ColumnModel::define(book);
        state.fields.accountFormat = QStringLiteral("0.00");
    }

    int add(const char *date, const char *debit, const char *credit, const char *forex = "", const char *tag = "0")
    {
        const int r = grid.rows();
        grid.setRows(r + 1);
        grid.setText(r, QStringLiteral("JnlDate"), QString::fromLatin1(date));
        grid.setText(r, QStringLiteral("Debit"), QString::fromLatin1(debit));
        grid.setText(r, QStringLiteral("Credit"), QString::fromLatin1(credit));
        grid.setText(r, QStringLiteral("Forex"), QString::fromLatin1(forex));
        grid.setText(r, QStringLiteral("Tag"), QString::fromLatin1(tag));
        return r;
    }

    QString cell(int row, const char *key) const { return grid.text(row, QString::fromLatin1(key)); }
    void calculate(int start) { kx::BalanceCalculator(book).calculate(start); }

    kx::Book book;
    Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
};

} // namespace

TEST_F(Balances, HeaderOnlyGridIsLeftAlone)
{
    calculate(1);
    EXPECT_EQ(grid.rows(), 1);
    EXPECT_EQ(grid.tag(), QString());
}

TEST_F(Balances, RunsAcrossBlankAndSummaryRowsWithPeriodAndCumulativeTotals)
{
    state.book.direction = kx::BalanceSide::Debit;
    add("2026-01-01", "1000", "");                       // 1 opening
    add("2026-01-05", "250.50", "");                     // 2
    add("", "999", "999");                               // 3 blank: no balance, no effect
    add("2026-01-20", "", "100.25");                     // 4
    const int sum = add("2026-01-31", "", "", "", "-1"); // 5 sub-total
    add("2026-02-03", "10", "");                         // 6
    const int sum2 = add("2026-02-28", "", "", "", "-1");

    calculate(1);
    EXPECT_EQ(cell(1, "Balance"), QStringLiteral("1000"));
    EXPECT_EQ(cell(2, "Balance"), QStringLiteral("1250.5"));
    EXPECT_EQ(cell(3, "Balance"), QString());
    EXPECT_EQ(cell(3, "Dir"), QString());
    EXPECT_EQ(cell(4, "Balance"), QStringLiteral("1150.25"));
    EXPECT_EQ(cell(4, "Dir"), QStringLiteral("借"));
    EXPECT_EQ(cell(sum, "Debit"), QStringLiteral("1250.50\r\n1250.50"));
    EXPECT_EQ(cell(sum, "Credit"), QStringLiteral("100.25\r\n100.25"));
    EXPECT_EQ(cell(sum, "Balance"), QStringLiteral("1150.25")) << "the balance passes through the summary row";
    EXPECT_EQ(cell(6, "Balance"), QStringLiteral("1160.25"));
    EXPECT_EQ(cell(sum2, "Debit"), QStringLiteral("10.00\r\n1260.50")) << "periods restart, cumulative goes on";
    EXPECT_EQ(cell(sum2, "Credit"), QStringLiteral("0.00\r\n100.25"));
    EXPECT_EQ(grid.cellForeColor(sum, grid.colIndex(QStringLiteral("Debit"))), state.looks.summaryForeColor);
    EXPECT_EQ(grid.tag(), QString()) << "the busy tag is put back";
    EXPECT_TRUE(grid.redraw());
}

TEST_F(Balances, StartsAtTheFirstRowOrTheLastSummaryRowNeverBetween)
{
    state.book.direction = kx::BalanceSide::Debit;
    add("2026-01-01", "100", "");
    add("2026-01-02", "50", "");
    const int sum = add("2026-01-31", "", "", "", "-1");
    add("2026-02-01", "5", "");
    add("2026-02-02", "", "1");
    calculate(1);
    state.lastSumRow = sum;
    // Figures above the anchor change, and so does the anchor's own record of them.
    grid.setText(2, QStringLiteral("Debit"), QStringLiteral("7000"));
    grid.setText(sum, QStringLiteral("Debit"), QStringLiteral("1.00\r\n500.00"));
    grid.setText(sum, QStringLiteral("Credit"), QStringLiteral("0.00\r\n0.00"));

    calculate(5); // asked for a row below the anchor: starts at the anchor and reads it back
    EXPECT_EQ(cell(4, "Balance"), QStringLiteral("505"));
    EXPECT_EQ(cell(5, "Balance"), QStringLiteral("504"));
    EXPECT_EQ(cell(2, "Balance"), QStringLiteral("150")) << "rows above the anchor are not touched";

    grid.setCursor(4, 1);
    calculate(0); // the current row, anchored the same way
    EXPECT_EQ(cell(5, "Balance"), QStringLiteral("504"));

    calculate(1); // from the top everything is rebuilt
    EXPECT_EQ(cell(2, "Balance"), QStringLiteral("7100"));
    EXPECT_EQ(cell(5, "Balance"), QStringLiteral("7104"));
    EXPECT_EQ(cell(sum, "Debit"), QStringLiteral("7100.00\r\n7100.00"));

    state.lastSumRow = 0;
    calculate(4); // no anchor: from the first data row
    EXPECT_EQ(cell(5, "Balance"), QStringLiteral("7104"));
}

// A long balance column is fitted at the widest figure the last pass noted:
// a pass from the last summary row sees only the rows below it, and rows
// inserted above move the figure away from the row noted. Neither may leave
// a wider figure above to be cut.
TEST_F(Balances, TheWidestBalanceNotedStandsForTheWholeColumn)
{
    state.book.direction = kx::BalanceSide::None;  // signed, so a negative figure is the widest
    add("2026-01-01", "100", "");
    const int wide = add("2026-01-02", "", "99999999.99");
    add("2026-01-03", "99999999.99", "");
    for (int i = 0; i < kx::ColumnFit::PeakRange + 100; ++i)
        add("2026-01-10", "1", "");
    const int sum = add("2026-01-31", "", "", "", "-1");
    for (int i = 0; i < 10; ++i)
        add("2026-02-01", "1", "");
    calculate(1);
    state.lastSumRow = sum;
    const int col = grid.colIndex(QStringLiteral("Balance"));
    ASSERT_EQ(cell(wide, "Balance"), QStringLiteral("-99999899.99"));
    const kx::ColumnFit fit(book, [](const QString &text, const QFont &) { return int(text.size()) * 7; });
    const int widest = fit.figureWidth(col, wide, wide);
    EXPECT_EQ(fit.figureWidth(col), widest) << "after a pass over the whole book";

    grid.setText(sum + 2, QStringLiteral("Debit"), QStringLiteral("2"));
    calculate(sum + 2);
    ASSERT_EQ(cell(sum + 2, "Balance"), QStringLiteral("%1").arg(100 + kx::ColumnFit::PeakRange + 100 + 3));
    EXPECT_EQ(fit.figureWidth(col), widest) << "after a pass from the summary row";

    grid.insertRowAt(2);
    ASSERT_EQ(cell(wide + 1, "Balance"), QStringLiteral("-99999899.99"));
    EXPECT_EQ(fit.figureWidth(col), widest) << "after a row was inserted above the widest figure";
}

// A pass tells views about every worked-out column the grid has, in one
// signal, also on a grid that lacks one of them.
TEST_F(Balances, APassAnnouncesTheBalanceColumnsItWrote)
{
    grid.setColKey(grid.colIndex(QStringLiteral("Dir")), QStringLiteral("NoDirection"));
    add("2026-01-01", "100", "");
    add("2026-01-02", "5", "");
    QSignalSpy changed(&grid, &QAbstractItemModel::dataChanged);
    calculate(1);
    ASSERT_EQ(changed.count(), 1);
    const int balance = grid.colIndex(QStringLiteral("Balance"));
    const int fx = grid.colIndex(QStringLiteral("fxBalance"));
    const QModelIndex from = changed.at(0).at(0).toModelIndex(), to = changed.at(0).at(1).toModelIndex();
    EXPECT_LE(grid.gridCol(from), std::min(balance, fx));
    EXPECT_GE(grid.gridCol(to), std::max(balance, fx));
    EXPECT_LE(grid.gridRow(from), 1);
    EXPECT_GE(grid.gridRow(to), 2);
}

TEST_F(Balances, DirectionDecidesSignAndHighlight)
{
    add("2026-01-01", "", "30");
    add("2026-01-02", "", "20");
    const int bal = grid.colIndex(QStringLiteral("Balance"));
    state.book.direction = kx::BalanceSide::Credit;
    calculate(1);
    EXPECT_EQ(cell(2, "Balance"), QStringLiteral("50"));
    EXPECT_EQ(cell(2, "Dir"), QStringLiteral("贷"));
    EXPECT_EQ(grid.cellForeColor(2, bal), state.looks.highlightForeColor);

    state.book.direction = kx::BalanceSide::Debit;
    calculate(1);
    EXPECT_EQ(cell(2, "Balance"), QStringLiteral("50")) << "the same magnitude";
    EXPECT_FALSE(grid.cellForeColor(2, bal).isValid()) << "in the normal colour";

    state.book.direction = kx::BalanceSide::None;
    calculate(1);
    EXPECT_EQ(cell(2, "Balance"), QStringLiteral("-50")) << "no fixed direction: signed";
    EXPECT_EQ(cell(2, "Dir"), QString());

    grid.setText(1, QStringLiteral("Debit"), QStringLiteral("100"));
    grid.setText(1, QStringLiteral("Credit"), QString());
    state.book.direction = kx::BalanceSide::Debit;
    calculate(1);
    EXPECT_EQ(cell(1, "Balance"), QStringLiteral("100"));
    EXPECT_EQ(grid.cellForeColor(1, bal), state.looks.highlightForeColor);
}

TEST_F(Balances, ForeignAmountsGoToTheirSideAndZeroToCredit)
{
    state.book.direction = kx::BalanceSide::Debit;
    add("2026-01-01", "710", "", "100");
    add("2026-01-02", "", "71", "-10");
    add("2026-01-03", "5", "", "0");
    const int sum = add("2026-01-31", "", "", "", "-1");
    add("2026-02-01", "", "", "-0.5");
    const int sum2 = add("2026-02-28", "", "", "", "-1");
    calculate(1);
    EXPECT_EQ(cell(3, "fxBalance"), QStringLiteral("90"));
    EXPECT_EQ(cell(sum, "Forex"), QStringLiteral("100.00\r\n10.00"));
    EXPECT_EQ(grid.cellData(sum, grid.colIndex(QStringLiteral("Forex"))).toString(), QStringLiteral("100.00\r\n10.00"));
    EXPECT_EQ(cell(sum2, "Forex"), QStringLiteral("0.00\r\n0.50"));
    EXPECT_EQ(grid.cellData(sum2, grid.colIndex(QStringLiteral("Forex"))).toString(), QStringLiteral("100.00\r\n10.50"));

    // Starting again at the second summary row reads the hidden cumulative pair back.
    state.lastSumRow = sum2;
    add("2026-03-01", "", "", "2");
    calculate(sum2 + 1);
    EXPECT_EQ(cell(sum2 + 1, "fxBalance"), QStringLiteral("91.5"));
}

TEST(JournalBalances, DirectionChangeRecalculatesAndMenuReportsIt)
{
    kx::Journal j;
    kx::Sheet *g = kx::Sheet::of(j.Grid());
    g->setRows(3);
    g->setText(1, QStringLiteral("JnlDate"), QStringLiteral("2026-01-01"));
    g->setText(1, QStringLiteral("Credit"), QStringLiteral("40"));
    g->setText(2, QStringLiteral("JnlDate"), QStringLiteral("2026-01-02"));
    g->setText(2, QStringLiteral("Debit"), QStringLiteral("15"));
    g->setCursor(1, 1);
    j.setDirection(QStringLiteral("借方"));
    EXPECT_EQ(j.Direction(), QString());
    EXPECT_EQ(g->text(2, QStringLiteral("Balance")), QString()) << "same value (empty): nothing runs";
    j.setDirection(QStringLiteral("贷"));
    EXPECT_EQ(g->text(2, QStringLiteral("Balance")), QStringLiteral("25"));

    QStringList said;
    QObject::connect(&j, &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    g->setText(2, QStringLiteral("Debit"), QStringLiteral("50"));
    j.menuAction(QStringLiteral("mnuRecalc"))->trigger();
    EXPECT_EQ(g->text(2, QStringLiteral("Balance")), QStringLiteral("10"));
    EXPECT_EQ(said, QStringList{QStringLiteral("已经重新计算全部余额。")});
}
