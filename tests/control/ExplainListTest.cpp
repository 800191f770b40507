// The explanation list: the explanations a cashier keeps for a book come
// first, stored for every cashier of the book; each offered explanation
// shows the account and amount of its latest record, and picking it enters
// the explanation alone, which then fills the record.
#include "support/SampleJournal.h"

#include "data/ExplainMemo.h"
#include "data/SqlAccess.h"
#include "grid/ComboHints.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"

#include <kxjournal/EditCycle.h>
#include <kxjournal/GridView.h>

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace {

class ExplainMemoStore : public ::testing::TestWithParam<kxtest::Engine>
{
};

} // namespace

TEST_P(ExplainMemoStore, KeepsEachBooksListInOrderAndRefusesItWhole)
{
    kxtest::TestDatabase db(GetParam());
    kx::Database conn = db.open();
    const int book = kxtest::fillSampleBooks(conn, 10, 1);
    // Another company's books beside these (on PostgreSQL a schema of its
    // own) have the table: it is not this one's.
    kxtest::TestDatabase beside(GetParam());
    kx::Database besideConn = beside.open();
    kxtest::fillSampleBooks(besideConn, 10, 1);
    // A database made before the list existed has no table: nothing is kept.
    ASSERT_TRUE(kx::sqlRun(conn, {QStringLiteral("DROP TABLE kxExplainMemo"), {}}).ok());
    const kx::Result<QStringList> none = kx::ExplainMemo::load(conn, book);
    ASSERT_TRUE(none.ok()) << none.error().toStdString();
    EXPECT_TRUE(none.value().isEmpty());

    const QStringList kept{QStringLiteral("收到货款"), QStringLiteral("付房租"), QStringLiteral("提现")};
    const kx::Result<QStringList> saved =
        kx::ExplainMemo::save(conn, book, {QStringLiteral(" 收到货款 "), QString(), QStringLiteral("付房租"),
                                           QStringLiteral("收到货款"), QStringLiteral("提现")});
    ASSERT_TRUE(saved.ok()) << saved.error().toStdString();
    EXPECT_EQ(saved.value(), kept) << "trimmed, without empty lines and repeats, in order";
    EXPECT_EQ(kx::ExplainMemo::load(db.open(), book).value(), kept) << "another cashier reads the same list";
    EXPECT_TRUE(kx::ExplainMemo::load(conn, book + 1).value().isEmpty()) << "each book its own";

    EXPECT_EQ(kx::ExplainMemo::cleaned({QStringLiteral("备用\t金")}).value(), QStringList({QStringLiteral("备用 金")}))
        << "a tab becomes a blank, as typed";
    const QList<std::pair<QString, QString>> refusals{
        {QStringLiteral("收|付"), QStringLiteral("常用摘要“收|付”不能含有“|”或换行。")},
        {QStringLiteral("两\n行"), QStringLiteral("常用摘要“两 行”不能含有“|”或换行。")}};
    for (const auto &[bad, why] : refusals) {
        const kx::Result<QStringList> refused = kx::ExplainMemo::save(conn, book, {QStringLiteral("新的"), bad});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error(), why);
        EXPECT_EQ(kx::ExplainMemo::load(conn, book).value(), kept) << "a refused list changes nothing";
    }
    ASSERT_TRUE(kx::ExplainMemo::save(conn, book, {}).ok());
    EXPECT_TRUE(kx::ExplainMemo::load(conn, book).value().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Engines, ExplainMemoStore, ::testing::Values(kxtest::Engine::Sqlite, kxtest::Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

namespace {

struct Listing : kxtest::SampleJournal {
    Listing() : SampleJournal(200)
    {
        g = kx::Sheet::of(journal.Grid());
        blank = g->rows() - 1;
        explainCol = g->colIndex(QStringLiteral("Explain"));
    }
    // The latest record carrying \a text, found here by reading texts.
    int latestWith(const QString &text) const
    {
        const kx::JournalColumns columns(*g);
        for (int r = g->rows() - 1; r > g->fixedRows(); --r) {
            const kx::BookRow row = kx::BookRow::of(*g, columns, r);
            if (row.isDated() && !row.isSummary() && g->text(r, explainCol) == text)
                return r;
        }
        return -1;
    }
    QComboBox *openList()
    {
        kx::GridView *view = journal.gridView();
        view->setCurrentIndex(g->indexAt(blank, explainCol));
        view->edit(g->indexAt(blank, explainCol));
        return qobject_cast<QComboBox *>(view->activeEditor());
    }
    kx::Sheet *g = nullptr;
    int blank = 0;
    int explainCol = -1;
};

} // namespace

TEST(ExplainList, KeptExplanationsComeFirstAndEachShowsItsLatestRecord)
{
    Listing l;
    const QString recurring = l.g->text(l.g->rows() - 3, l.explainCol);
    const int source = l.latestWith(recurring);
    ASSERT_GT(source, 0);
    const kx::Result<QStringList> kept =
        kx::ExplainMemo::save(l.acc->Connection(), l.book, {QStringLiteral("月末盘点"), recurring});
    ASSERT_TRUE(kept.ok()) << kept.error().toStdString();

    QComboBox *box = l.openList();
    ASSERT_NE(box, nullptr);
    ASSERT_GE(box->count(), 3);
    EXPECT_EQ(box->itemText(0), QStringLiteral("月末盘点"));
    EXPECT_EQ(box->itemData(0, kx::ComboHints::HintRole).toString(), QString()) << "no record carries it yet";
    EXPECT_EQ(box->itemText(1), recurring) << "the item is the explanation alone";
    const kx::Currency debit = l.g->amount(source, l.g->colIndex(QStringLiteral("Debit")));
    const kx::Currency credit = l.g->amount(source, l.g->colIndex(QStringLiteral("Credit")));
    const QString side = debit.isZero() ? QStringLiteral("贷 ") + credit.format(QStringLiteral("#,##0.00"))
                                        : QStringLiteral("借 ") + debit.format(QStringLiteral("#,##0.00"));
    EXPECT_EQ(box->itemData(1, kx::ComboHints::HintRole).toString(),
              l.g->text(source, QStringLiteral("AccName")) + QStringLiteral("  ") + side);
    // A host reading the list from the edit cycle gets the explanations alone.
    EXPECT_EQ(l.g->editCycle()->comboList().split(QLatin1Char('|'), Qt::SkipEmptyParts).mid(0, 2),
              QStringList({QStringLiteral("月末盘点"), recurring}));

    // Picking enters the explanation, never its hint; the record fills from it.
    box->setCurrentIndex(1);
    QTest::keyClick(box, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(l.g->text(l.blank, l.explainCol), recurring);
    EXPECT_EQ(l.g->text(l.blank, QStringLiteral("AccName")), l.g->text(source, QStringLiteral("AccName")));

    // What was typed comes after the kept ones; the host's list has no hints.
    const QString list = l.journal.GetExplainList();
    EXPECT_TRUE(list.startsWith(QStringLiteral("|月末盘点|") + recurring + QLatin1Char('|'))) << list.toStdString();
    EXPECT_FALSE(list.contains(QLatin1Char('\t')));
}

// An account's name holding the list's separator stays in the hint.
TEST(ExplainList, AHintHoldingTheSeparatorMakesNoItem)
{
    Listing l;
    const int source = l.g->rows() - 2;
    const QString explain = l.g->text(source, l.explainCol);
    ASSERT_EQ(l.latestWith(explain), source);
    l.g->setText(source, l.g->colIndex(QStringLiteral("AccName")), QStringLiteral("其他应收款|个人"));
    QComboBox *box = l.openList();
    ASSERT_NE(box, nullptr);
    const int at = box->findText(explain);
    ASSERT_GE(at, 0);
    EXPECT_TRUE(box->itemData(at, kx::ComboHints::HintRole).toString().startsWith(QStringLiteral("其他应收款|个人  ")));
    for (int i = 0; i < box->count(); ++i)
        EXPECT_FALSE(box->itemText(i).startsWith(QStringLiteral("个人"))) << box->itemText(i).toStdString();
}

TEST(ExplainList, TheCashierEditsTheKeptListInItsView)
{
    Listing l;
    l.journal.show();
    l.g->setCursor(l.g->rows() - 3, l.explainCol);
    const QString current = l.g->text(l.g->rows() - 3, l.explainCol);
    l.journal.DoCommand(QStringLiteral("ExplainMemo"));
    auto *view = l.journal.findChild<QDialog *>();
    ASSERT_NE(view, nullptr);
    auto *list = view->findChild<QListWidget *>(QStringLiteral("explainMemoList"));
    ASSERT_NE(list, nullptr);
    auto button = [&](const char *text) {
        for (QPushButton *b : view->findChildren<QPushButton *>())
            if (b->text() == QString::fromUtf8(text))
                return b;
        return static_cast<QPushButton *>(nullptr);
    };
    ASSERT_NE(button("添加"), nullptr);
    QTest::mouseClick(button("添加"), Qt::LeftButton);
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), current) << "the current record's explanation";
    QTest::mouseClick(button("添加"), Qt::LeftButton);
    EXPECT_EQ(list->count(), 1) << "once";
    auto *typed = new QListWidgetItem(QStringLiteral("备用金报销"), list);
    typed->setFlags(typed->flags() | Qt::ItemIsEditable);
    list->setCurrentItem(typed);
    QTest::mouseClick(button("上移"), Qt::LeftButton);
    QTest::mouseClick(button("保存"), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(kx::ExplainMemo::load(l.acc->Connection(), l.book).value(), QStringList({QStringLiteral("备用金报销"), current}));

    // The list typed from follows at once.
    QComboBox *box = l.openList();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->itemText(0), QStringLiteral("备用金报销"));
    EXPECT_EQ(box->itemText(1), current);
}

TEST(ExplainList, TheViewOutlivesItsContextAndGoesWithTheControl)
{
    auto l = std::make_unique<Listing>();
    l->journal.show();
    l->journal.DoCommand(QStringLiteral("ExplainMemo"));
    QPointer<QDialog> view = l->journal.findChild<QDialog *>();
    ASSERT_FALSE(view.isNull());
    l->acc.reset();
    auto *list = view->findChild<QListWidget *>(QStringLiteral("explainMemoList"));
    new QListWidgetItem(QStringLiteral("付水电费"), list);
    for (QPushButton *b : view->findChildren<QPushButton *>())
        if (b->text() == QStringLiteral("保存"))
            QTest::mouseClick(b, Qt::LeftButton);
    ASSERT_FALSE(view.isNull()) << "a refused save keeps the view open";
    bool told = false;
    for (QLabel *label : view->findChildren<QLabel *>())
        told = told || label->text() == QStringLiteral("没有连接到账套。");
    EXPECT_TRUE(told);
    EXPECT_EQ(list->count(), 1) << "what was typed stays";
    l.reset();
    EXPECT_TRUE(view.isNull());
}

// A kept list opened for one book is not saved into another.
TEST(ExplainList, OpeningAgainOnAnotherBookShowsThatBooksList)
{
    kxtest::TestDatabase db(kxtest::Engine::Sqlite);
    kx::Database conn = db.open();
    const int first = kxtest::fillSampleBooks(conn, 40, 2);
    ASSERT_TRUE(kx::ExplainMemo::save(conn, first, {QStringLiteral("第一本的摘要")}).ok());
    kx::SqlAccContext acc(db.open());
    kx::Journal journal;
    journal.setAcc(&acc);
    journal.setAsker([](const QString &, const QString &) { return true; });
    ASSERT_TRUE(journal.Load(first));
    journal.show();
    journal.DoCommand(QStringLiteral("ExplainMemo"));
    const kx::Result<QVariant> other =
        kx::sqlScalar(conn, {QStringLiteral("SELECT MIN(asID) FROM kxJournal WHERE asID <> %1 AND AssistCode LIKE '0201%'").arg(first), {}});
    ASSERT_TRUE(other.ok());
    ASSERT_TRUE(journal.Load(other.value().toInt()));
    journal.DoCommand(QStringLiteral("ExplainMemo"));
    QCoreApplication::processEvents();
    const QList<QListWidget *> lists = journal.findChildren<QListWidget *>(QStringLiteral("explainMemoList"));
    ASSERT_EQ(lists.size(), 1);
    EXPECT_EQ(lists.first()->count(), 0) << "the second book keeps nothing yet";
}
