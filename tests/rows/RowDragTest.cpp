// Dragging a record by its row header within its month, with real mouse
// events on an offscreen view.
#include "editing/EditingBook.h"

#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>

#include <QHeaderView>
#include <QTest>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

struct Drag {
    EditingBook &b;
    kx::GridView *view;
    QWidget *header;

    explicit Drag(EditingBook &book) : b(book), view(book.journal->gridView()), header(view->verticalHeader()->viewport())
    {
        b.journal->resize(900, 500);
        b.journal->show();
    }
    QPoint at(int row) const
    {
        QHeaderView *h = view->verticalHeader();
        const int section = row - b.grid->fixedRows();
        return {h->width() / 2, h->sectionViewportPosition(section) + h->sectionSize(section) / 2};
    }
    // Presses on the header of \a from, moves in steps and lets go at \a to
    // (\a overCells: over the first data column instead of the header).
    void run(int from, int to, bool overCells = false)
    {
        const QPoint start = at(from);
        QPoint end = at(to);
        if (overCells)
            end.rx() = header->width() + 20;
        QTest::mousePress(header, Qt::LeftButton, Qt::NoModifier, start);
        for (int i = 1; i <= 4; ++i) {
            QMouseEvent move(QEvent::MouseMove, start + (end - start) * i / 4, header->mapToGlobal(start + (end - start) * i / 4),
                             Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(header, &move);
            if (i == 2)
                EXPECT_EQ(b.grid->dragMarkRow(), from) << "the dragged row wears its marker";
        }
        QTest::mouseRelease(header, Qt::LeftButton, Qt::NoModifier, end);
        EXPECT_EQ(b.grid->dragMarkRow(), -1);
    }
};

} // namespace

TEST(RowDrag, ARecordMovesWithinItsMonthAndBalancesFollow)
{
    EditingBook b;
    Drag drag(b);
    kxtest::runMenuItem(*b.journal, "mnuRecalc");
    drag.run(4, 2);
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("报销差旅费"));
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("收到货款"));
    EXPECT_EQ(b.grid->amount(2, b.col("Balance")), kx::Currency::fromRaw(9500000));
    EXPECT_EQ(b.grid->amount(4, b.col("Balance")), kx::Currency::fromRaw(12500000));
    for (int r = 2; r <= 4; ++r)
        EXPECT_EQ(b.grid->rowData(r).toInt(), 2) << "stored rows from the upper one down are rewritten: " << r;
    EXPECT_TRUE(b.journal->IsDirty());
    EXPECT_EQ(b.text(2, "JnlDate"), QStringLiteral("2025-01-15")) << "a move never changes a date";

    drag.run(2, 5);
    EXPECT_EQ(b.text(4, "Explain"), QStringLiteral("报销差旅费")) << "dropped on the empty row, it goes last in the month";
    EXPECT_TRUE(b.text(5, "Explain").isEmpty());

    drag.run(4, 2, true);
    EXPECT_EQ(b.text(4, "Explain"), QStringLiteral("报销差旅费")) << "let go over the cells, nothing moves";

    ASSERT_TRUE(b.journal->undo());
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(4, "Explain"), QStringLiteral("报销差旅费"));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收到货款"));
    EXPECT_EQ(b.grid->amount(2, b.col("Balance")), kx::Currency::fromRaw(15000000));
}

TEST(RowDrag, OtherMonthsAndSummaryRowsRefuseTheDrop)
{
    EditingBook b;
    b.grid->setText(4, b.col("JnlDate"), QStringLiteral("2025-02-01"));
    Drag drag(b);
    drag.run(4, 2);
    EXPECT_EQ(b.said.last(), QStringLiteral("不能将当前行拖动到其它月份中。"));
    EXPECT_EQ(b.text(4, "Explain"), QStringLiteral("报销差旅费"));

    ASSERT_TRUE(b.journal->InsSumRow(2));  // row 3 is a sub-total
    const int said = int(b.said.size());
    drag.run(5, 3);
    EXPECT_EQ(b.said.last(), QStringLiteral("不能将当前行放在汇总行之前。"));
    drag.run(2, 3);
    EXPECT_EQ(int(b.said.size()), said + 2);
    EXPECT_EQ(b.said.last(), QStringLiteral("不能移动已结账月份中的记录。")) << "the sub-total closed row 2";
    EXPECT_EQ(b.text(3, "Tag"), QStringLiteral("-1"));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收到货款"));
}

TEST(RowKeys, InsertDeleteAndTheClipboardKeysWorkOnTheGrid)
{
    EditingBook b;
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    b.journal->resize(900, 500);
    b.journal->show();
    kx::GridView *view = b.journal->gridView();
    view->setFocus();
    b.grid->setCursor(3, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_Insert);
    EXPECT_EQ(b.grid->rows(), 7);
    EXPECT_TRUE(b.text(3, "Explain").isEmpty());
    QTest::keyClick(view, Qt::Key_Delete);
    EXPECT_EQ(b.grid->rows(), 6);
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));

    b.grid->select(2, b.col("Explain"), 3, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    b.grid->setCursor(5, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("收到货款"));
    EXPECT_EQ(b.text(6, "Explain"), QStringLiteral("付材料款"));
}
