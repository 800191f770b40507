// Nothing typed or stored is lost: a load that fails leaves the book the
// grid holds where it is, and a save never overwrites what somebody else
// stored since this control read it without asking.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QRandomGenerator>
#include <gtest/gtest.h>

using kx::Journal;
using kxtest::Engine;

namespace {

class DataSafety : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        kx::Database db = testDb->open();
        bookA = kxtest::fillSampleBooks(db, 120, 2);
        bookB = kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {QStringLiteral("020102")}})
                    .valueOr(QVariant())
                    .toInt();
        ASSERT_GT(bookA, 0);
        ASSERT_GT(bookB, 0);
        acc = std::make_unique<kx::SqlAccContext>(testDb->open());
        acc->setBeginDate(QDate(2025, 1, 1));
        journal = makeJournal(acc.get(), said);
    }

    static std::unique_ptr<Journal> makeJournal(kx::SqlAccContext *context, QStringList &messages)
    {
        auto j = std::make_unique<Journal>();
        j->setAcc(context);
        QObject::connect(j.get(), &Journal::Notify, [&messages](const QString &m, bool) { messages << m; });
        // A question nobody expects is a failure, never a dialog waiting for a click.
        j->setAsker([](const QString &text, const QString &) {
            ADD_FAILURE() << "unexpected question: " << text.toStdString();
            return false;
        });
        return j;
    }

    int count(int doc) const
    {
        return kx::sqlScalar(testDb->open(), {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=?"), {doc}})
            .valueOr(QVariant())
            .toInt();
    }

    QString storedExplain(int key) const
    {
        return kx::sqlScalar(testDb->open(), {QStringLiteral("Select Explain From kxJournalRecs Where RecID=?"), {key}})
            .valueOr(QVariant())
            .toString();
    }

    // The first row after the opening row that is an ordinary stored record.
    static int recordRow(const Journal &j, int after = 0)
    {
        const kx::Sheet *g = kx::Sheet::of(j.Grid());
        for (int r = std::max(g->fixedRows() + 1, after + 1); r < g->rows(); ++r)
            if (g->number(r, g->colIndex(QStringLiteral("RecID"))) > 0 &&
                g->text(r, g->colIndex(QStringLiteral("Explain"))) != QStringLiteral("小结"))
                return r;
        return -1;
    }

    static int keyAt(const Journal &j, int row)
    {
        return int(kx::Sheet::of(j.Grid())->number(row, j.Grid()->colIndex(QStringLiteral("RecID"))));
    }

    static void edit(Journal &j, int row, const QString &explain)
    {
        j.Grid()->setText(row, QStringLiteral("Explain"), explain);
        j.setIsDirty(true);
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<Journal> journal;
    QStringList said;
    int bookA = 0, bookB = 0;
};

} // namespace

TEST_P(DataSafety, AFailedLoadLeavesTheBookInTheGridWhereItIsStored)
{
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int inA = count(bookA), inB = count(bookB);
    const int row = recordRow(*journal);
    edit(*journal, row, QStringLiteral("未存的修改"));

    // Another program takes the records table away for a moment: the load of B fails.
    kx::Database other = testDb->open();
    ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("ALTER TABLE kxJournalRecs RENAME TO kxJournalRecsAway"), {}}).ok());
    EXPECT_FALSE(journal->Load(bookB));
    ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("ALTER TABLE kxJournalRecsAway RENAME TO kxJournalRecs"), {}}).ok());
    EXPECT_EQ(journal->DocID(), bookA) << "the control stays on the book it shows";
    EXPECT_TRUE(journal->IsDirty());

    ASSERT_TRUE(journal->Save()) << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(count(bookA), inA);
    EXPECT_EQ(count(bookB), inB);
    EXPECT_EQ(storedExplain(keyAt(*journal, row)), QStringLiteral("未存的修改"));

    // Choosing another book without loading it does not move the grid's rows there either.
    journal->setDocID(bookB);
    edit(*journal, row, QStringLiteral("再改一次"));
    ASSERT_TRUE(journal->Save());
    EXPECT_EQ(count(bookA), inA);
    EXPECT_EQ(count(bookB), inB);
    EXPECT_EQ(storedExplain(keyAt(*journal, row)), QStringLiteral("再改一次"));
}

TEST_P(DataSafety, LoadingABookThatDoesNotExistSaysSoAndKeepsTheBookShown)
{
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int rows = journal->Grid()->rows();
    said.clear();
    EXPECT_FALSE(journal->Load(987654));
    EXPECT_EQ(journal->DocID(), bookA);
    EXPECT_EQ(journal->Grid()->rows(), rows);
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("没有这本日记账"))) << said.join(QLatin1Char('\n')).toStdString();

    // The consolidated journal of a book that does not exist: the same answer on every engine.
    journal->setIsPackedJnl(true);
    said.clear();
    EXPECT_FALSE(journal->Load(987654));
    EXPECT_EQ(journal->DocID(), bookA);
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("没有这本日记账")));
}

TEST_P(DataSafety, ChangesSavedElsewhereAreNeverOverwrittenWithoutAsking)
{
    QStringList saidB;
    kx::SqlAccContext accB(testDb->open());
    accB.setBeginDate(QDate(2025, 1, 1));
    auto b = makeJournal(&accB, saidB);
    journal->setDocID(bookA);
    b->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    ASSERT_TRUE(b->Load());
    const int row2 = recordRow(*journal);
    const int row3 = recordRow(*journal, row2);
    const int key2 = keyAt(*journal, row2);

    // A changes row 2 and saves; B changes row 3 and saves: both changes stay.
    edit(*journal, row2, QStringLiteral("甲改第二行"));
    ASSERT_TRUE(journal->Save());
    edit(*b, row3, QStringLiteral("乙改第三行"));
    ASSERT_TRUE(b->Save()) << saidB.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(storedExplain(key2), QStringLiteral("甲改第二行"));
    EXPECT_EQ(storedExplain(keyAt(*b, row3)), QStringLiteral("乙改第三行"));

    // B now changes row 2 too, which A changed after B read it: B is asked.
    QStringList questions;
    bool answer = false;
    b->setAsker([&](const QString &text, const QString &) {
        questions << text;
        return answer;
    });
    edit(*b, row2, QStringLiteral("乙也改第二行"));
    EXPECT_TRUE(b->Save());
    ASSERT_EQ(questions.size(), 1);
    EXPECT_TRUE(questions.first().contains(QStringLiteral("其他用户"))) << questions.first().toStdString();
    EXPECT_TRUE(questions.first().contains(QString::number(row2))) << "the question names the row";
    EXPECT_EQ(storedExplain(key2), QStringLiteral("甲改第二行")) << "No: their text stays";
    EXPECT_EQ(b->Grid()->text(row2, QStringLiteral("Explain")), QStringLiteral("甲改第二行"))
        << "No: the grid shows what is stored";
    EXPECT_FALSE(b->IsDirty());

    // Asked again after another change elsewhere, B keeps its own version.
    ASSERT_TRUE(kx::sqlRun(testDb->open(), {QStringLiteral("Update kxJournalRecs Set Explain=? Where RecID=?"),
                                    {QStringLiteral("第三个程序改的"), key2}}).ok());
    edit(*b, row2, QStringLiteral("乙坚持自己的"));
    answer = true;
    ASSERT_TRUE(b->Save()) << saidB.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(storedExplain(key2), QStringLiteral("乙坚持自己的"));

}

// A save that rewrites most of a big book checks it whole: the one record
// somebody else changed is still found, and only it.
TEST_P(DataSafety, AChangeElsewhereIsFoundWhenTheWholeBookIsWritten)
{
    kx::Database db = testDb->open();
    const int big = kxtest::fillSampleBooks(db, 2600, 1, QStringLiteral("01"));
    ASSERT_GT(big, 0);
    journal->setDocID(big);
    ASSERT_TRUE(journal->Load());
    kx::Sheet *g = kx::Sheet::of(journal->Grid());
    const int theirs = recordRow(*journal, g->rows() / 2);
    const int key = keyAt(*journal, theirs);
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Remark=? Where RecID=?"), {QStringLiteral("别人的"), key}})
                    .ok());
    for (int r = g->fixedRows(); r < g->rows() - 1; ++r)  // not the empty row waiting at the bottom
        g->setText(r, QStringLiteral("Remark"), QStringLiteral("全部重写"));
    journal->setIsDirty(true);
    QStringList questions;
    journal->setAsker([&](const QString &text, const QString &) {
        questions << text;
        return true;
    });
    ASSERT_TRUE(journal->Save()) << said.join(QLatin1Char('\n')).toStdString();
    ASSERT_EQ(questions.size(), 1);
    EXPECT_TRUE(questions.first().contains(QStringLiteral("第%1行").arg(theirs))) << questions.first().toStdString();
    EXPECT_EQ(questions.first().count(QStringLiteral("第")), 1) << "only the record changed elsewhere is named";
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=? And Remark=?"),
                         {big, QStringLiteral("全部重写")}})
                  .valueOr(QVariant())
                  .toInt(),
              count(big));
}

TEST_P(DataSafety, ARecordKeyTooBigForTheGridIsRefusedAtLoadNotDuplicated)
{
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int rows = journal->Grid()->rows();
    kx::Database db = testDb->open();
    const bool pg = GetParam() == Engine::Postgres;
    if (pg)
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("ALTER TABLE kxJournalRecs ALTER COLUMN RecID TYPE bigint"), {}}).ok());
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("INSERT INTO kxJournalRecs (RecID, DocID, Row, JnlDate, Explain) "
                                       "VALUES (3000000000, ?, 999, ?, ?)"),
                        {bookB, QDate(2025, 6, 1), QStringLiteral("外部程序写的")}})
                    .ok());
    said.clear();
    EXPECT_FALSE(journal->Load(bookB));
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("3000000000"))) << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(journal->DocID(), bookA);
    EXPECT_EQ(journal->Grid()->rows(), rows);
}

// PostgreSQL text cannot hold NUL: the character goes, with a word naming
// the row, instead of every save failing; the grid shows what is stored.
TEST_P(DataSafety, ANulCharacterNeverBlocksASave)
{
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int row = recordRow(*journal);
    const QString typed = QStringLiteral("现金") + QChar(0) + QStringLiteral("收入");
    edit(*journal, row, typed);
    said.clear();
    ASSERT_TRUE(journal->Save()) << said.join(QLatin1Char('\n')).toStdString();
    const bool pg = GetParam() == Engine::Postgres;
    const QString kept = pg ? QStringLiteral("现金收入") : typed;
    EXPECT_EQ(storedExplain(keyAt(*journal, row)), kept);
    EXPECT_EQ(journal->Grid()->text(row, QStringLiteral("Explain")), kept);
    if (pg)
        EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("第%1行").arg(row)))
            << said.join(QLatin1Char('\n')).toStdString();
    // Nothing differs from what is stored: a second save asks nothing and writes nothing.
    journal->setIsDirty(true);
    EXPECT_TRUE(journal->Save());
}

// Values other programs stored in forms this control does not write: dates
// it can read are read (and written back in its own form when the row is
// saved); values it cannot hold make their row read-only and are never
// written back.
TEST_P(DataSafety, OddStoredValuesAreReadOrLeftAloneNeverDestroyed)
{
    const bool pg = GetParam() == Engine::Postgres;
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int timed = recordRow(*journal);
    const int odd = recordRow(*journal, timed);
    const int timedKey = keyAt(*journal, timed), oddKey = keyAt(*journal, odd);
    kx::Database db = testDb->open();
    if (pg) {
        // The server's own types hold only what they can: a timestamp column and a NaN amount.
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("ALTER TABLE kxJournalRecs ALTER COLUMN JnlDate TYPE timestamp"), {}}).ok());
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set JnlDate='2025-01-18 09:30:00' Where RecID=?"), {timedKey}}).ok());
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Debit='NaN' Where RecID=?"), {oddKey}}).ok());
    } else {
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set JnlDate='2025-01-18 09:30:00' Where RecID=?"), {timedKey}}).ok());
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Debit='abc' Where RecID=?"), {oddKey}}).ok());
    }
    // A whole number past what money holds, stored by a program that has no
    // such limit (PostgreSQL's column type refuses it already).
    const int hugeKey = pg ? oddKey : keyAt(*journal, recordRow(*journal, odd));
    if (!pg)
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Credit=10000000000000000 Where RecID=?"), {hugeKey}}).ok());
    // A rate kept to six places, which money's four would round.
    const int fineRow = recordRow(*journal, recordRow(*journal, odd));
    const int fineKey = keyAt(*journal, fineRow);
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set Rate=7.123456 Where RecID=?"), {fineKey}}).ok());
    const QString fineRate = kx::sqlScalar(db, {QStringLiteral("Select Rate From kxJournalRecs Where RecID=?"), {fineKey}})
                                 .valueOr(QVariant())
                                 .toString();
    const QString oddDebit = kx::sqlScalar(db, {QStringLiteral("Select Debit From kxJournalRecs Where RecID=?"), {oddKey}})
                                 .valueOr(QVariant())
                                 .toString();
    said.clear();
    ASSERT_TRUE(journal->Load());
    const QString told = said.join(QLatin1Char('\n'));
    EXPECT_TRUE(told.contains(QString::number(oddKey))) << "the warning lists the record: " << told.toStdString();
    EXPECT_TRUE(told.contains(QString::number(hugeKey))) << told.toStdString();
    EXPECT_TRUE(told.contains(QString::number(fineKey))) << told.toStdString();
    EXPECT_EQ(kx::Sheet::of(journal->Grid())->date(timed, journal->Grid()->colIndex(QStringLiteral("JnlDate"))), QDate(2025, 1, 18));

    // Every row is touched and saved: the readable one is written, the odd one left as it is stored.
    kx::Sheet *g = kx::Sheet::of(journal->Grid());
    for (int r = g->fixedRows(); r < g->rows() - 1; ++r)  // not the empty row waiting at the bottom
        g->setText(r, QStringLiteral("Remark"), QStringLiteral("都改"));
    journal->setIsDirty(true);
    said.clear();
    ASSERT_TRUE(journal->Save()) << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("第%1行").arg(odd)))
        << "an edit that could not be stored is said: " << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select Remark From kxJournalRecs Where RecID=?"), {timedKey}}).valueOr(QVariant()).toString(),
              QStringLiteral("都改"));
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select Debit From kxJournalRecs Where RecID=?"), {oddKey}}).valueOr(QVariant()).toString(),
              oddDebit);
    EXPECT_NE(kx::sqlScalar(db, {QStringLiteral("Select Remark From kxJournalRecs Where RecID=?"), {oddKey}}).valueOr(QVariant()).toString(),
              QStringLiteral("都改"));
    EXPECT_NE(kx::sqlScalar(db, {QStringLiteral("Select Remark From kxJournalRecs Where RecID=?"), {hugeKey}}).valueOr(QVariant()).toString(),
              QStringLiteral("都改"));
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select Rate From kxJournalRecs Where RecID=?"), {fineKey}}).valueOr(QVariant()).toString(),
              fineRate);
}

// Two controls and a third program change one book in random order. Changes
// to different records all survive; a control saving a record somebody else
// changed since it read it is always asked, and its answer is what is stored.
TEST_P(DataSafety, RandomRoundsOfThreeWritersLoseNothingAndAlwaysAskOnOverlap)
{
    struct Control {
        std::unique_ptr<kx::SqlAccContext> acc;
        std::unique_ptr<Journal> journal;
        QStringList said;
        QHash<int, QString> seen;  // what this control last read or wrote, by key
        int asked = 0;
        bool answer = false;
    };
    QHash<int, QString> stored;  // what the database must hold, by key
    QList<int> keys;
    QHash<int, int> rowOf;
    Control controls[2];
    for (Control &c : controls) {
        c.acc = std::make_unique<kx::SqlAccContext>(testDb->open());
        c.acc->setBeginDate(QDate(2025, 1, 1));
        c.journal = makeJournal(c.acc.get(), c.said);
        c.journal->setAsker([&c](const QString &, const QString &) {
            ++c.asked;
            return c.answer;
        });
        c.journal->setDocID(bookA);
        ASSERT_TRUE(c.journal->Load());
    }
    const kx::Sheet *g = kx::Sheet::of(controls[0].journal->Grid());
    for (int r = recordRow(*controls[0].journal); r > 0; r = recordRow(*controls[0].journal, r)) {
        const int key = keyAt(*controls[0].journal, r);
        keys << key;
        rowOf.insert(key, r);
        stored.insert(key, g->text(r, g->colIndex(QStringLiteral("Explain"))));
    }
    ASSERT_GT(keys.size(), 20);
    for (Control &c : controls)
        c.seen = stored;

    kx::Database other = testDb->open();
    QRandomGenerator rng(2026);
    const int rounds = GetParam() == Engine::Postgres ? 120 : 300;
    for (int round = 0; round < rounds; ++round) {
        // Few records, so overlaps are common.
        const int key = keys[int(rng.bounded(8))];
        const QString text = QStringLiteral("第%1轮").arg(round);
        const int who = int(rng.bounded(3));
        if (who == 2) {
            ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("Update kxJournalRecs Set Explain=? Where RecID=?"), {text, key}}).ok());
            stored[key] = text;
            continue;
        }
        Control &c = controls[who];
        c.answer = rng.bounded(2) == 1;
        const bool overlap = c.seen.value(key) != stored.value(key);
        const int askedBefore = c.asked;
        c.journal->Grid()->setText(rowOf.value(key), QStringLiteral("Explain"), text);
        c.journal->setIsDirty(true);
        const bool saved = c.journal->Save();
        ASSERT_EQ(c.asked - askedBefore, overlap ? 1 : 0) << "round " << round;
        if (!overlap || c.answer) {
            ASSERT_TRUE(saved) << c.said.join(QLatin1Char('\n')).toStdString();
            stored[key] = text;
            c.seen[key] = text;
        } else {
            ASSERT_TRUE(saved) << "their text is taken, nothing else was changed";
            c.seen = stored;  // the book was read again
        }
    }
    for (int key : keys)
        EXPECT_EQ(storedExplain(key), stored.value(key)) << key;
}

// A consolidated grid holds the records of several books: whatever the
// switches say afterwards, it is never saved into one of them.
TEST_P(DataSafety, AConsolidatedGridIsNeverSavedIntoOneBook)
{
    kx::Database db = testDb->open();
    const int parent = kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode='0201'"), {}})
                           .valueOr(QVariant())
                           .toInt();
    ASSERT_GT(parent, 0);
    journal->setIsPackedJnl(true);
    ASSERT_TRUE(journal->Load(parent));
    const int inA = count(bookA), inB = count(bookB);
    journal->setIsPackedJnl(false);
    journal->Grid()->setText(recordRow(*journal), QStringLiteral("Remark"), QStringLiteral("合并时改的"));
    journal->setIsDirty(true);
    EXPECT_FALSE(journal->Save());
    EXPECT_EQ(count(bookA), inA);
    EXPECT_EQ(count(bookB), inB);
    EXPECT_EQ(count(parent), 0);
}

// A typed amount that is no amount is refused with the row named, never stored as 0.
TEST_P(DataSafety, ATypedAmountThatIsNoAmountIsRefusedNotStoredAsZero)
{
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int row = recordRow(*journal);
    const int key = keyAt(*journal, row);
    journal->Grid()->setText(row, QStringLiteral("Debit"), QStringLiteral("100元"));
    edit(*journal, row, QStringLiteral("金额写错了"));
    said.clear();
    EXPECT_FALSE(journal->Save());
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("第%1行").arg(row))) << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_NE(storedExplain(key), QStringLiteral("金额写错了"));
    EXPECT_TRUE(journal->IsDirty());
}

TEST_P(DataSafety, AnAmountBeyondWhatMoneyHoldsIsRefusedNotStoredWrong)
{
    journal->setDocID(bookA);
    ASSERT_TRUE(journal->Load());
    const int row = recordRow(*journal);
    const int key = keyAt(*journal, row);
    const QString debitBefore = kx::sqlScalar(testDb->open(), {QStringLiteral("Select Debit From kxJournalRecs Where RecID=?"), {key}})
                                    .valueOr(QVariant())
                                    .toString();
    journal->Grid()->setText(row, QStringLiteral("Debit"), QStringLiteral("1000000000000000"));
    edit(*journal, row, QStringLiteral("金额太大"));
    said.clear();
    EXPECT_FALSE(journal->Save());
    EXPECT_TRUE(journal->IsDirty());
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("第%1行").arg(row)))
        << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_NE(storedExplain(key), QStringLiteral("金额太大")) << "nothing of the pass is stored";
    EXPECT_EQ(kx::sqlScalar(testDb->open(), {QStringLiteral("Select Debit From kxJournalRecs Where RecID=?"), {key}})
                  .valueOr(QVariant())
                  .toString(),
              debitBefore);
    EXPECT_EQ(journal->Grid()->text(row, QStringLiteral("Debit")), QStringLiteral("1000000000000000"))
        << "what was typed stays";
}

INSTANTIATE_TEST_SUITE_P(Engines, DataSafety, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
