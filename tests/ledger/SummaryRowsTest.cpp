#include "QtPrinters.h"

#include <kxjournal/Journal.h>
#include "grid/Sheet.h"

#include <QSignalSpy>
#include <gtest/gtest.h>

using kx::Journal;

namespace {

// Eight dated records in January, keys 101…108, three of them linked.
class SummaryRowsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        j.setLockedForeColor(Qt::gray);
        j.setAccountFormat(QStringLiteral("0.00"));
        g = kx::Sheet::of(j.Grid());
        g->setRows(9);
        for (int r = 1; r <= 8; ++r) {
            g->setText(r, QStringLiteral("JnlDate"), QStringLiteral("2026-01-%1").arg(r, 2, 10, QLatin1Char('0')));
            g->setText(r, QStringLiteral("ShowName"), QStringLiteral("2026年01月%1日").arg(r, 2, 10, QLatin1Char('0')));
            g->setText(r, QStringLiteral("Debit"), QString::number(r * 10));
            g->setText(r, QStringLiteral("RecID"), QString::number(100 + r));
            g->setText(r, QStringLiteral("DirID"), r % 3 == 0 ? QStringLiteral("7") : QString());
        }
    }

    QString locks() const
    {
        QString s;
        for (int r = 1; r < g->rows(); ++r)
            s += g->text(r, QStringLiteral("Locked")) == QLatin1String("1") ? QLatin1Char('L') : QLatin1Char('.');
        return s;
    }

    Journal j;
    kx::Sheet *g = nullptr;
};

} // namespace

TEST_F(SummaryRowsTest, InsertingLocksEverythingAboveAndKeepsTheLastRow)
{
    QStringList said;
    QObject::connect(&j, &Journal::Notify, [&](const QString &m, bool) { said << m; });
    QSignalSpy changed(&j, &Journal::DataChanged);
    EXPECT_FALSE(j.InsSumRow(1)) << "not below the opening row";
    EXPECT_FALSE(j.InsSumRow(0)) << "the current row is the first data row";
    EXPECT_TRUE(said.isEmpty());

    ASSERT_TRUE(j.InsSumRow(5));
    EXPECT_EQ(g->rows(), 10);
    EXPECT_EQ(j.LastSumRow(), 6);
    EXPECT_EQ(locks(), QStringLiteral("LLLLLL..."));
    EXPECT_EQ(g->text(6, QStringLiteral("Explain")), QStringLiteral("2026年01月05日小结"));
    EXPECT_EQ(g->text(6, QStringLiteral("ShowName")), QStringLiteral("2026年01月05日"));
    EXPECT_EQ(g->text(6, QStringLiteral("JnlDate")), QStringLiteral("2026-01-05"));
    EXPECT_EQ(g->text(6, QStringLiteral("Tag")), QStringLiteral("-1"));
    EXPECT_TRUE(g->isSubtotal(6));
    EXPECT_TRUE(g->cellBold(6, g->colIndex(QStringLiteral("Explain"))));
    EXPECT_EQ(g->cellForeColor(3, g->colIndex(QStringLiteral("Explain"))), QColor(Qt::gray));
    EXPECT_EQ(g->text(6, QStringLiteral("Debit")), QStringLiteral("150.00\r\n150.00")) << "totals come from the recalculation";
    EXPECT_TRUE(j.IsDirty());
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(said, QStringList{QStringLiteral("已添加汇总行")});

    ASSERT_TRUE(j.InsSumRow(3));
    EXPECT_EQ(j.LastSumRow(), 7) << "a sub-total above the last one leaves it naming the same row, one lower";
    EXPECT_TRUE(g->isSubtotal(7));
    EXPECT_EQ(locks(), QStringLiteral("LLLLLLL...")) << "rows 1 to 4 are locked again, the rest as they were";

    bool cancel = true;
    QObject::connect(&j, &Journal::CommandExecute, [&](const QString &name, bool &c) {
        if (name == QLatin1String("InsertSumRow"))
            c = cancel;
    });
    EXPECT_FALSE(j.InsSumRow(8));
    EXPECT_EQ(g->rows(), 11);
}

TEST_F(SummaryRowsTest, RemovingTheLastSummaryRowUnlocksDownToThePreviousOne)
{
    ASSERT_TRUE(j.InsSumRow(3)); // row 4
    ASSERT_TRUE(j.InsSumRow(7)); // row 8
    EXPECT_EQ(j.LastSumRow(), 8);
    EXPECT_EQ(locks(), QStringLiteral("LLLLLLLL.."));

    EXPECT_FALSE(j.RemoveSumRow(5)) << "a record row is not a summary row";
    EXPECT_FALSE(j.RemoveSumRow(1));
    QStringList said;
    QObject::connect(&j, &Journal::Notify, [&](const QString &m, bool) { said << m; });
    ASSERT_TRUE(j.RemoveSumRow(8));
    EXPECT_EQ(j.LastSumRow(), 4);
    EXPECT_EQ(locks(), QStringLiteral("LLLL.....")) << "unlocked down to the earlier summary row";
    EXPECT_EQ(said, QStringList{QStringLiteral("已删除汇总行。")});

    ASSERT_TRUE(j.RemoveSumRow(4));
    EXPECT_EQ(j.LastSumRow(), 0);
    EXPECT_EQ(locks(), QStringLiteral("L.......")) << "the opening row stays locked";
    EXPECT_EQ(g->text(8, QStringLiteral("Balance")), QStringLiteral("360")) << "recalculated from the top";
}

TEST_F(SummaryRowsTest, StatisticsCountsSummariesLessOneRecordsAndLinks)
{
    EXPECT_EQ(j.Statistics(), QStringLiteral("汇总共 -1 笔；\r\n记录共 8 笔；\r\n已生成凭证 2 笔"));
    j.InsSumRow(4);
    g->setText(2, QStringLiteral("RecID"), QStringLiteral("0"));
    EXPECT_EQ(j.Statistics(), QStringLiteral("汇总共 0 笔；\r\n记录共 7 笔；\r\n已生成凭证 2 笔"));
}
