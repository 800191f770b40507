// A bookkeeper enters records with the keyboard alone, on a real view, and
// picks accounts, dates and amounts with the control's own pickers.
#include "QtPrinters.h"
#include "editing/EditingBook.h"

#include <kxjournal/AccountPicker.h>
#include <kxjournal/CalculatorPopup.h>
#include <kxjournal/EditCycle.h>
#include <kxjournal/GridView.h>

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

// Keys go where a person's would: into the open editor, else to the grid.
void press(kx::GridView *view, Qt::Key key)
{
    QWidget *target = view->activeEditor() ? view->activeEditor() : static_cast<QWidget *>(view);
    QTest::keyClick(target, key);
    // Enter commits through a queued call, as in the running program.
    QCoreApplication::processEvents();
}

void type(kx::GridView *view, const QString &text)
{
    for (QChar ch : text) {
        QWidget *target = view->activeEditor() ? view->activeEditor() : static_cast<QWidget *>(view);
        if (ch.unicode() < 0x80)
            QTest::keyClick(target, char(ch.unicode()));
        else
            QTest::sendKeyEvent(QTest::Click, target, Qt::Key_unknown, QString(ch), Qt::NoModifier);
    }
}

} // namespace

TEST(KeyboardEntry, TwoRecordsTypedWithoutTheMouse)
{
    EditingBook b;
    b.journal->resize(1200, 500);
    b.journal->show();
    kx::GridView *view = b.journal->gridView();
    const int first = b.grid->rows() - 1;
    ASSERT_EQ(b.text(first, "JnlDate"), QString()) << "a loaded book ends with an empty row to type in";
    // The book opens there, on the date, in sight: the cashier types at once.
    EXPECT_EQ(b.grid->row(), first);
    EXPECT_EQ(b.grid->col(), b.col("ShowName"));
    QApplication::processEvents();
    EXPECT_TRUE(view->viewport()->rect().contains(view->visualRect(b.grid->indexAt(first, b.col("ShowName")))));
    view->setFocus();

    auto record = [&](const char *date, const char *account, const char *explain, const char *debit,
                      const char *credit) {
        type(view, QString::fromUtf8(date));
        press(view, Qt::Key_Tab);
        type(view, QString::fromUtf8(account));
        press(view, Qt::Key_Tab);
        type(view, QString::fromUtf8(explain));
        press(view, Qt::Key_Tab);
        if (*debit)
            type(view, QString::fromUtf8(debit));
        press(view, Qt::Key_Tab);
        if (*credit)
            type(view, QString::fromUtf8(credit));
        press(view, Qt::Key_Return);
    };
    record("0120", "yszk", "收回欠款", "250", "");
    EXPECT_EQ(b.grid->row(), first + 1) << "Enter at the end of the row starts the next row";
    EXPECT_EQ(b.grid->col(), b.col("ShowName"));
    record("1-25", "yhck", "转存", "", "100*2");

    EXPECT_EQ(b.text(first, "JnlDate"), QStringLiteral("2025-01-20"));
    EXPECT_EQ(b.text(first, "ShowName"), QStringLiteral("2025年01月20日"));
    EXPECT_EQ(b.journal->AccID(first), b.receivable);
    EXPECT_EQ(b.text(first, "Explain"), QStringLiteral("收回欠款"));
    EXPECT_EQ(b.text(first, "Debit"), QStringLiteral("250"));
    EXPECT_EQ(b.text(first, "Balance"), QStringLiteral("1500"));
    EXPECT_EQ(b.text(first + 1, "JnlDate"), QStringLiteral("2025-01-25"));
    EXPECT_EQ(b.text(first + 1, "AccName"), QStringLiteral("银行存款"));
    EXPECT_EQ(b.text(first + 1, "Credit"), QStringLiteral("200"));
    EXPECT_EQ(b.text(first + 1, "Balance"), QStringLiteral("1300"));
    EXPECT_EQ(b.grid->rows(), first + 3) << "still one empty row below";

    ASSERT_TRUE(b.journal->Save());
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(b.text(first + 1, "Credit"), QStringLiteral("200"));

    // Ctrl+Z on the grid undoes the last edit.
    b.grid->setCursor(first + 1, b.col("Explain"));
    view->setFocus();
    type(view, QStringLiteral("改"));
    press(view, Qt::Key_Return);
    ASSERT_EQ(b.text(first + 1, "Explain"), QStringLiteral("改"));
    QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
    QCoreApplication::processEvents();
    EXPECT_EQ(b.text(first + 1, "Explain"), QStringLiteral("转存"));
}

TEST(KeyboardEntry, PickersAndCalculatorEnterThroughTheEditCycle)
{
    EditingBook b;
    b.journal->resize(1200, 500);
    b.journal->show();
    kx::GridView *view = b.journal->gridView();
    kx::AccountPicker *picker = b.journal->accountPicker();
    const int row = 3;

    // The ellipsis of the account cell opens the picker next to the cell.
    b.grid->setCursor(row, b.col("AccName"));
    view->edit(b.grid->indexAt(row, b.col("AccName")));
    ASSERT_NE(view->activeEditor(), nullptr);
    b.grid->editCycle()->clickButton();
    ASSERT_TRUE(picker->isVisible());
    picker->setSearchText(QStringLiteral("yh"));
    ASSERT_FALSE(picker->listedAccounts().isEmpty());
    EXPECT_EQ(picker->listedAccounts().first(), b.bank) << "name initials match without an entry code";
    QTest::keyClick(picker->findChild<QLineEdit *>(QStringLiteral("search")), Qt::Key_Return);
    EXPECT_FALSE(picker->isVisible());
    EXPECT_EQ(view->activeEditor(), nullptr);
    EXPECT_EQ(b.journal->AccID(row), b.bank);
    EXPECT_EQ(b.text(row, "AccName"), QStringLiteral("银行存款"));

    picker->choose(b.expenses);
    EXPECT_EQ(b.journal->AccID(row), b.expenses) << "choose() picks as Enter does";

    kx::CalculatorPopup *calc = b.journal->calculator();
    b.grid->setCursor(row, b.col("Credit"));
    view->edit(b.grid->indexAt(row, b.col("Credit")));
    b.grid->editCycle()->clickButton();
    ASSERT_TRUE(calc->isVisible());
    EXPECT_FALSE(calc->deliver(QStringLiteral("1/0")));
    EXPECT_TRUE(calc->isVisible()) << "a value that cannot be worked out is not delivered";
    EXPECT_TRUE(calc->deliver(QStringLiteral("2*(3+4)")));
    EXPECT_FALSE(calc->isVisible());
    EXPECT_EQ(b.text(row, "Credit"), QStringLiteral("14"));
    EXPECT_EQ(b.text(row, "Balance"), QStringLiteral("1486"));
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(row, "Credit"), QStringLiteral("200"));
}
