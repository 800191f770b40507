// The balance chart in the side panel, on real widgets: its bars and line
// show the book's month figures, follow what is typed, take the cursor to a
// clicked month, give the panel up to the host's widgets, and do not outlive
// the control.
#include "QtPrinters.h"
#include "editing/EditingBook.h"
#include "support/SampleJournal.h"

#include "control/BalanceChart.h"
#include "ledger/MonthTotals.h"

#include <kxjournal/GridView.h>

#include <QApplication>
#include <QBarCategoryAxis>
#include <QBarSet>
#include <QChart>
#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QLineSeries>
#include <QPointer>
#include <QTest>
#include <gtest/gtest.h>

using kx::BalanceChart;
using kx::Currency;
using kx::MonthTotals;

namespace {

BalanceChart *chartOf(kx::Journal &journal)
{
    return journal.findChild<BalanceChart *>(QStringLiteral("balanceChart"));
}

void showSide(kx::Journal &journal, bool on = true)
{
    journal.DoCommand(QStringLiteral("SideVisible"), on ? QStringLiteral("True") : QStringLiteral("False"));
    QApplication::processEvents();
}

// The control shown with its side panel open; its chart.
BalanceChart *shownChart(kx::Journal &journal)
{
    journal.resize(1200, 600);
    journal.show();
    showSide(journal);
    return chartOf(journal);
}

// The drawn figures against the book's own, month by month.
void expectShows(const BalanceChart &chart, const MonthTotals &totals)
{
    ASSERT_EQ(chart.receipts()->count(), 12);
    ASSERT_EQ(chart.balances()->count(), 12);
    EXPECT_EQ(chart.year(), totals.year());
    EXPECT_EQ(chart.chart()->title(), QStringLiteral("%1年余额与收支").arg(totals.year()));
    for (int m = 1; m <= 12; ++m) {
        const MonthTotals::Month &month = totals.month(m);
        EXPECT_EQ(chart.receipts()->at(m - 1), month.receipts.toDouble()) << "month " << m;
        EXPECT_EQ(chart.payments()->at(m - 1), month.payments.toDouble()) << "month " << m;
        EXPECT_EQ(chart.balances()->at(m - 1), QPointF(m - 1, month.closing.toDouble())) << "month " << m;
        EXPECT_EQ(chart.firstRowOf(m), month.firstRow) << "month " << m;
    }
}

// Notes, at each paint of the grid, whether the chart still waited then.
struct PaintWatch : QObject {
    explicit PaintWatch(const BalanceChart &chart) : chart(chart) {}
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && paints++ == 0)
            staleAtFirstPaint = chart.isStale();
        return false;
    }
    const BalanceChart &chart;
    int paints = 0;
    bool staleAtFirstPaint = false;
};

Currency money(const char *text)
{
    return Currency::fromText(QString::fromLatin1(text)).value();
}

} // namespace

TEST(BalanceChart, ALoadedYearIsDrawnAsTheBookSumsIt)
{
    kxtest::SampleJournal s(1500);
    s.journal.resize(1200, 600);
    s.journal.show();
    BalanceChart *chart = chartOf(s.journal);
    ASSERT_NE(chart, nullptr);
    EXPECT_FALSE(chart->isVisible()) << "the side panel starts hidden";
    EXPECT_TRUE(chart->isStale()) << "nothing is worked out out of sight";
    showSide(s.journal);
    ASSERT_TRUE(chart->isVisible());
    EXPECT_FALSE(chart->isStale());
    const MonthTotals totals(chart->book());
    ASSERT_EQ(totals.year(), 2025);
    int months = 0;
    for (int m = 1; m <= 12; ++m)
        months += totals.month(m).firstRow >= 0;
    EXPECT_GE(months, 10) << "a sample year has records in most months";
    expectShows(*chart, totals);
    const QStringList names = qobject_cast<QBarCategoryAxis *>(chart->chart()->axes(Qt::Horizontal).value(0))
                                  ->categories();
    EXPECT_EQ(names.value(0), QStringLiteral("1月"));
    EXPECT_EQ(names.value(11), QStringLiteral("12月"));
    EXPECT_EQ(chart->receipts()->label(), QStringLiteral("收入"));
    EXPECT_EQ(chart->payments()->label(), QStringLiteral("支出"));
}

TEST(BalanceChart, TypingUndoAndAHiddenPanelAreFollowed)
{
    kxtest::EditingBook b;
    BalanceChart *chart = shownChart(*b.journal);
    ASSERT_NE(chart, nullptr);
    // Opening 1000 dated the year before, then +500, −200, −50 in January.
    EXPECT_EQ(chart->year(), 2025);
    EXPECT_EQ(chart->receipts()->at(0), 500);
    EXPECT_EQ(chart->payments()->at(0), 250);
    EXPECT_EQ(chart->balances()->at(11).y(), 1250);

    QApplication::processEvents();
    PaintWatch watch(*chart);
    b.journal->gridView()->viewport()->installEventFilter(&watch);
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("600.5")));
    EXPECT_TRUE(chart->isStale()) << "the recompute waits for the event loop";
    QApplication::processEvents();
    b.journal->gridView()->viewport()->removeEventFilter(&watch);
    EXPECT_GT(watch.paints, 0);
    EXPECT_TRUE(watch.staleAtFirstPaint) << "the grid shows what was typed before the chart is worked out";
    EXPECT_FALSE(chart->isStale());
    EXPECT_EQ(chart->receipts()->at(0), 600.5);
    EXPECT_EQ(chart->balances()->at(0).y(), 1350.5);
    expectShows(*chart, MonthTotals(chart->book()));

    // A record typed in March on the empty last row.
    const int last = b.grid->rows() - 1;
    ASSERT_TRUE(b.type(last, "ShowName", QStringLiteral("2025-03-04")));
    ASSERT_TRUE(b.type(last, "Credit", QStringLiteral("80")));
    QApplication::processEvents();
    EXPECT_EQ(chart->payments()->at(2), 80);
    EXPECT_EQ(chart->balances()->at(1).y(), 1350.5) << "February carries January's balance";
    EXPECT_EQ(chart->balances()->at(2).y(), 1270.5);
    EXPECT_EQ(chart->firstRowOf(3), last);

    ASSERT_TRUE(b.journal->undo());
    QApplication::processEvents();
    EXPECT_EQ(chart->payments()->at(2), 0);
    EXPECT_EQ(chart->balances()->at(2).y(), 1350.5);
    expectShows(*chart, MonthTotals(chart->book()));

    // Out of sight nothing is worked out; shown again, it catches up.
    showSide(*b.journal, false);
    ASSERT_TRUE(b.type(3, "Credit", QStringLiteral("300")));
    QApplication::processEvents();
    EXPECT_TRUE(chart->isStale());
    EXPECT_EQ(chart->payments()->at(0), 250);
    showSide(*b.journal);
    EXPECT_FALSE(chart->isStale());
    EXPECT_EQ(chart->payments()->at(0), 350);
    const MonthTotals totals(chart->book());
    EXPECT_EQ(totals.month(1).payments, money("350"));
    expectShows(*chart, totals);

    // A credit book draws its balance on the credit side.
    b.journal->setDirection(QStringLiteral("贷"));
    QApplication::processEvents();
    EXPECT_EQ(chart->balances()->at(0).y(), -1250.5);
    expectShows(*chart, MonthTotals(chart->book()));
}

TEST(BalanceChart, AClickedMonthTakesTheCursorToItsFirstRecord)
{
    kxtest::SampleJournal s(1500);
    s.journal.resize(1200, 600);
    s.journal.show();
    showSide(s.journal);
    BalanceChart *chart = chartOf(s.journal);
    ASSERT_NE(chart, nullptr);
    const MonthTotals totals(chart->book());
    const int june = totals.month(6).firstRow, january = totals.month(1).firstRow;
    ASSERT_GT(june, january);
    ASSERT_GT(january, 0);
    kx::GridModel *grid = s.journal.Grid();
    grid->setCursor(grid->rows() - 1, grid->fixedCols());

    Q_EMIT chart->payments()->clicked(5);
    EXPECT_EQ(grid->row(), june);
    QApplication::processEvents();
    kx::GridView *view = s.journal.gridView();
    EXPECT_TRUE(view->viewport()->rect().intersects(view->visualRect(grid->indexAt(june, grid->col()))))
        << "the row is scrolled into sight";

    // The month's name under the plot chooses it too.
    chart->resize(500, 400);
    QApplication::processEvents();
    const QRectF plot = chart->chart()->plotArea();
    const QPoint under = chart->mapFromScene(QPointF(plot.left() + plot.width() / 24, plot.bottom() + 8));
    QTest::mouseClick(chart->viewport(), Qt::LeftButton, Qt::NoModifier, under);
    EXPECT_EQ(grid->row(), january);
}

TEST(BalanceChart, AHostWidgetInTheSidePanelTakesThePlaceOfTheChart)
{
    kxtest::EditingBook b;
    BalanceChart *chart = shownChart(*b.journal);
    ASSERT_NE(chart, nullptr);
    auto *panel = b.journal->findChild<QFrame *>(QStringLiteral("C1EDesk"));
    ASSERT_NE(panel, nullptr);
    ASSERT_TRUE(chart->isVisible());

    auto *mine = new QLabel(QStringLiteral("主机的部件"));
    panel->layout()->addWidget(mine);
    QApplication::processEvents();
    EXPECT_FALSE(chart->isVisible()) << "the host's widgets have the panel to themselves";
    EXPECT_TRUE(mine->isVisible());
    // Out of sight the chart works nothing out.
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("700")));
    QApplication::processEvents();
    EXPECT_TRUE(chart->isStale());

    // A second host widget, made straight into the panel; the chart stays
    // away until the last one has gone.
    auto *other = new QLabel(QStringLiteral("另一个"), panel);
    delete mine;
    EXPECT_FALSE(chart->isVisible());
    delete other;
    QApplication::processEvents();
    EXPECT_TRUE(chart->isVisible());
    EXPECT_EQ(chart->receipts()->at(0), 700) << "shown again, it catches up";
}

TEST(BalanceChart, TheHostDeletingTheControlWhileARecomputeWaitsIsSafe)
{
    for (bool later : {true, false}) {
        kxtest::EditingBook b;
        b.journal->show();
        showSide(*b.journal);
        QPointer<BalanceChart> chart = chartOf(*b.journal);
        ASSERT_FALSE(chart.isNull());
        ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("900")));
        ASSERT_TRUE(chart->isStale());
        kx::Journal *journal = b.journal.release();
        if (later)
            journal->deleteLater();
        else
            delete journal;
        QApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
        EXPECT_TRUE(chart.isNull()) << (later ? "deleteLater" : "delete");
    }
}

// A host may keep a tag of its own on the grid: the chart still follows.
TEST(BalanceChart, AHostsOwnGridTagHoldsTheChartBackOnlyAWhile)
{
    kxtest::EditingBook b;
    BalanceChart *chart = shownChart(*b.journal);
    ASSERT_NE(chart, nullptr);
    b.journal->Grid()->setTag(QStringLiteral("宿主的标记"));
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("600.5")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !chart->isStale(); }, 3000));
    EXPECT_EQ(chart->receipts()->at(0), 600.5);
}
