// A save never drops what a user entered: rows with a record's content but
// no date stop it, named; and changes by two users to one book meet field by
// field, so neither side's work is lost to a question about the other's.
// What was merged, or stored at once, is the base the next save judges
// against, and a record moved to another book stays there.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>

#include <gtest/gtest.h>

using kxtest::EditingBook;
using kxtest::Engine;

namespace {

class NothingLost : public ::testing::TestWithParam<Engine>
{
protected:
    QVariant stored(const EditingBook &b, const char *field, int key) const
    {
        return kx::sqlScalar(b.db->open(), {QStringLiteral("Select %1 From kxJournalRecs Where RecID=?").arg(QLatin1String(field)), {key}})
            .valueOr(QVariant());
    }

    int count(const EditingBook &b) const
    {
        return kx::sqlScalar(b.db->open(), {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=?"), {b.book}})
            .valueOr(QVariant())
            .toInt();
    }

    static int key(const EditingBook &b, int row) { return int(b.grid->number(row, b.col("RecID"))); }

    // Another user sets \a field of record \a key to \a value.
    static void set(const EditingBook &b, const char *field, const QVariant &value, int key)
    {
        ASSERT_TRUE(kx::sqlRun(b.db->open(), {QStringLiteral("Update kxJournalRecs Set %1=? Where RecID=?").arg(QLatin1String(field)), {value, key}})
                        .ok());
    }

    // Every question goes to \a questions and is answered yes.
    static void answerEveryQuestion(EditingBook &b, QStringList &questions)
    {
        b.journal->setAsker([&questions](const QString &text, const QString &) {
            questions << text;
            return true;
        });
    }

    // A voucher of the period to link records to.
    static int aVoucher(const EditingBook &b)
    {
        kx::Database db = b.db->open();
        return kxtest::BookBuilder(db).voucher(QStringLiteral("2025-01-10"), QStringLiteral("记"), 3);
    }

    // A second book of the same accounts, for records moved there.
    static int anotherBook(const EditingBook &b)
    {
        kx::Database db = b.db->open();
        return kxtest::BookBuilder(db).book(QStringLiteral("0299"), QStringLiteral("别的账"));
    }

    // Questions about other users' changes go to \a questions and are
    // answered \a mine; any other question is answered yes.
    static void answerConflicts(EditingBook &b, QStringList &questions, const bool &mine)
    {
        b.journal->setAsker([&questions, &mine](const QString &text, const QString &) {
            if (!text.contains(QStringLiteral("其他用户")))
                return true;
            questions << text;
            return mine;
        });
    }
};

} // namespace

TEST_P(NothingLost, RowsWithContentButNoDateStopTheSaveNamed)
{
    EditingBook b(GetParam());
    const int key2 = key(b, 2);
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("改过的货款")));
    // A typed record whose date was never given.
    const int typed = b.grid->rows() - 1;
    ASSERT_TRUE(b.type(typed, "Explain", QStringLiteral("忘了日期")));
    ASSERT_TRUE(b.type(typed, "Debit", QStringLiteral("30")));
    b.said.clear();
    EXPECT_FALSE(b.journal->Save());
    const QString why = b.said.join(QLatin1Char('\n'));
    EXPECT_TRUE(why.contains(QStringLiteral("第%1行").arg(typed)) && why.contains(QStringLiteral("没有日期"))) << qPrintable(why);
    EXPECT_FALSE(why.contains(QStringLiteral("已存储"))) << qPrintable(why);
    EXPECT_TRUE(b.journal->IsDirty());
    EXPECT_EQ(b.grid->row(), typed) << "the cursor goes to the row to date";
    EXPECT_EQ(stored(b, "Explain", key2).toString(), QStringLiteral("收到货款")) << "nothing of the pass is stored";
    EXPECT_EQ(count(b), 4);
    ASSERT_TRUE(b.journal->undo()) << "a refused save keeps the steps before it";
    EXPECT_EQ(b.text(typed, "Debit"), QString());
    ASSERT_TRUE(b.journal->redo());

    // A pasted block whose one date is refused leaves that row undated.
    const int pasted = b.grid->rows() - 1;
    b.grid->setCursor(pasted, b.col("ShowName"));
    ASSERT_TRUE(b.journal->pasteText(
        kxtest::pasteLine(b, {{QStringLiteral("ShowName"), QStringLiteral("2025-01-20")}, {QStringLiteral("Explain"), QStringLiteral("甲")},
                 {QStringLiteral("Debit"), QStringLiteral("1")}}) +
        QLatin1Char('\n') +
        kxtest::pasteLine(b, {{QStringLiteral("ShowName"), QStringLiteral("2025-13-40")}, {QStringLiteral("Explain"), QStringLiteral("乙")},
                 {QStringLiteral("Credit"), QStringLiteral("2")}})));
    b.said.clear();
    EXPECT_FALSE(b.journal->Save());
    EXPECT_TRUE(b.said.join(QLatin1Char('\n')).contains(QStringLiteral("第%1行、第%2行").arg(typed).arg(pasted + 1)))
        << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(count(b), 4);

    // Dated, everything goes; the empty row waiting at the bottom stays out.
    ASSERT_TRUE(b.type(typed, "ShowName", QStringLiteral("2025-01-18")));
    ASSERT_TRUE(b.type(pasted + 1, "ShowName", QStringLiteral("2025-01-21")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(count(b), 7);
    EXPECT_EQ(stored(b, "Explain", key2).toString(), QStringLiteral("改过的货款"));
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(b.text(pasted + 1, "Explain"), QStringLiteral("乙"));
}

// Another user's correction and this user's amount meet without a question;
// only a field both changed is asked about, and either answer keeps the rest.
TEST_P(NothingLost, ConflictsAreJudgedFieldByField)
{
    EditingBook b(GetParam());
    QStringList questions;
    bool mine = true;
    answerConflicts(b, questions, mine);
    const int key2 = key(b, 2), key3 = key(b, 3), key4 = key(b, 4);

    // They correct row 4's explanation; this user's amount on row 2 moves row 4's balance.
    set(b, "Explain", QStringLiteral("别人改的摘要"), key4);
    set(b, "Remark", QStringLiteral("别人的备注"), key4);
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("600")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_TRUE(questions.isEmpty()) << qPrintable(questions.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "Explain", key4).toString(), QStringLiteral("别人改的摘要"));
    EXPECT_EQ(stored(b, "Remark", key4).toString(), QStringLiteral("别人的备注"));
    EXPECT_EQ(stored(b, "Debit", key2).toString(), QStringLiteral("600"));
    EXPECT_EQ(stored(b, "balance", key4).toString(), QStringLiteral("1350")) << "1000 + 600 − 200 − 50, worked out again";
    EXPECT_EQ(b.text(4, "Explain"), QStringLiteral("别人改的摘要")) << "the grid shows what is stored";
    EXPECT_FALSE(b.journal->IsDirty());

    // Both change row 3's explanation; "否" takes theirs and keeps this user's amount.
    set(b, "Explain", QStringLiteral("别人再改"), key3);
    set(b, "Field1", QStringLiteral("别人的字段"), key3);
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("我改的")));
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("700")));
    mine = false;
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    ASSERT_EQ(questions.size(), 1);
    EXPECT_TRUE(questions[0].contains(QStringLiteral("第3行")) && questions[0].contains(QStringLiteral("摘要")) &&
                questions[0].contains(QStringLiteral("我改的")) && questions[0].contains(QStringLiteral("别人再改")))
        << qPrintable(questions[0]);
    EXPECT_EQ(questions[0].count(QStringLiteral("第")), 1) << "only the field changed on both sides is asked about";
    EXPECT_EQ(stored(b, "Explain", key3).toString(), QStringLiteral("别人再改"));
    EXPECT_EQ(stored(b, "Field1", key3).toString(), QStringLiteral("别人的字段"));
    EXPECT_EQ(stored(b, "Debit", key2).toString(), QStringLiteral("700"));

    // "是" keeps this user's text and still takes what only they changed.
    set(b, "Explain", QStringLiteral("第三个人的"), key4);
    set(b, "Field2", QStringLiteral("第三个人的字段"), key4);
    ASSERT_TRUE(b.type(4, "Explain", QStringLiteral("我的第四行")));
    mine = true;
    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(stored(b, "Explain", key4).toString(), QStringLiteral("我的第四行"));
    EXPECT_EQ(stored(b, "Field2", key4).toString(), QStringLiteral("第三个人的字段"));
    EXPECT_EQ(stored(b, "Debit", key2).toString(), QStringLiteral("700"));
}

TEST_P(NothingLost, ARecordDeletedOnOneSideAndChangedOnTheOtherIsAskedAbout)
{
    EditingBook b(GetParam());
    QStringList questions;
    bool mine = true;
    answerConflicts(b, questions, mine);
    kx::Database other = b.db->open();
    const int key3 = key(b, 3), key4 = key(b, 4);

    // Deleted there, changed here: "是" stores it again, under a new key.
    ASSERT_TRUE(kx::sqlRun(other, kx::sqlDialect(other).deleteRecord(key3)).ok());
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("我还要这条")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    ASSERT_EQ(questions.size(), 1);
    EXPECT_TRUE(questions[0].contains(QStringLiteral("删除"))) << qPrintable(questions[0]);
    EXPECT_GT(key(b, 3), key4);
    EXPECT_EQ(stored(b, "Explain", key(b, 3)).toString(), QStringLiteral("我还要这条"));
    EXPECT_EQ(count(b), 4);

    // Deleted there, only its balance moved here: it goes, without a question.
    ASSERT_TRUE(kx::sqlRun(other, kx::sqlDialect(other).deleteRecord(key4)).ok());
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("900")));
    b.said.clear();
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(count(b), 3);
    EXPECT_NE(b.text(4, "Explain"), QStringLiteral("报销差旅费"));
    EXPECT_TRUE(b.said.join(QLatin1Char('\n')).contains(QStringLiteral("已被其他用户删除"))) << qPrintable(b.said.join(QLatin1Char('\n')));

    // Removed here, changed there: "否" keeps their record, and the grid shows it again.
    const int key2 = key(b, 2);
    set(b, "Explain", QStringLiteral("别人刚改"), key2);
    b.grid->select(2, b.col("Explain"), 2, b.col("Explain"));
    ASSERT_TRUE(b.journal->DeleteRows());
    mine = false;
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(stored(b, "Explain", key2).toString(), QStringLiteral("别人刚改"));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("别人刚改"));
}

// A voucher linked to a record another user corrected, then a save of an
// amount elsewhere: their text, the link and the amount all stay.
TEST_P(NothingLost, ALinkToARecordChangedElsewhereLosesNothing)
{
    EditingBook b(GetParam());
    QStringList questions;
    answerEveryQuestion(b, questions);
    const int voucher = aVoucher(b);
    const int key3 = key(b, 3);
    set(b, "Explain", QStringLiteral("别人改的"), key3);
    b.journal->setDirID(voucher, 3);
    ASSERT_EQ(b.journal->DirID(3), voucher) << qPrintable(b.said.join(QLatin1Char('\n')));
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("650")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_TRUE(questions.isEmpty()) << qPrintable(questions.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "Explain", key3).toString(), QStringLiteral("别人改的"));
    EXPECT_EQ(stored(b, "DirID", key3).toInt(), voucher);
    EXPECT_EQ(stored(b, "Debit", key(b, 2)).toString(), QStringLiteral("650"));

    // A voucher that does not exist, or a record moved to another book, takes no link.
    b.said.clear();
    b.journal->setDirID(voucher + 100, 4);
    EXPECT_EQ(b.journal->DirID(4), 0);
    EXPECT_EQ(stored(b, "DirID", key(b, 4)).toInt(), 0);
    const int elsewhere = anotherBook(b);
    set(b, "DocID", elsewhere, key(b, 4));
    b.journal->setDirID(voucher, 4);
    EXPECT_EQ(b.journal->DirID(4), 0);
    EXPECT_EQ(stored(b, "DirID", key(b, 4)).toInt(), 0);
    EXPECT_TRUE(b.said.join(QLatin1Char('\n')).contains(QStringLiteral("第4行"))) << qPrintable(b.said.join(QLatin1Char('\n')));
}

// A month closed in this session takes no typing, paste or clearing, as one
// closed before the book was read does not.
TEST_P(NothingLost, AMonthClosedNowIsClosedToEditsAtOnce)
{
    EditingBook b(GetParam());
    ASSERT_TRUE(b.journal->CloseBook());
    EXPECT_FALSE(b.type(3, "Explain", QStringLiteral("结账后改的")));
    EXPECT_FALSE(b.type(2, "Debit", QStringLiteral("1")));
    b.grid->setCursor(3, b.col("Explain"));
    b.journal->pasteText(QStringLiteral("贴上的"));
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));
    EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
    // Reopened, it takes them again.
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    ASSERT_TRUE(b.journal->CloseBook());
    EXPECT_TRUE(b.type(3, "Explain", QStringLiteral("重开后改的")));

    // Reading the book again, unsaved, leaves nothing to save.
    ASSERT_TRUE(b.journal->IsDirty());
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_FALSE(b.journal->IsDirty());
}

// A value taken from a second user in the first round is no change of this
// user's in the next round, when a third user changed the field again.
TEST_P(NothingLost, ATakenValueIsNotThisUsersOwnInTheNextRound)
{
    EditingBook b(GetParam());
    const int key3 = key(b, 3), key4 = key(b, 4);
    QStringList questions;
    int asked = 0;
    b.journal->setAsker([&](const QString &text, const QString &) {
        if (!text.contains(QStringLiteral("其他用户")))
            return true;
        questions << text;
        // While the first question is open a third user corrects row 4 again.
        if (asked++ == 0)
            set(b, "Remark", QStringLiteral("第三人的备注"), key4);
        return true;  // keep this user's own typing
    });
    set(b, "Remark", QStringLiteral("第二人的备注"), key4);  // only they change row 4
    set(b, "Explain", QStringLiteral("第二人的摘要"), key3);  // both change row 3
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("我的摘要")));
    ASSERT_TRUE(b.type(4, "Explain", QStringLiteral("我的第四行")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    // This user never typed a remark on row 4: the third user's stays.
    EXPECT_EQ(stored(b, "Remark", key4).toString(), QStringLiteral("第三人的备注"));
    EXPECT_EQ(questions.size(), 1) << "row 4's remark was only changed by others";
}

// A record this user deleted, moved to another book by someone else.
TEST_P(NothingLost, ARemovedRecordMovedToAnotherBookDoesNotBlockTheSave)
{
    EditingBook b(GetParam());
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    const int elsewhere = anotherBook(b);
    const int key4 = key(b, 4);
    set(b, "DocID", elsewhere, key4);
    b.grid->select(4, b.col("Explain"), 4, b.col("Explain"));
    ASSERT_TRUE(b.journal->DeleteRows());
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("我的")));
    EXPECT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "DocID", key4).toInt(), elsewhere) << "the other book keeps its record";
}

// A record this user changed, moved to another book by someone else: "是".
TEST_P(NothingLost, AChangedRecordMovedElsewhereIsNotTakenBack)
{
    EditingBook b(GetParam());
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    const int elsewhere = anotherBook(b);
    const int key3 = key(b, 3);
    set(b, "DocID", elsewhere, key3);
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("我改的")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "DocID", key3).toInt(), elsewhere) << "the record was pulled back out of the other book";
    EXPECT_NE(key(b, 3), key3);
}

// A link stored at once, then removed by another user: not silently put back.
TEST_P(NothingLost, ALinkStoredAtOnceIsTheBaselineForTheNextMerge)
{
    EditingBook b(GetParam());
    QStringList questions;
    answerEveryQuestion(b, questions);
    const int voucher = aVoucher(b);
    const int key3 = key(b, 3);
    b.journal->setDirID(voucher, 3);
    ASSERT_EQ(stored(b, "DirID", key3).toInt(), voucher);
    set(b, "DirID", 0, key3);  // the other user unlinks it
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("600")));  // moves row 3's balance
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "DirID", key3).toInt(), 0) << "the unlink was silently undone; questions: " << questions.size();
}


INSTANTIATE_TEST_SUITE_P(Engines, NothingLost, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
