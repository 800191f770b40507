// Inserting, deleting, renumbering rows, deleting history, closing and
// checking the book, through the control's public members.
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>

#include <gtest/gtest.h>

using kxtest::EditingBook;
using kxtest::Engine;

namespace {

QStringList texts(const EditingBook &b, const char *key)
{
    QStringList out;
    for (int r = 1; r < b.grid->rows(); ++r)
        out << b.text(r, key);
    return out;
}

int storedRecords(const EditingBook &b)
{
    return kx::sqlScalar(b.db->open(), {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=%1").arg(b.book), {}})
        .value()
        .toInt();
}

struct Asked {
    QString text, title;
};

class RowWork : public ::testing::TestWithParam<Engine>
{
};

} // namespace

TEST_P(RowWork, DeletedRowsLeaveTheDatabaseOnlyWithTheNextSave)
{
    EditingBook b(GetParam());
    QList<Asked> asked;
    bool yes = false;
    b.journal->setAsker([&](const QString &t, const QString &title) {
        asked << Asked{t, title};
        return yes;
    });
    QStringList commands;
    QObject::connect(b.journal.get(), &kx::Journal::CommandExecute,
                     [&](const QString &name, bool &) { commands << name; });
    const int explain = b.col("Explain");

    b.grid->select(2, explain, 3, explain);
    EXPECT_FALSE(b.journal->DeleteRows()) << "No is the answer by default";
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked.first().text, QStringLiteral("是否删除当前被选中的 2 行？"));
    EXPECT_EQ(asked.first().title, QStringLiteral("删除行"));
    EXPECT_EQ(b.grid->rows(), 6);

    yes = true;
    b.grid->select(1, explain, 1, explain);
    EXPECT_FALSE(b.journal->DeleteRows()) << "the opening row is never deleted";
    EXPECT_EQ(asked.last().text, QStringLiteral("是否删除当前行？"));
    EXPECT_EQ(b.text(1, "Explain"), QStringLiteral("期初余额"));

    b.grid->select(2, explain, 3, explain);
    ASSERT_TRUE(b.journal->DeleteRows());
    EXPECT_EQ(texts(b, "Explain"), (QStringList{QStringLiteral("期初余额"), QStringLiteral("报销差旅费"), QString()}));
    EXPECT_EQ(b.grid->amount(2, b.col("Balance")), kx::Currency::fromRaw(9500000)) << "1000 − 50";
    EXPECT_TRUE(b.said.contains(QStringLiteral("已删除 2 行；")));
    EXPECT_TRUE(commands.contains(QStringLiteral("AfterDeleted")));
    EXPECT_TRUE(b.journal->IsDirty());
    EXPECT_EQ(storedRecords(b), 4) << "nothing is deleted before Save";

    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));
    ASSERT_TRUE(b.journal->redo());
    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(storedRecords(b), 2);
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(texts(b, "Explain"), (QStringList{QStringLiteral("期初余额"), QStringLiteral("报销差旅费"), QString()}));
}

TEST_P(RowWork, InsertingOpensEmptyRowsBelowTheOpeningRowOnly)
{
    EditingBook b(GetParam());
    const int explain = b.col("Explain");
    b.grid->select(1, explain, 3, explain);
    ASSERT_TRUE(b.journal->InsertRows());
    EXPECT_EQ(texts(b, "Explain"), (QStringList{QStringLiteral("期初余额"), QString(), QString(), QStringLiteral("收到货款"),
                                                QStringLiteral("付材料款"), QStringLiteral("报销差旅费"), QString()}));
    EXPECT_TRUE(b.said.contains(QStringLiteral("已插入 2行。")));
    EXPECT_FALSE(b.journal->IsDirty()) << "an empty row stores nothing";
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("新行")));
    ASSERT_TRUE(b.journal->undo());
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.grid->rows(), 6) << "the insertion is one step";

    b.journal->setAllowModify(false);
    EXPECT_FALSE(b.journal->InsertRows());
    EXPECT_EQ(b.grid->rows(), 6);
}

TEST_P(RowWork, RenumberingFollowsTheRowAboveAndSkipsSummaryRows)
{
    EditingBook b(GetParam());
    const int no = b.col("JnlNo");
    b.grid->select(1, no, 2, no);
    kxtest::runMenuItem(*b.journal, "mnuRenumber");
    EXPECT_EQ(texts(b, "JnlNo").mid(0, 2), (QStringList{QStringLiteral("1"), QStringLiteral("2")}));

    b.grid->setText(2, no, QStringLiteral("A0099"));
    ASSERT_TRUE(b.journal->InsSumRow(2));  // row 3 is a sub-total now, closing rows 1–2
    b.grid->select(2, no, 5, no);
    kxtest::runMenuItem(*b.journal, "mnuRenumber");
    EXPECT_EQ(b.text(2, "JnlNo"), QStringLiteral("A0099")) << "a closed record keeps its number";
    EXPECT_TRUE(b.text(3, "JnlNo").isEmpty()) << "a summary row keeps its text and takes no number";
    EXPECT_EQ(b.text(4, "JnlNo"), QStringLiteral("A0100"));
    EXPECT_EQ(b.text(5, "JnlNo"), QStringLiteral("A0101"));
    EXPECT_EQ(b.grid->rowData(5).toInt(), 2);

    b.grid->setText(4, no, QStringLiteral("9"));
    b.grid->select(5, no, 5, no);
    kxtest::runMenuItem(*b.journal, "mnuRenumber");
    EXPECT_EQ(b.text(5, "JnlNo"), QStringLiteral("10")) << "the width grows with the number";
}

TEST_P(RowWork, DeletingHistoryAsksThenDeletesAtOnceAndForGood)
{
    EditingBook b(GetParam());
    b.acc->setBeginDate(QDate(2025, 1, 11));
    QString question;
    bool yes = false;
    b.journal->setAsker([&](const QString &t, const QString &) {
        question = t;
        return yes;
    });
    kxtest::runMenuItem(*b.journal, "mnuDelHistory");
    EXPECT_TRUE(question.contains(QStringLiteral("不能恢复"))) << qPrintable(question);
    EXPECT_EQ(storedRecords(b), 4);

    yes = true;
    ASSERT_TRUE(b.type(4, "Explain", QStringLiteral("差旅费")));
    kxtest::runMenuItem(*b.journal, "mnuDelHistory");
    EXPECT_EQ(storedRecords(b), 2) << "the two records before 2025-01-11 went; the opening balance stays";
    EXPECT_EQ(texts(b, "Explain"), (QStringList{QStringLiteral("期初余额"), QStringLiteral("差旅费"), QString()}));
    EXPECT_TRUE(b.said.contains(QStringLiteral("删除以前记录共 2 条;")));
    EXPECT_FALSE(b.journal->canUndo()) << "what is deleted from the database is not undone";
    EXPECT_TRUE(b.journal->IsDirty()) << "the edit made before is still to be saved";
    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(storedRecords(b), 2);
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("差旅费"));
}

TEST_P(RowWork, ClosingAddsTheMonthEndRowAndClosingAgainTakesItAway)
{
    EditingBook b(GetParam());
    b.journal->setLockedForeColor(QColor(Qt::gray));
    const int lastBefore = b.journal->LastSumRow();
    QStringList commands;
    QObject::connect(b.journal.get(), &kx::Journal::CommandExecute,
                     [&](const QString &name, bool &) { commands << name; });
    ASSERT_TRUE(b.journal->CloseBook());
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("本月结余"));
    EXPECT_EQ(b.text(5, "ShowName"), QStringLiteral("2025年01月"));
    EXPECT_EQ(b.text(5, "JnlDate"), QStringLiteral("2025-01-15"));
    EXPECT_EQ(b.text(5, "Tag"), QStringLiteral("-1"));
    EXPECT_TRUE(b.grid->isSubtotal(5));
    EXPECT_EQ(b.grid->amount(5, b.col("Debit")), kx::Currency::fromRaw(15000000)) << "the debits since the opening, on the first line";
    EXPECT_EQ(b.journal->LastSumRow(), 5);
    for (int r = 1; r <= 4; ++r)
        EXPECT_EQ(b.grid->rowForeColor(r), QColor(Qt::gray)) << r;
    EXPECT_TRUE(b.text(6, "Explain").isEmpty()) << "the empty row stays at the bottom";
    EXPECT_TRUE(commands.contains(QStringLiteral("AfterClosed")));
    EXPECT_TRUE(b.journal->IsDirty());

    b.journal->setAsker([](const QString &, const QString &) { return true; });
    ASSERT_TRUE(b.journal->CloseBook());
    EXPECT_EQ(b.grid->rows(), 6);
    EXPECT_EQ(b.journal->LastSumRow(), lastBefore);
    EXPECT_TRUE(commands.contains(QStringLiteral("AfterAntiClosed")));

    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("本月结余"));
    EXPECT_EQ(b.journal->LastSumRow(), 5) << "undo gives the closing back with its summary row";
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.grid->rows(), 6);
    EXPECT_EQ(b.grid->rowForeColor(2), QColor()) << "the closing's colours go with it";
}

TEST_P(RowWork, CheckingFindsUndatedRowsAndDatesGoingBack)
{
    EditingBook b(GetParam());
    EXPECT_TRUE(b.journal->CheckBook());
    const int date = b.col("JnlDate");
    b.grid->setText(3, date, QStringLiteral("2025-01-01"));
    EXPECT_FALSE(b.journal->CheckBook());
    EXPECT_EQ(b.boxes.last(), QStringLiteral("记录中有日期顺序错误。"));
    EXPECT_EQ(b.grid->row(), 3);
    b.grid->setText(3, date, QStringLiteral("2025-01-05"));
    EXPECT_TRUE(b.journal->CheckBook()) << "two records on one day are in order";
    b.grid->setText(4, date, QString());
    EXPECT_FALSE(b.journal->CheckBook());
    EXPECT_EQ(b.boxes.last(), QStringLiteral("记录中有无日期的行。"));
    b.grid->setText(4, b.col("Credit"), QString());
    EXPECT_TRUE(b.journal->CheckBook()) << "a row without amounts needs no date";
}

TEST(RowWorkEmpty, ClosingAnEmptyBookSaysSo)
{
    kx::Journal j;
    j.Grid()->setRows(3);
    QStringList said;
    QObject::connect(&j, &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    j.setDocID(1);
    EXPECT_FALSE(j.CloseBook());
    EXPECT_EQ(said, QStringList{QStringLiteral("未输入记录，无法执行结账操作。")});
}

INSTANTIATE_TEST_SUITE_P(Engines, RowWork, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
