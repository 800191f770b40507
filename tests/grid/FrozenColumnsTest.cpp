// The frozen leading columns are a second view on the grid: whatever the
// rows do, a pixel line across the grid shows one and the same row on both
// sides of the frozen edge.
#include "QtPrinters.h"
#include "grid/GridViewPrivate.h"

#include <grid/CellArray.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>

#include <QHeaderView>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>

using kx::Sheet;
using kx::GridView;

namespace {

constexpr int SumHeight = 38; // a summary row: two lines of totals

// The first pixel line of the main view's viewport where the frozen part
// shows another row (or none), at the current scroll position.
::testing::AssertionResult sameRowOnEveryLine(GridView &view)
{
    QTableView *frozen = kx::GridViewPrivate::get(&view).frozenView();
    if (!frozen)
        return ::testing::AssertionFailure() << "no frozen part";
    if (frozen->verticalScrollBar()->value() != view.verticalScrollBar()->value())
        return ::testing::AssertionFailure() << "scrolled to " << frozen->verticalScrollBar()->value()
                                             << " beside " << view.verticalScrollBar()->value();
    const int x = frozen->columnViewportPosition(0) + 1;
    for (int y = 0; y < view.viewport()->height(); ++y) {
        const QPoint there = frozen->viewport()->mapFrom(&view, view.viewport()->mapTo(&view, QPoint(x, y)));
        if (there.y() < 0 || there.y() >= frozen->viewport()->height())
            return ::testing::AssertionFailure() << "line " << y << " lies outside the frozen part";
        const int main = view.rowAt(y);
        const int side = frozen->rowAt(there.y());
        if (main != side)
            return ::testing::AssertionFailure()
                   << "line " << y << " (scrolled to " << view.verticalScrollBar()->value() << "): row " << side
                   << " in the frozen part beside row " << main;
        if (main >= 0 && frozen->indexAt(QPoint(x, there.y())) != view.model()->index(main, 0))
            return ::testing::AssertionFailure() << "line " << y << ": the frozen cell is not row " << main << "'s";
    }
    return ::testing::AssertionSuccess();
}

// The same at the top, around each of \a rows, half way and at the bottom.
::testing::AssertionResult agreeWhileScrolling(GridView &view, std::initializer_list<int> rows)
{
    QCoreApplication::processEvents();
    QScrollBar *bar = view.verticalScrollBar();
    std::vector<int> stops{0, bar->maximum() / 2, bar->maximum()};
    for (int row : rows)
        for (int before : {0, 3})
            stops.push_back(std::max(0, view.verticalHeader()->visualIndex(row - 1) - before));
    for (int stop : stops) {
        bar->setValue(stop);
        const ::testing::AssertionResult agree = sameRowOnEveryLine(view);
        if (!agree)
            return agree;
    }
    bar->setValue(0);
    return ::testing::AssertionSuccess();
}

class FrozenColumnsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        grid.setCols(6);
        for (int c = 1; c < 6; ++c)
            grid.setText(0, c, QString(QChar(u'A' + c - 1)));
        fill(120);
        view.setGridModel(&grid);
        view.resize(420, 300);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    void fill(int rows)
    {
        kx::CellArray a(rows, 6);
        for (int r = 0; r < rows; ++r)
            for (int c = 1; c < 6; ++c)
                a.setText(r, c, QStringLiteral("r%1c%2").arg(r + 1).arg(c));
        grid.loadArray(std::move(a));
    }

    // Summary rows after each ten, and two rows hidden.
    void markRows()
    {
        for (int r = 10; r < grid.rows(); r += 10)
            grid.setRowHeight(r, SumHeight);
        grid.setRowHidden(15, true);
        grid.setRowHidden(31, true);
    }

    Sheet grid;
    GridView view;
};

} // namespace

TEST_F(FrozenColumnsTest, RowsLineUpWhenTheFrozenPartComesAfterTheHeights)
{
    markRows();
    view.setFrozenColumns(2);
    ASSERT_NE(kx::GridViewPrivate::get(&view).frozenView(), nullptr);
    EXPECT_EQ(kx::GridViewPrivate::get(&view).frozenView()->rowHeight(9), SumHeight);
    EXPECT_TRUE(kx::GridViewPrivate::get(&view).frozenView()->isRowHidden(14));
    EXPECT_TRUE(agreeWhileScrolling(view, {10, 30, 31, 100}));
}

TEST_F(FrozenColumnsTest, RowsLineUpThroughEveryChangeOfTheRows)
{
    view.setFrozenColumns(2);
    markRows();
    EXPECT_TRUE(agreeWhileScrolling(view, {10, 30, 100})) << "heights set after freezing";

    // A column's width changes (as the fitting after a load does).
    grid.setColWidth(1, 91);
    grid.setColWidth(4, 140);
    EXPECT_TRUE(agreeWhileScrolling(view, {10, 30, 100})) << "after column widths";

    // A new book: the rows come back all at once, then get their marks.
    fill(150);
    markRows();
    grid.setColWidth(2, 77);
    EXPECT_TRUE(agreeWhileScrolling(view, {10, 30, 140})) << "after a reload";

    // Rows inserted above the marks and removed below them.
    grid.insertRowsAt(5, 3);
    grid.setRowHeight(6, SumHeight);
    grid.removeRowsAt(50, 2);
    grid.setRowHidden(70, true);
    grid.moveRowTo(33, 3); // a summary row dragged up
    EXPECT_TRUE(agreeWhileScrolling(view, {3, 6, 13, 70, 140})) << "after inserts, removes and a move";

    // A hidden row shows again; a summary row goes back to one line.
    ASSERT_TRUE(grid.isRowHidden(19));
    ASSERT_EQ(grid.rowHeight(14), SumHeight);
    grid.setRowHidden(19, false);
    grid.setRowHeight(14, -1);
    EXPECT_TRUE(agreeWhileScrolling(view, {14, 19, 34})) << "after showing a row";

    // Another font: every row's default height changes.
    QFont font = view.font();
    font.setPointSize(font.pointSize() + 5);
    view.setFont(font);
    grid.setDefaultRowHeight(grid.defaultRowHeight() + 7);
    EXPECT_TRUE(agreeWhileScrolling(view, {13, 33, 140})) << "after a new default height";

    // The user drags a row taller in the row header.
    view.verticalHeader()->resizeSection(24, 61);
    EXPECT_EQ(kx::GridViewPrivate::get(&view).frozenView()->rowHeight(24), 61);
    EXPECT_TRUE(agreeWhileScrolling(view, {25, 140})) << "after dragging a row";

    // Redraw off, then on: the layout is read again in one go.
    grid.setRedraw(false);
    grid.setRowHeight(40, SumHeight + 20);
    grid.setRowHidden(41, true);
    grid.setRedraw(true);
    EXPECT_TRUE(agreeWhileScrolling(view, {40, 42, 140})) << "after redraw comes back";
}

TEST_F(FrozenColumnsTest, FreezingAnotherCountKeepsTheRowsInStep)
{
    markRows();
    view.setFrozenColumns(1);
    view.setFrozenColumns(3);
    EXPECT_TRUE(agreeWhileScrolling(view, {10, 30, 100}));
    view.setFrozenColumns(0);
    EXPECT_EQ(kx::GridViewPrivate::get(&view).frozenView(), nullptr);
    view.setFrozenColumns(2);
    EXPECT_TRUE(agreeWhileScrolling(view, {10, 30, 100}));
}
