// Linking records to vouchers: the DirID member, the picker, the menu
// items, removal, and what the database holds afterwards.
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/EditCycle.h>
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/VoucherPicker.h>

#include <QApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using kxtest::BookBuilder;
using kxtest::EditingBook;
using kxtest::Engine;

namespace {

const QString NoAccount = QStringLiteral("未指定会计科目，无法指定记账凭证。");
const QString AlreadyLinked = QStringLiteral("不能对已有凭证的记录设置凭证。");

int storedLink(const EditingBook &b, int row)
{
    const int recId = b.text(row, "RecID").toInt();
    return kx::sqlScalar(b.db->open(), {QStringLiteral("Select DirID From kxJournalRecs Where RecID=%1").arg(recId), {}}).value().toInt();
}

struct Vouchers {
    int jan5 = 0, jan20 = 0, feb = 0;
};

Vouchers addVouchers(const EditingBook &b)
{
    const kx::Database db = b.db->open();
    BookBuilder builder(db);
    Vouchers v;
    v.jan5 = builder.voucher(QStringLiteral("2025-01-05"), QStringLiteral("记"), 12);
    v.jan20 = builder.voucher(QStringLiteral("2025-01-20"), QStringLiteral("收"), 3);
    v.feb = builder.voucher(QStringLiteral("2025-02-03"), QStringLiteral("记"), 1);
    return v;
}

class VoucherLinks : public ::testing::TestWithParam<Engine>
{
};

} // namespace

TEST_P(VoucherLinks, ALinkIsStoredAtOnceAndNeverOverwritten)
{
    EditingBook b(GetParam());
    const Vouchers v = addVouchers(b);
    EXPECT_EQ(b.journal->DirID(2), 0);

    b.journal->setDirID(v.jan5, 2);
    EXPECT_EQ(b.text(2, "AccDoc"), QStringLiteral("01-05记 12"));
    EXPECT_EQ(b.journal->DirID(2), v.jan5);
    EXPECT_EQ(storedLink(b, 2), v.jan5) << "written before any save";
    EXPECT_FALSE(b.journal->IsDirty());

    b.said.clear();
    b.journal->setDirID(v.jan20, 2);
    EXPECT_EQ(b.said, QStringList{AlreadyLinked});
    EXPECT_EQ(storedLink(b, 2), v.jan5);
    EXPECT_EQ(b.text(2, "AccDoc"), QStringLiteral("01-05记 12"));

    // A voucher that does not exist takes no link, and says so.
    b.said.clear();
    b.journal->setDirID(999999, 3);
    EXPECT_EQ(storedLink(b, 3), 0);
    EXPECT_EQ(b.journal->DirID(3), 0);
    EXPECT_EQ(b.said, QStringList{QStringLiteral("没有找到编号为 999999 的凭证，凭证链接没有改变。")});

    // The next save neither rewrites the linked records nor asks about them.
    QStringList asked;
    b.journal->setAsker([&](const QString &t, const QString &) { asked << t; return false; });
    ASSERT_TRUE(b.type(4, "Explain", QStringLiteral("报销差旅费（张三）")));
    ASSERT_TRUE(b.journal->Save());
    EXPECT_TRUE(asked.isEmpty()) << qPrintable(asked.join(QLatin1Char('\n')));
    EXPECT_EQ(storedLink(b, 2), v.jan5);
    ASSERT_TRUE(b.journal->Load());
    EXPECT_EQ(b.text(2, "AccDoc"), QStringLiteral("01-05记 12"));
    EXPECT_EQ(b.text(3, "AccDoc"), QString());
}

TEST_P(VoucherLinks, RowsThatMayNotTakeAVoucherSayWhy)
{
    EditingBook b(GetParam());
    const Vouchers v = addVouchers(b);
    b.said.clear();
    b.journal->setDirID(v.jan5, 1);
    EXPECT_EQ(b.said, QStringList{NoAccount}) << "the opening row has no account";
    EXPECT_EQ(storedLink(b, 1), 0);

    // A new row is not stored yet: its link goes with it at the next save.
    EXPECT_EQ(b.journal->DirID(5), -1);
    ASSERT_TRUE(b.type(5, "ShowName", QStringLiteral("2025-01-25")));
    ASSERT_TRUE(b.type(5, "AccName", QStringLiteral("1122")));
    ASSERT_TRUE(b.type(5, "Debit", QStringLiteral("80")));
    b.journal->setDirID(v.jan20, 5);
    EXPECT_EQ(b.text(5, "AccDoc"), QStringLiteral("01-20收 3"));
    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(storedLink(b, 5), v.jan20);

    // With a relative account, a record without an account of its own may
    // take a voucher; the opening balance and the empty row never do.
    b.grid->setText(4, b.col("AccID"), QStringLiteral("0"));
    b.said.clear();
    b.journal->setDirID(v.jan5, 4);
    EXPECT_EQ(b.said, QStringList{NoAccount});
    b.journal->setRelativeAccID(b.bank);
    b.said.clear();
    b.journal->setDirID(v.jan5, 4);
    EXPECT_EQ(storedLink(b, 4), v.jan5);
    EXPECT_TRUE(b.said.isEmpty()) << qPrintable(b.said.join(QLatin1Char('|')));
    b.journal->setDirID(v.jan5, 1);
    b.journal->setDirID(v.jan5, b.grid->rows() - 1);
    EXPECT_EQ(storedLink(b, 1), 0);
    EXPECT_EQ(b.text(b.grid->rows() - 1, "AccDoc"), QString());

    // No voucher at all, and a book the host keeps from changing, change nothing.
    b.said.clear();
    b.journal->setDirID(-7, 3);
    EXPECT_EQ(b.said, QStringList{QStringLiteral("没有指定凭证。")});
    b.journal->setAllowModify(false);
    b.said.clear();
    b.journal->setDirID(v.jan5, 3);
    EXPECT_EQ(b.said, QStringList{QStringLiteral("第3行的记录不能修改，凭证链接没有改变。")});
    EXPECT_EQ(storedLink(b, 3), 0);
}

TEST_P(VoucherLinks, ASelectionLinksItsFitRowsAndRemovalAsksFirst)
{
    EditingBook b(GetParam());
    const Vouchers v = addVouchers(b);
    b.journal->setDirID(v.jan20, 3);
    b.said.clear();
    const int explain = b.col("Explain");
    b.grid->select(1, explain, 4, explain);
    b.journal->SetDirID(v.jan5);
    EXPECT_EQ(b.said, (QStringList{NoAccount, AlreadyLinked}));
    EXPECT_EQ(storedLink(b, 2), v.jan5);
    EXPECT_EQ(storedLink(b, 3), v.jan20);
    EXPECT_EQ(storedLink(b, 4), v.jan5);

    QStringList asked;
    bool yes = false;
    b.journal->setAsker([&](const QString &t, const QString &title) {
        asked << t + QLatin1Char('/') + title;
        return yes;
    });
    kxtest::runMenuItem(*b.journal, "mnuRemoveDoc");
    EXPECT_EQ(asked, QStringList{QStringLiteral("是否删除被选择的 4条记录的凭证链接信息？/删除凭证链接")});
    EXPECT_EQ(storedLink(b, 2), v.jan5) << "No keeps the links";
    yes = true;
    kxtest::runMenuItem(*b.journal, "mnuRemoveDoc");
    for (int r = 1; r <= 4; ++r) {
        EXPECT_EQ(storedLink(b, r), 0) << r;
        EXPECT_EQ(b.journal->DirID(r), 0) << r;
        EXPECT_EQ(b.text(r, "AccDoc"), QString()) << r;
    }
}

TEST_P(VoucherLinks, AnotherUsersLinkIsNotOverwritten)
{
    EditingBook b(GetParam());
    const Vouchers v = addVouchers(b);
    const int recId = b.text(2, "RecID").toInt();
    ASSERT_TRUE(kx::sqlRun(b.db->open(), {QStringLiteral("Update kxJournalRecs Set DirID=%1 Where RecID=%2").arg(v.feb).arg(recId), {}}).ok());
    b.said.clear();
    b.journal->setDirID(v.jan5, 2);
    EXPECT_EQ(storedLink(b, 2), v.feb);
    EXPECT_EQ(b.journal->DirID(2), 0);
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said.first().contains(QStringLiteral("第2行"))) << qPrintable(b.said.first());

    // A record deleted elsewhere is not brought back by a link.
    const int gone = b.text(4, "RecID").toInt();
    ASSERT_TRUE(kx::sqlRun(b.db->open(), {QStringLiteral("Delete From kxJournalRecs Where RecID=%1").arg(gone), {}}).ok());
    b.said.clear();
    b.journal->setDirID(v.jan5, 4);
    EXPECT_EQ(b.text(4, "AccDoc"), QString());
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said.first().contains(QStringLiteral("第4行的记录已不在数据库里"))) << qPrintable(b.said.first());
}

TEST_P(VoucherLinks, ThePickerListsThePeriodAndLinksWhatIsChosen)
{
    EditingBook b(GetParam());
    const Vouchers v = addVouchers(b);
    b.journal->resize(900, 500);
    b.journal->show();
    b.grid->setCursor(2, b.col("Explain"));
    b.said.clear();
    kxtest::runMenuItem(*b.journal, "mnuDocSelect");
    kx::VoucherPicker *picker = b.journal->voucherPicker();
    ASSERT_TRUE(picker->isVisible());
    EXPECT_EQ(b.said, (QStringList{QStringLiteral("装入会计科目..."), QString()}));
    EXPECT_EQ(picker->listedVouchers(), (QList<int>{v.jan20, v.jan5})) << "this period's, newest first";

    auto *search = picker->findChild<QLineEdit *>(QStringLiteral("search"));
    search->insert(QStringLiteral("记"));  // an input method's commit
    QTest::keyClicks(search, QStringLiteral("12"));
    EXPECT_EQ(picker->listedVouchers(), QList<int>{v.jan5});
    search->clear();
    QTest::keyClicks(search, QStringLiteral("01-20"));
    EXPECT_EQ(picker->listedVouchers(), QList<int>{v.jan20});
    search->clear();
    QTest::keyClick(search, Qt::Key_Down);
    EXPECT_EQ(picker->currentVoucher(), v.jan5);
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_FALSE(picker->isVisible());
    EXPECT_EQ(storedLink(b, 2), v.jan5);

    // The ellipsis of the voucher cell opens the picker; Esc closes it.
    const int accDoc = b.col("AccDoc");
    b.grid->setCursor(4, accDoc);
    ASSERT_TRUE(b.grid->editCycle()->begin(4, accDoc));
    b.grid->editCycle()->clickButton();
    ASSERT_TRUE(picker->isVisible());
    QSignalSpy dismissed(picker, &kx::VoucherPicker::dismissed);
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_FALSE(picker->isVisible());
    EXPECT_EQ(dismissed.count(), 1);
    b.grid->editCycle()->cancel();
    picker->choose(v.jan20);
    EXPECT_EQ(storedLink(b, 4), v.jan20) << "choose() does what a pick does";
}

TEST_P(VoucherLinks, TheVoucherCellOpensTheVoucherAndTakesNoTyping)
{
    EditingBook b(GetParam());
    const Vouchers v = addVouchers(b);
    b.journal->setDirID(v.jan5, 2);
    QStringList commands;
    QObject::connect(b.journal.get(), &kx::Journal::CommandExecute, [&](const QString &c, bool &) { commands << c; });
    b.grid->setCursor(2, b.col("Explain"));
    kxtest::runMenuItem(*b.journal, "mnuAccDoc");
    EXPECT_EQ(commands, QStringList{QStringLiteral("LookAccDoc")});

    b.journal->resize(1200, 500);
    b.journal->show();
    kx::GridView *view = b.journal->gridView();
    const QRect cell = view->visualRect(b.grid->indexAt(2, b.col("AccDoc")));
    commands.clear();
    // A double-click as the window system delivers it: press, release, press, double-click, release.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, cell.center());
    QMouseEvent dbl(QEvent::MouseButtonDblClick, QPointF(cell.center()), view->viewport()->mapToGlobal(QPointF(cell.center())),
                    Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view->viewport(), &dbl);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, cell.center());
    EXPECT_EQ(commands, QStringList{QStringLiteral("DocRecs")});
    EXPECT_EQ(view->activeEditor(), nullptr) << "the double-click asked the host and opened no editor";

    // Typing on a voucher cell changes nothing and marks nothing.
    b.type(4, "AccDoc", QStringLiteral("05-03记 99"));  // every key is held back
    EXPECT_EQ(b.text(4, "AccDoc"), QString());
    EXPECT_FALSE(b.journal->IsDirty());
}

INSTANTIATE_TEST_SUITE_P(Engines, VoucherLinks, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
