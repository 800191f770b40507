#include "QtPrinters.h"

#include <kxjournal/EditCycle.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using kx::Sheet;
using kx::GridView;

namespace {

// An offscreen view on a 5 × 4 grid keyed A..D; cells read "r<row>c<col>".
class GridViewTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        grid.setCols(5);
        for (int c = 1; c < 5; ++c) {
            const QString key = QString(QChar(u'A' + c - 1));
            grid.setColKey(c, key);
            grid.setText(0, c, key);
        }
        for (int r = 1; r <= 5; ++r)
            grid.addItem(QStringLiteral("%1\tr%1c1\tr%1c2\tr%1c3\tr%1c4").arg(r));
        view.setGridModel(&grid);
        view.resize(640, 400);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        cycle = grid.editCycle();
    }

    QModelIndex cell(int row, int col) const { return grid.indexAt(row, col); }

    QWidget *openEditor(int row, int col)
    {
        view.setCurrentIndex(cell(row, col));
        view.edit(cell(row, col));
        return view.activeEditor();
    }

    void type(QWidget *editor, const QString &text, Qt::Key end = Qt::Key_Return)
    {
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, end);
        QCoreApplication::processEvents();
    }

    Sheet grid;
    GridView view;
    kx::EditCycle *cycle = nullptr;
};

} // namespace

TEST_F(GridViewTest, CancelInBeforeEditKeepsTheCell)
{
    QObject::connect(cycle, &kx::EditCycle::beforeEdit, [](int, int col, bool &cancel) { cancel = col == 2; });
    QSignalSpy after(cycle, &kx::EditCycle::afterEdit);
    EXPECT_EQ(openEditor(1, 2), nullptr);
    QTest::keyClicks(view.viewport(), QStringLiteral("zz"));
    QTest::keyClicks(&view, QStringLiteral("zz"));
    QCoreApplication::processEvents();
    EXPECT_EQ(grid.text(1, 2), QStringLiteral("r1c2"));
    EXPECT_EQ(view.activeEditor(), nullptr);
    EXPECT_EQ(after.count(), 0);
    EXPECT_FALSE(cycle->isEditing());
}

TEST_F(GridViewTest, TypedTextGoesThroughValidateAndAfterEdit)
{
    QStringList seen;
    QObject::connect(cycle, &kx::EditCycle::beforeEdit, [&](int r, int c, bool &) {
        seen << QStringLiteral("before %1 %2").arg(r).arg(c);
    });
    QObject::connect(cycle, &kx::EditCycle::validateEdit, [&](int, int, bool &) {
        seen << QStringLiteral("validate ") + cycle->editText();
        cycle->setEditText(cycle->editText().toUpper()); // a handler may rewrite the text
    });
    QObject::connect(cycle, &kx::EditCycle::afterEdit, [&](int r, int c) {
        seen << QStringLiteral("after ") + grid.text(r, c);
    });
    QWidget *editor = openEditor(2, 3);
    ASSERT_NE(editor, nullptr);
    auto *le = qobject_cast<QLineEdit *>(editor);
    ASSERT_NE(le, nullptr);
    EXPECT_EQ(le->text(), QStringLiteral("r2c3"));
    le->selectAll();
    type(editor, QStringLiteral("abc"));
    EXPECT_EQ(grid.text(2, 3), QStringLiteral("ABC"));
    EXPECT_EQ(seen, (QStringList{QStringLiteral("before 2 3"), QStringLiteral("validate abc"),
                                 QStringLiteral("after ABC")}));
    EXPECT_EQ(view.activeEditor(), nullptr);
    EXPECT_FALSE(cycle->isEditing());
}

TEST_F(GridViewTest, RefusedTextStaysInTheOpenEditor)
{
    QObject::connect(cycle, &kx::EditCycle::validateEdit, [&](int, int, bool &cancel) {
        cancel = !cycle->editText().startsWith(QLatin1Char('2'));
    });
    QSignalSpy after(cycle, &kx::EditCycle::afterEdit);
    QWidget *editor = openEditor(3, 1);
    ASSERT_NE(editor, nullptr);
    qobject_cast<QLineEdit *>(editor)->clear();
    type(editor, QStringLiteral("1999-13-01"));
    EXPECT_EQ(grid.text(3, 1), QStringLiteral("r3c1"));
    EXPECT_EQ(view.activeEditor(), editor) << "nothing typed is lost";
    EXPECT_EQ(qobject_cast<QLineEdit *>(editor)->text(), QStringLiteral("1999-13-01"));
    EXPECT_EQ(after.count(), 0);

    qobject_cast<QLineEdit *>(editor)->clear();
    type(editor, QStringLiteral("2026-01-31"));
    EXPECT_EQ(grid.text(3, 1), QStringLiteral("2026-01-31"));
    EXPECT_EQ(after.count(), 1);
}

TEST_F(GridViewTest, KeyPressHandlerFiltersAndReplacesKeys)
{
    // A numeric column: only digits and operators pass; ',' is typed as '.'.
    QObject::connect(cycle, &kx::EditCycle::keyPressEdit, [](int, int, int &key) {
        if (key == ',')
            key = '.';
        else if (key != 9 && key != 13 && !QStringLiteral("0123456789./*-+()").contains(QChar(key)))
            key = 0;
    });
    QWidget *editor = openEditor(1, 4);
    ASSERT_NE(editor, nullptr);
    qobject_cast<QLineEdit *>(editor)->clear();
    type(editor, QStringLiteral("1a2,5x*2"));
    EXPECT_EQ(grid.text(1, 4), QStringLiteral("12.5*2"));
}

TEST_F(GridViewTest, TypingOnACellStartsTheEditWithThatKey)
{
    int before = 0;
    QObject::connect(cycle, &kx::EditCycle::beforeEdit, [&](int, int, bool &) { ++before; });
    view.setCurrentIndex(cell(4, 2));
    view.setFocus();
    QTest::keyClick(&view, Qt::Key_7);
    ASSERT_NE(view.activeEditor(), nullptr);
    type(view.activeEditor(), QStringLiteral("5"));
    EXPECT_EQ(before, 1);
    EXPECT_EQ(grid.text(4, 2), QStringLiteral("75")) << "the first key replaces the old text";
}

TEST_F(GridViewTest, EscapeEndsTheEditWithoutStoring)
{
    QSignalSpy after(cycle, &kx::EditCycle::afterEdit);
    QWidget *editor = openEditor(5, 1);
    ASSERT_NE(editor, nullptr);
    type(editor, QStringLiteral("junk"), Qt::Key_Escape);
    EXPECT_EQ(grid.text(5, 1), QStringLiteral("r5c1"));
    EXPECT_EQ(after.count(), 0);
    EXPECT_FALSE(cycle->isEditing());
    EXPECT_NE(openEditor(5, 2), nullptr) << "a new edit can start";
}

TEST_F(GridViewTest, ComboListChoosesTheEditor)
{
    QObject::connect(cycle, &kx::EditCycle::beforeEdit, [&](int, int col, bool &) {
        if (col == 1)
            cycle->setComboList(QStringLiteral("|..."));
        else if (col == 2)
            cycle->setComboList(QStringLiteral("现金|银行|other"));
    });
    QSignalSpy button(cycle, &kx::EditCycle::cellButtonClick);

    QWidget *editor = openEditor(1, 1);
    auto *le = qobject_cast<QLineEdit *>(editor);
    ASSERT_NE(le, nullptr);
    auto *ellipsis = le->findChild<QAction *>(QStringLiteral("ellipsis"));
    ASSERT_NE(ellipsis, nullptr);
    ellipsis->trigger();
    ASSERT_EQ(button.count(), 1);
    EXPECT_EQ(button.at(0).at(0).toInt(), 1);
    EXPECT_EQ(button.at(0).at(1).toInt(), 1);
    type(editor, QString(), Qt::Key_Escape);

    editor = openEditor(1, 2);
    auto *combo = qobject_cast<QComboBox *>(editor);
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->count(), 3);
    EXPECT_EQ(combo->itemText(1), QStringLiteral("银行"));
    combo->setCurrentIndex(1);
    QTest::keyClick(combo, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(grid.text(1, 2), QStringLiteral("银行"));

    editor = openEditor(1, 3);
    ASSERT_NE(qobject_cast<QLineEdit *>(editor), nullptr);
    EXPECT_TRUE(le == nullptr || editor->findChild<QAction *>(QStringLiteral("ellipsis")) == nullptr);
}

TEST_F(GridViewTest, MouseEventsReportTheGridCellUnderTheMouse)
{
    QSignalSpy down(&view, &GridView::mouseDown);
    QSignalSpy up(&view, &GridView::mouseUp);
    const QRect r = view.visualRect(cell(3, 2));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, r.center());
    ASSERT_EQ(down.count(), 1);
    ASSERT_EQ(up.count(), 1);
    EXPECT_EQ(down.at(0).at(0).toInt(), 1);
    EXPECT_EQ(down.at(0).at(1).toInt(), 1);
    EXPECT_EQ(view.mouseRow(), 3);
    EXPECT_EQ(view.mouseCol(), 2);
    QTest::mouseClick(view.viewport(), Qt::RightButton, Qt::NoModifier, QPoint(r.center().x(), 390));
    EXPECT_EQ(down.at(1).at(0).toInt(), 2);
    EXPECT_EQ(view.mouseRow(), -1) << "below the last row";
}

TEST_F(GridViewTest, CursorAndSelectionAreSharedWithTheModel)
{
    grid.setCursor(4, 3);
    EXPECT_EQ(view.currentIndex(), cell(4, 3));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, view.visualRect(cell(2, 1)).center());
    EXPECT_EQ(grid.row(), 2);
    EXPECT_EQ(grid.col(), 1);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, view.visualRect(cell(3, 4)).center());
    int r1, c1, r2, c2;
    grid.selection(r1, c1, r2, c2);
    EXPECT_EQ(std::make_tuple(r1, c1, r2, c2), std::make_tuple(2, 1, 3, 4));
    grid.select(1, 1, 5, 2);
    EXPECT_TRUE(view.selectionModel()->isSelected(cell(5, 2)));
    EXPECT_FALSE(view.selectionModel()->isSelected(cell(5, 3)));
}

TEST_F(GridViewTest, LayoutFollowsTheModelAndHeaderDragsMoveColumns)
{
    grid.setRowHidden(2, true);
    grid.setRowHeight(3, 44);
    grid.setColHidden(3, true);
    grid.setColWidth(1, 123);
    EXPECT_TRUE(view.isRowHidden(1));
    EXPECT_EQ(view.rowHeight(2), 44);
    EXPECT_TRUE(view.isColumnHidden(2));
    EXPECT_EQ(view.columnWidth(0), 123);

    grid.setRedraw(false);
    grid.setRowHidden(2, false);
    EXPECT_TRUE(view.isRowHidden(1)) << "no layout change while redraw is off";
    grid.setRedraw(true);
    EXPECT_FALSE(view.isRowHidden(1));

    // A person drags column A's header to the end.
    view.horizontalHeader()->moveSection(0, 3);
    EXPECT_EQ(grid.colIndex(QStringLiteral("A")), 4);
    EXPECT_EQ(grid.text(2, QStringLiteral("A")), QStringLiteral("r2c1"));
    EXPECT_EQ(view.horizontalHeader()->visualIndex(0), 0) << "the header keeps visual == logical";
    EXPECT_EQ(view.model()->headerData(3, Qt::Horizontal).toString(), QStringLiteral("A"));
}
