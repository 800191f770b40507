// Merges that meet other users' changes more than once, records moved to
// another book, and links stored at once: what was merged or stored becomes
// the base the next save judges against, and another book's record stays there.
#include "editing/EditingBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>

#include <gtest/gtest.h>

using kxtest::EditingBook;
using kxtest::Engine;

namespace {

class MergeAgain : public ::testing::TestWithParam<Engine>
{
protected:
    static QVariant stored(const EditingBook &b, const char *field, int key)
    {
        return b.db->open()
            .scalar({QStringLiteral("Select %1 From kxJournalRecs Where RecID=?").arg(QLatin1String(field)), {key}})
            .valueOr(QVariant());
    }
    static int key(const EditingBook &b, int row) { return int(b.grid->number(row, b.col("RecID"))); }
    static void set(kx::Database &db, const char *field, const QVariant &value, int key)
    {
        ASSERT_TRUE(db.run({QStringLiteral("Update kxJournalRecs Set %1=? Where RecID=?").arg(QLatin1String(field)), {value, key}}).ok());
    }
};

} // namespace

// A value taken from a second user in the first round is no change of this
// user's in the next round, when a third user changed the field again.
TEST_P(MergeAgain, ATakenValueIsNotThisUsersOwnInTheNextRound)
{
    EditingBook b(GetParam());
    kx::Database other = b.db->open();
    const int key3 = key(b, 3), key4 = key(b, 4);
    QStringList questions;
    int asked = 0;
    b.journal->setAsker([&](const QString &text, const QString &) {
        if (!text.contains(QStringLiteral("其他用户")))
            return true;
        questions << text;
        // While the first question is open a third user corrects row 4 again.
        if (asked++ == 0)
            set(other, "Remark", QStringLiteral("第三人的备注"), key4);
        return true;  // keep this user's own typing
    });
    set(other, "Remark", QStringLiteral("第二人的备注"), key4);  // only they change row 4
    set(other, "Explain", QStringLiteral("第二人的摘要"), key3);  // both change row 3
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("我的摘要")));
    ASSERT_TRUE(b.type(4, "Explain", QStringLiteral("我的第四行")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    for (const QString &q : questions)
        std::printf("Q: %s\n", qPrintable(q));
    // This user never typed a remark on row 4: the third user's stays.
    EXPECT_EQ(stored(b, "Remark", key4).toString(), QStringLiteral("第三人的备注"));
    EXPECT_EQ(questions.size(), 1) << "row 4's remark was only changed by others";
}

// A record this user deleted, moved to another book by someone else.
TEST_P(MergeAgain, ARemovedRecordMovedToAnotherBookDoesNotBlockTheSave)
{
    EditingBook b(GetParam());
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    kx::Database other = b.db->open();
    kxtest::BookBuilder builder(other);
    const int elsewhere = builder.book(QStringLiteral("0299"), QStringLiteral("别的账"));
    const int key4 = key(b, 4);
    set(other, "DocID", elsewhere, key4);
    b.grid->select(4, b.col("Explain"), 4, b.col("Explain"));
    ASSERT_TRUE(b.journal->DeleteRows());
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("我的")));
    const bool saved = b.journal->Save();
    std::printf("said: %s\n", qPrintable(b.said.join(QLatin1Char('|'))));
    EXPECT_TRUE(saved);
    EXPECT_EQ(stored(b, "DocID", key4).toInt(), elsewhere) << "the other book keeps its record";
}

// A record this user changed, moved to another book by someone else: "是".
TEST_P(MergeAgain, AChangedRecordMovedElsewhereIsNotTakenBack)
{
    EditingBook b(GetParam());
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    kx::Database other = b.db->open();
    kxtest::BookBuilder builder(other);
    const int elsewhere = builder.book(QStringLiteral("0299"), QStringLiteral("别的账"));
    const int key3 = key(b, 3);
    set(other, "DocID", elsewhere, key3);
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("我改的")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "DocID", key3).toInt(), elsewhere) << "the record was pulled back out of the other book";
    EXPECT_NE(key(b, 3), key3);
}

// A link stored at once, then removed by another user: not silently put back.
TEST_P(MergeAgain, ALinkStoredAtOnceIsTheBaselineForTheNextMerge)
{
    EditingBook b(GetParam());
    QStringList questions;
    b.journal->setAsker([&](const QString &text, const QString &) {
        questions << text;
        return true;
    });
    kx::Database other = b.db->open();
    kxtest::BookBuilder builder(other);
    const int voucher = builder.voucher(QStringLiteral("2025-01-10"), QStringLiteral("记"), 3);
    const int key3 = key(b, 3);
    b.journal->setDirID(voucher, 3);
    ASSERT_EQ(stored(b, "DirID", key3).toInt(), voucher);
    set(other, "DirID", 0, key3);  // the other user unlinks it
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("600")));  // moves row 3's balance
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(stored(b, "DirID", key3).toInt(), 0) << "the unlink was silently undone; questions: " << questions.size();
}

INSTANTIATE_TEST_SUITE_P(Engines, MergeAgain, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
