#include "QtPrinters.h"

#include <kxjournal/EditCycle.h>
#include <grid/GridChanges.h>
#include "grid/Sheet.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <gtest/gtest.h>

using kx::CellArray;
using kx::Sheet;

namespace {

// A grid with keyed columns A..E and \a n data rows whose cells read "r<row>c<col>".
void fill(Sheet &g, int n)
{
    g.setCols(6);
    const char *keys[] = {"", "A", "B", "C", "D", "E"};
    for (int c = 0; c < 6; ++c) {
        g.setColKey(c, QString::fromLatin1(keys[c]));
        g.setText(0, c, QString::fromLatin1(keys[c]));
    }
    CellArray a(n, 5);
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < 5; ++c)
            a.setText(r, c, QStringLiteral("r%1c%2").arg(r + 1).arg(c + 1));
    g.loadArray(std::move(a));
}

} // namespace

TEST(Sheet, StaysAConsistentQtModelThroughEveryChange)
{
    Sheet g;
    QAbstractItemModelTester tester(&g, QAbstractItemModelTester::FailureReportingMode::Fatal);
    fill(g, 8);
    EXPECT_EQ(g.rowCount(), 8);
    EXPECT_EQ(g.columnCount(), 5);
    g.insertRowAt(3);
    g.insertRowAt(g.rows());
    g.removeRowAt(1);
    g.moveRowTo(2, 6);
    g.moveRowTo(7, 1);
    g.moveColTo(1, 4);
    g.moveColTo(5, 2);
    g.addItem(QStringLiteral("x\ty\tz"));
    g.addItem(QStringLiteral("a\tb"), 1);
    g.setRows(4);
    g.setCols(9);
    g.setCols(3);
    g.setRedraw(false);
    g.setText(1, 1, QStringLiteral("quiet"));
    g.setRedraw(true);
    g.loadArray(CellArray(3, 7));
    g.setRows(0);
    EXPECT_EQ(g.rows(), 1);
    EXPECT_EQ(g.rowCount(), 0);
    EXPECT_EQ(g.row(), -1);
}

TEST(Sheet, KeysFollowTheirColumnsWhenColumnsMove)
{
    Sheet g;
    fill(g, 3);
    g.setCellForeColor(1, g.colIndex(QStringLiteral("B")), 1, g.colIndex(QStringLiteral("B")), Qt::red);
    g.setCellData(2, g.colIndex(QStringLiteral("B")), 42);
    g.setColFormat(g.colIndex(QStringLiteral("B")), QStringLiteral("#,##0.00"));
    g.setColHidden(g.colIndex(QStringLiteral("D")), true);

    g.moveColTo(g.colIndex(QStringLiteral("B")), 5); // B to the end
    g.moveColTo(g.colIndex(QStringLiteral("E")), 1); // E to the front

    EXPECT_EQ(g.colIndex(QStringLiteral("E")), 1);
    EXPECT_EQ(g.colIndex(QStringLiteral("B")), 5);
    EXPECT_EQ(g.colIndex(QStringLiteral("b")), 5) << "keys are found regardless of case";
    for (const char *k : {"A", "B", "C", "D", "E"}) {
        const QString key = QString::fromLatin1(k);
        const int col = g.colIndex(key);
        EXPECT_EQ(g.text(0, col), key);
        EXPECT_EQ(g.text(2, key), QStringLiteral("r2c%1").arg(k[0] - 'A' + 1));
    }
    const int b = g.colIndex(QStringLiteral("B"));
    EXPECT_EQ(g.cellForeColor(1, b), QColor(Qt::red));
    EXPECT_FALSE(g.cellForeColor(1, g.colIndex(QStringLiteral("C"))).isValid());
    EXPECT_EQ(g.cellData(2, b).toInt(), 42);
    EXPECT_EQ(g.colFormat(b), QStringLiteral("#,##0.00"));
    EXPECT_TRUE(g.isColHidden(g.colIndex(QStringLiteral("D"))));
    EXPECT_EQ(g.colIndex(QStringLiteral("nope")), -1);
}

TEST(Sheet, RedrawOffBatchesChangeSignalsIntoOneRefresh)
{
    Sheet g;
    fill(g, 50);
    QSignalSpy changed(&g, &QAbstractItemModel::dataChanged);
    QSignalSpy layout(&g, &Sheet::rowLayoutChanged);

    g.setText(1, 1, QStringLiteral("one"));
    g.setText(1, 1, QStringLiteral("one")); // unchanged text: no signal
    EXPECT_EQ(changed.count(), 1);

    changed.clear();
    g.setRedraw(false);
    for (int r = 1; r <= 50; ++r) {
        g.setText(r, 2, QStringLiteral("x"));
        g.setCellBackColor(r, 1, r, 5, Qt::yellow);
        g.setRowHeight(r, 30);
    }
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(layout.count(), 0);
    g.setRedraw(true);
    ASSERT_EQ(changed.count(), 1);
    const auto args = changed.takeFirst();
    EXPECT_EQ(args.at(0).toModelIndex(), g.index(0, 0));
    EXPECT_EQ(args.at(1).toModelIndex(), g.index(49, 4));
    EXPECT_EQ(layout.count(), 1);
    g.setRedraw(true); // already on: nothing more
    EXPECT_EQ(changed.count(), 0);
}

TEST(Sheet, AddItemAndLoadArrayPlaceTextsWhereTheGridSays)
{
    Sheet g;
    g.setCols(3);
    g.addItem(QStringLiteral("1\tfirst\tx"));
    g.addItem(QStringLiteral("0\tbefore"), 1);
    g.addItem(QStringLiteral("\t\t\t\textra")); // more fields than columns: the grid widens
    EXPECT_EQ(g.rows(), 4);
    EXPECT_EQ(g.cols(), 5);
    EXPECT_EQ(g.text(1, 1), QStringLiteral("before"));
    EXPECT_EQ(g.text(1, 2), QString());
    EXPECT_EQ(g.text(2, 0), QStringLiteral("1"));
    EXPECT_EQ(g.text(3, 4), QStringLiteral("extra"));

    // A load replaces everything from its first row on, keeps rows above it.
    CellArray a(2, 2);
    a.setText(0, 0, QStringLiteral("p"));
    a.setText(1, 1, QStringLiteral("q"));
    g.loadArray(std::move(a), 2, 2);
    EXPECT_EQ(g.rows(), 4);
    EXPECT_EQ(g.text(1, 1), QStringLiteral("before"));
    EXPECT_EQ(g.text(2, 2), QStringLiteral("p"));
    EXPECT_EQ(g.text(2, 0), QString()) << "loaded rows start empty outside the array";
    EXPECT_EQ(g.text(3, 3), QStringLiteral("q"));
    EXPECT_EQ(g.text(3, 4), QString());

    CellArray wide(1, 8);
    wide.setText(0, 7, QStringLiteral("w"));
    g.loadArray(std::move(wide));
    EXPECT_EQ(g.rows(), 2);
    EXPECT_EQ(g.cols(), 9);
    EXPECT_EQ(g.text(1, 8), QStringLiteral("w"));
    // Out-of-range reads and writes are harmless.
    g.setText(99, 1, QStringLiteral("lost"));
    EXPECT_EQ(g.text(99, 1), QString());
    EXPECT_EQ(g.text(1, -1), QString());
}

TEST(Sheet, NumericValuesAndAmounts)
{
    Sheet g;
    g.setCols(2);
    g.setColKey(1, QStringLiteral("Debit"));
    const char *texts[] = {"12.5", "1,234.56", "", "abc", "-3", "7.25\n100", "１２"};
    const double values[] = {12.5, 1234.56, 0, 0, -3, 7.25, 12};
    for (const char *t : texts)
        g.addItem(QLatin1Char('\t') + QString::fromUtf8(t));
    for (int i = 0; i < 7; ++i) {
        EXPECT_DOUBLE_EQ(g.value(i + 1, QStringLiteral("Debit")), values[i]) << texts[i];
        EXPECT_EQ(g.amount(i + 1, 1), kx::Currency::fromDouble(values[i]).value()) << texts[i];
    }
    EXPECT_DOUBLE_EQ(g.value(1, QStringLiteral("NoSuchKey")), 0.0);
}

TEST(Sheet, DisplayFormatsAmountsAndDatesButKeepsTheStoredText)
{
    Sheet g;
    g.setCols(3);
    g.setColDataType(1, Sheet::TypeCurrency);
    g.setColFormat(1, QStringLiteral("#,##0.00"));
    g.setColDataType(2, Sheet::TypeDate);
    g.setColFormat(2, QStringLiteral("yyyy年MM月dd日"));
    g.addItem(QStringLiteral("\t1234.5\t2026-03-05"));
    g.addItem(QStringLiteral("\t10\n2000.25\tnot a date"));
    EXPECT_EQ(g.data(g.index(0, 0)).toString(), QStringLiteral("1,234.50"));
    EXPECT_EQ(g.data(g.index(0, 0), Qt::EditRole).toString(), QStringLiteral("1234.5"));
    EXPECT_EQ(g.data(g.index(0, 1)).toString(), QStringLiteral("2026年03月05日"));
    EXPECT_EQ(g.data(g.index(1, 0)).toString(), QStringLiteral("10.00\n2,000.25"));
    EXPECT_EQ(g.data(g.index(1, 1)).toString(), QStringLiteral("not a date"));
    EXPECT_EQ(g.colAlignment(1) & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    EXPECT_EQ(g.colAlignment(2) & Qt::AlignHorizontal_Mask, Qt::AlignLeft);
}

TEST(Sheet, StylesApplyOverRangesInAnyCornerOrder)
{
    Sheet g;
    fill(g, 4);
    g.setCellBackColor(3, 4, 2, 2, Qt::green);
    g.setCellBold(2, 1, 2, 5, true);
    g.setCellFontName(4, 1, 4, 1, QStringLiteral("Noto Sans CJK SC"));
    g.setCellAlignment(1, 1, 1, 1, Qt::AlignCenter);
    EXPECT_EQ(g.cellBackColor(2, 2), QColor(Qt::green));
    EXPECT_EQ(g.cellBackColor(3, 4), QColor(Qt::green));
    EXPECT_FALSE(g.cellBackColor(3, 5).isValid());
    EXPECT_FALSE(g.cellBackColor(1, 2).isValid());
    EXPECT_TRUE(g.cellBold(2, 5));
    EXPECT_FALSE(g.cellBold(3, 5));
    EXPECT_EQ(g.cellFontName(4, 1), QStringLiteral("Noto Sans CJK SC"));
    EXPECT_EQ(g.data(g.index(1, 0), Qt::FontRole).value<QFont>().bold(), true);
    EXPECT_EQ(g.cellAlignment(1, 1), Qt::AlignCenter);
    EXPECT_EQ(g.cellAlignment(1, 2), g.colAlignment(2));

    g.clearCellStyles(1, 1, 4, 5);
    EXPECT_FALSE(g.cellBackColor(2, 2).isValid());
    EXPECT_FALSE(g.cellBold(2, 5));
    EXPECT_EQ(g.text(2, 2), QStringLiteral("r2c2")) << "clearing looks keeps the texts";
    g.setCellForeColor(0, 0, 99, 99, Qt::blue); // clipped to the grid
    EXPECT_EQ(g.cellForeColor(4, 5), QColor(Qt::blue));
}

TEST(Sheet, RowsCarryTheirMarksWhenInsertedRemovedAndMoved)
{
    Sheet g;
    fill(g, 5);
    g.setRowData(2, 2);
    g.setSubtotal(2, true);
    g.setOutlineLevel(2, 1);
    g.setRowHeight(2, 40);
    g.setCellBold(2, 1, 2, 1, true);
    g.setCursor(4, 3);

    g.moveRowTo(2, 5);
    EXPECT_EQ(g.text(5, 1), QStringLiteral("r2c1"));
    EXPECT_EQ(g.rowData(5).toInt(), 2);
    EXPECT_TRUE(g.isSubtotal(5));
    EXPECT_EQ(g.outlineLevel(5), 1);
    EXPECT_EQ(g.rowHeight(5), 40);
    EXPECT_TRUE(g.cellBold(5, 1));
    EXPECT_EQ(g.text(2, 1), QStringLiteral("r3c1"));
    EXPECT_EQ(g.row(), 3) << "the cursor stays on its row's content";

    g.insertRowAt(1);
    EXPECT_EQ(g.row(), 4);
    EXPECT_EQ(g.text(1, 1), QString());
    g.removeRowAt(4);
    EXPECT_EQ(g.text(4, 1), QStringLiteral("r5c1"));
    g.removeRowAt(0); // the header row is not removable
    EXPECT_EQ(g.text(0, 1), QStringLiteral("A"));

    g.setRowHeightMax(30);
    EXPECT_EQ(g.rowHeight(5), 30);
    g.setRowHeightMin(25);
    EXPECT_EQ(g.rowHeight(1), 25);
}

TEST(Sheet, CursorAndSelection)
{
    Sheet g;
    fill(g, 6);
    QSignalSpy leave(&g, &Sheet::leaveCell);
    QSignalSpy moved(&g, &Sheet::cursorChanged);
    g.setCursor(2, 2);
    g.select(5, 4, 3, 2);
    int r1, c1, r2, c2;
    g.selection(r1, c1, r2, c2);
    EXPECT_EQ(std::make_tuple(r1, c1, r2, c2), std::make_tuple(3, 2, 5, 4));
    EXPECT_EQ(g.row(), 5);
    EXPECT_EQ(g.col(), 4);
    ASSERT_EQ(leave.count(), 2);
    EXPECT_EQ(leave.at(1).at(0).toInt(), 2) << "leave-cell names the cell being left";
    EXPECT_EQ(moved.count(), 2);

    g.setCursor(0, 1);  // not a data cell
    g.setCursor(3, 99);
    EXPECT_EQ(g.row(), 5);
    g.setRows(3);
    EXPECT_EQ(g.row(), 2) << "the cursor stays inside the grid";
    g.selection(r1, c1, r2, c2);
    EXPECT_EQ(std::make_tuple(r1, r2), std::make_tuple(2, 2));
}

TEST(Sheet, ProgrammaticEditsRunTheWholeCycle)
{
    Sheet g;
    fill(g, 3);
    kx::EditCycle *cycle = g.editCycle();
    QStringList events;
    QObject::connect(cycle, &kx::EditCycle::beforeEdit, [&](int r, int c, bool &cancel) {
        events << QStringLiteral("before %1,%2").arg(r).arg(c);
        cancel = c == g.colIndex(QStringLiteral("E"));
    });
    QObject::connect(cycle, &kx::EditCycle::validateEdit, [&](int, int, bool &cancel) {
        events << QStringLiteral("validate ") + cycle->editText();
        if (cycle->editText() == QStringLiteral("bad"))
            cancel = true;
        cycle->setEditText(cycle->editText().trimmed());
    });
    QObject::connect(cycle, &kx::EditCycle::afterEdit, [&](int r, int c) {
        events << QStringLiteral("after ") + g.text(r, c);
    });

    EXPECT_TRUE(cycle->editCell(1, 1, QStringLiteral("  new ")));
    EXPECT_FALSE(cycle->editCell(1, 2, QStringLiteral("bad")));
    EXPECT_FALSE(cycle->editCell(1, 5, QStringLiteral("refused")));
    EXPECT_FALSE(cycle->editCell(0, 1, QStringLiteral("header"))) << "fixed cells are not edited";
    EXPECT_EQ(g.text(1, 1), QStringLiteral("new"));
    EXPECT_EQ(g.text(1, 2), QStringLiteral("r1c2"));
    EXPECT_EQ(g.text(1, 5), QStringLiteral("r1c5"));
    EXPECT_EQ(events, (QStringList{QStringLiteral("before 1,1"), QStringLiteral("validate   new "),
                                   QStringLiteral("after new"), QStringLiteral("before 1,2"),
                                   QStringLiteral("validate bad"), QStringLiteral("before 1,5")}));
    EXPECT_FALSE(cycle->isEditing());

    g.setEditable(false);
    EXPECT_FALSE(cycle->editCell(2, 1, QStringLiteral("x")));
}

// What a row held at the last clean mark is kept for the columns asked for,
// wherever the row or the column moves, and through a removal undone.
TEST(Sheet, CleanTextsFollowTheirRowsAndColumns)
{
    Sheet g;
    fill(g, 4);
    g.setCleanTextCols({1, 3});
    g.markRowsClean();
    g.setText(2, 1, QStringLiteral("new"));
    g.setText(2, 1, QStringLiteral("newer"));
    g.setText(2, 2, QStringLiteral("not kept"));
    EXPECT_EQ(g.cleanText(2, 1), QStringLiteral("r2c1")) << "the first change keeps the clean text";
    EXPECT_EQ(g.cleanText(2, 2), QStringLiteral("not kept")) << "a column not asked for reads as it stands";
    EXPECT_EQ(g.cleanText(3, 1), QStringLiteral("r3c1"));

    g.moveRowTo(2, 4);
    EXPECT_EQ(g.cleanText(4, 1), QStringLiteral("r2c1"));
    g.moveColTo(1, 4);
    EXPECT_EQ(g.cleanText(4, 4), QStringLiteral("r2c1"));
    EXPECT_EQ(g.text(4, 4), QStringLiteral("newer"));

    g.insertRowAt(1);
    EXPECT_FALSE(g.knowsCleanText(1)) << "a new row has no clean texts";
    EXPECT_TRUE(g.knowsCleanText(5));
    g.beginChanges();
    g.removeRowAt(5);
    const kx::GridChanges removal = g.endChanges();
    g.revertChanges(removal);
    EXPECT_TRUE(g.knowsCleanText(5));
    EXPECT_EQ(g.cleanText(5, 4), QStringLiteral("r2c1")) << "undoing a removal brings the clean texts back";

    g.markRowsClean();
    EXPECT_EQ(g.cleanText(5, 4), QStringLiteral("newer")) << "a clean mark makes the texts as they stand the clean ones";
    EXPECT_TRUE(g.knowsCleanText(1));
}
