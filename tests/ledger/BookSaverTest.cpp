#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/BookBuilder.h"
#include "support/TestDatabase.h"

#include <kxjournal/EditCycle.h>
#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QMenu>
#include <QSignalSpy>
#include <QSqlRecord>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

QVariantMap rec(const char *date, const char *explain, const char *debit, const char *balance, int tag = 0)
{
    return {{QStringLiteral("JnlDate"), QString::fromLatin1(date)}, {QStringLiteral("Explain"), QString::fromUtf8(explain)},
            {QStringLiteral("Debit"), QString::fromLatin1(debit)}, {QStringLiteral("Balance"), QString::fromLatin1(balance)},
            {QStringLiteral("Tag"), tag}};
}

class Saving : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        db = testDb->open();
        ASSERT_TRUE(kx::Schema::create(db).ok());
        kxtest::BookBuilder b(db);
        book = b.book(QStringLiteral("01"), QStringLiteral("现金日记账"));
        other = b.book(QStringLiteral("02"), QStringLiteral("空账"));
        b.record(book, 1, rec("2026-01-01", "期初余额", "1000", "1000"));
        b.record(book, 2, rec("2026-01-03", "提取备用金", "200.5", "1200.5"));
        b.record(book, 3, rec("2026-01-31", "2026年01月小结", "7", "1200.5", -1));
        b.record(book, 4, rec("2026-02-02", "报销差旅费", "0", "1200.5"));
        journal = open();
    }

    std::unique_ptr<kx::Journal> open()
    {
        contexts.push_back(std::make_unique<kx::SqlAccContext>(testDb->open()));
        contexts.back()->setBeginDate(QDate(2026, 1, 1));
        auto j = std::make_unique<kx::Journal>();
        j->setAcc(contexts.back().get());
        j->setAccountFormat(QStringLiteral("0.00"));
        j->setDirection(QString());
        return j;
    }

    // Every stored record, one line each, in key order.
    QStringList dump()
    {
        QStringList out;
        kx::Result<QSqlQuery> r = kx::sqlExec(db, {QStringLiteral("Select * From kxJournalRecs Order by RecID"), {}});
        QSqlQuery q = r.takeValue();
        while (q.next()) {
            QStringList cells;
            for (int i = 0; i < q.record().count(); ++i)
                cells << q.value(i).toString();
            out << cells.join(QLatin1Char('|'));
        }
        return out;
    }

    // The grid as a person sees it, plus the keys that tie it to the records.
    QStringList view(kx::Journal &j)
    {
        QStringList out;
        kx::Sheet *g = kx::Sheet::of(j.Grid());
        for (int r = 1; r < g->rows(); ++r) {
            QStringList cells;
            for (const char *key : {"ShowName", "JnlDate", "JnlNo", "Explain", "Debit", "Credit", "Balance", "Field1"})
                cells << g->text(r, QLatin1String(key));
            cells << QString::number(g->value(r, QStringLiteral("Tag")));
            out << cells.join(QLatin1Char('|'));
        }
        return out;
    }

    static void recalculate(kx::Journal &j)
    {
        j.menuAction(QStringLiteral("mnuRecalc"))->trigger();
    }

    int count() { return kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs"), {}}).value().toInt(); }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    kx::Database db;
    std::vector<std::unique_ptr<kx::SqlAccContext>> contexts;
    std::unique_ptr<kx::Journal> journal;
    int book = 0, other = 0;
};

} // namespace

TEST_P(Saving, EditedBookComesBackTheSameAfterReload)
{
    ASSERT_TRUE(journal->Load(book));
    kx::Sheet *g = kx::Sheet::of(journal->Grid());
    kx::EditCycle *edit = g->editCycle();
    ASSERT_TRUE(edit->editCell(4, g->colIndex(QStringLiteral("Explain")), QStringLiteral("报销差旅费（张三）")));
    ASSERT_TRUE(edit->editCell(4, g->colIndex(QStringLiteral("Credit")), QStringLiteral("123456789.1234")));
    g->setRows(g->rows() + 2);
    g->setText(5, QStringLiteral("JnlDate"), QStringLiteral("2026-02-28"));
    g->setText(5, QStringLiteral("ShowName"), QStringLiteral("2026年02月28日"));
    g->setText(5, QStringLiteral("Explain"), QStringLiteral("收到华北公司货款"));
    g->setText(5, QStringLiteral("Debit"), QStringLiteral("0.0001"));
    g->setText(5, QStringLiteral("Field1"), QStringLiteral("合同'A-7"));
    // Texts that PostgreSQL's bulk path has to escape, and a plain one it does not.
    const QString awkward = QStringLiteral("C:\\账\\N\tA\r\nB\\");
    g->setText(5, QStringLiteral("Remark"), awkward);
    g->setText(5, QStringLiteral("Field2"), QStringLiteral("Ref A-7/2"));
    g->moveRowTo(5, 4); // the new row goes before the edited one
    journal->setIsDirty(true);
    recalculate(*journal);
    const QStringList before = view(*journal);

    QSignalSpy saved(journal.get(), &kx::Journal::AfterSaved);
    ASSERT_TRUE(journal->Save());
    EXPECT_EQ(saved.count(), 1);
    EXPECT_FALSE(journal->IsDirty());
    EXPECT_GT(g->value(4, QStringLiteral("RecID")), 4) << "the new key is in the grid";
    EXPECT_EQ(g->text(6, QStringLiteral("RecID")), QString()) << "the empty row at the bottom is not stored";
    EXPECT_EQ(g->rowData(4).toInt(), 1);
    EXPECT_EQ(count(), 5);

    auto reloaded = open();
    ASSERT_TRUE(reloaded->Load(book));
    recalculate(*reloaded);
    QStringList after = view(*reloaded);
    EXPECT_EQ(after.mid(0, 5), before.mid(0, 5));
    EXPECT_EQ(reloaded->Grid()->text(4, QStringLiteral("Debit")), QStringLiteral("0.0001"));
    EXPECT_EQ(reloaded->Grid()->text(5, QStringLiteral("Credit")), QStringLiteral("123456789.1234"));
    EXPECT_EQ(reloaded->Grid()->text(4, QStringLiteral("Remark")), awkward);
    EXPECT_EQ(reloaded->Grid()->text(4, QStringLiteral("Field2")), QStringLiteral("Ref A-7/2"));
}

TEST_P(Saving, CleanSaveStillNotifiesAndSummaryAmountsStayStored)
{
    ASSERT_TRUE(journal->Load(book));
    const QStringList stored = dump();
    QStringList said;
    QObject::connect(journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    QSignalSpy saved(journal.get(), &kx::Journal::AfterSaved);
    ASSERT_TRUE(journal->Save());
    EXPECT_EQ(saved.count(), 1);
    EXPECT_EQ(said, QStringList{QStringLiteral("已存储“现金日记账”的记录;")});
    EXPECT_EQ(dump(), stored) << "nothing was written";
    EXPECT_TRUE(contexts.front()->lastSaveNotice().endsWith(QStringLiteral("|All|JournalRec|%1||").arg(book)));

    // Saving rewrites every row, but a summary row's amounts are never taken from its two-line cells.
    recalculate(*journal);
    ASSERT_EQ(journal->Grid()->text(3, QStringLiteral("Debit")), QStringLiteral("1200.50\r\n1200.50"));
    journal->setIsDirty(true);
    ASSERT_TRUE(journal->Save());
    const QStringList again = dump();
    ASSERT_EQ(again.size(), 4);
    EXPECT_EQ(again.at(2).section(QLatin1Char('|'), 7, 7).toDouble(), 7.0) << again.at(2).toStdString();
}

TEST_P(Saving, ConsolidatedJournalsAndEmptyBooks)
{
    kxtest::BookBuilder(db).book(QStringLiteral("0101"), QStringLiteral("下级"));
    journal->setIsPackedJnl(true);
    ASSERT_TRUE(journal->Load(book));
    bool boxed = false;
    QString text;
    QObject::connect(journal.get(), &kx::Journal::Notify, [&](const QString &m, bool box) { text = m; boxed = box; });
    journal->setIsDirty(true);
    EXPECT_FALSE(journal->Save());
    EXPECT_EQ(text, QStringLiteral("合并日记账是不能被存储的。"));
    EXPECT_TRUE(boxed);

    // A book holding only its empty opening row keeps no records at all.
    journal->setIsPackedJnl(false);
    ASSERT_TRUE(journal->Load(other));
    journal->setIsDirty(true);
    ASSERT_TRUE(journal->Save());
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=%1").arg(other), {}}).value().toInt(), 0);
}

TEST_P(Saving, RecordDeletedElsewhereIsAddedAgainWithANewKeyOnlyWhenChangedHere)
{
    ASSERT_TRUE(journal->Load(book));
    kx::Sheet *g = kx::Sheet::of(journal->Grid());
    const int key = int(g->value(2, QStringLiteral("RecID")));
    const int untouched = int(g->value(3, QStringLiteral("RecID")));
    ASSERT_TRUE(kx::sqlRun(db, kx::sqlDialect(db).deleteRecord(key)).ok());
    ASSERT_TRUE(kx::sqlRun(db, kx::sqlDialect(db).deleteRecord(untouched)).ok());
    g->setText(2, QStringLiteral("Explain"), QStringLiteral("提取备用金（改）"));
    journal->setIsDirty(true);
    QStringList questions;
    journal->setAsker([&](const QString &text, const QString &) {
        questions << text;
        return true;  // keep this user's record
    });
    ASSERT_TRUE(journal->Save());
    EXPECT_EQ(questions.size(), 1) << "a record deleted there and changed here is asked about";
    const int again = int(g->value(2, QStringLiteral("RecID")));
    EXPECT_GT(again, key);
    EXPECT_EQ(count(), 3) << "the record nobody changed here stays deleted, as the other user left it";
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select Explain From kxJournalRecs Where RecID=%1").arg(again), {}}).value().toString(),
              QStringLiteral("提取备用金（改）"));
}

TEST_P(Saving, FailedPassLeavesEverythingAsItWasAndASecondPassStoresOnce)
{
    // The database refuses one explanation, as a constraint or a trigger would.
    const bool pg = GetParam() == Engine::Postgres;
    if (pg) {
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE FUNCTION refuse() RETURNS trigger AS $$ BEGIN "
                                           "IF NEW.Explain = 'boom' THEN RAISE EXCEPTION 'refused'; END IF; "
                                           "RETURN NEW; END $$ LANGUAGE plpgsql"), {}}).ok());
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT OR UPDATE ON kxJournalRecs "
                                           "FOR EACH ROW EXECUTE FUNCTION refuse()"), {}}).ok());
    } else {
        for (const char *when : {"INSERT", "UPDATE"})
            ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TRIGGER refuse_%1 BEFORE %1 ON kxJournalRecs WHEN NEW.Explain = 'boom' "
                                               "BEGIN SELECT RAISE(ABORT, 'refused'); END").arg(QLatin1String(when)), {}}).ok());
    }
    ASSERT_TRUE(journal->Load(book));
    kx::Sheet *g = kx::Sheet::of(journal->Grid());
    const QStringList stored = dump();
    ASSERT_TRUE(journal->RemoveSumRow(3));
    g->setText(2, QStringLiteral("Explain"), QStringLiteral("改过"));
    const int last = g->rows();
    g->setRows(last + 2);
    g->setText(last, QStringLiteral("JnlDate"), QStringLiteral("2026-03-01"));
    g->setText(last, QStringLiteral("Explain"), QStringLiteral("新增"));
    g->setText(last + 1, QStringLiteral("JnlDate"), QStringLiteral("2026-03-02"));
    g->setText(last + 1, QStringLiteral("Explain"), QStringLiteral("boom"));
    journal->setIsDirty(true);

    QStringList said;
    QObject::connect(journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    QSignalSpy saved(journal.get(), &kx::Journal::AfterSaved);
    EXPECT_FALSE(journal->Save());
    EXPECT_EQ(dump(), stored) << "nothing of the pass stays";
    EXPECT_TRUE(journal->IsDirty());
    EXPECT_EQ(saved.count(), 0);
    EXPECT_EQ(g->text(last, QStringLiteral("RecID")), QString()) << "no key reaches the grid";
    ASSERT_EQ(said.size(), 1);
    EXPECT_TRUE(said.first().contains(QStringLiteral("refused"))) << said.first().toStdString();

    g->setText(last + 1, QStringLiteral("Explain"), QStringLiteral("更正"));
    ASSERT_TRUE(journal->Save());
    EXPECT_EQ(count(), 5) << "the summary record went, two rows came, none twice";
    EXPECT_GT(g->value(last, QStringLiteral("RecID")), 0);
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where Tag<0"), {}}).value().toInt(), 0);
    ASSERT_TRUE(journal->Save()) << "a clean save after it changes nothing";
    EXPECT_EQ(count(), 5);
}

INSTANTIATE_TEST_SUITE_P(Engines, Saving, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

TEST_P(Saving, TwoControlsSavingOneBookKeepEachOthersNewRows)
{
    auto first = open();
    auto second = open();
    ASSERT_TRUE(first->Load(book));
    ASSERT_TRUE(second->Load(book));
    auto append = [](kx::Journal &j, const QString &explain) {
        kx::Sheet *g = kx::Sheet::of(j.Grid());
        const int r = g->rows();
        g->setRows(r + 1);
        g->setText(r, QStringLiteral("JnlDate"), QStringLiteral("2026-02-10"));
        g->setText(r, QStringLiteral("Explain"), explain);
        j.setIsDirty(true);
    };
    append(*first, QStringLiteral("甲的新行一"));
    append(*first, QStringLiteral("甲的新行二"));
    append(*second, QStringLiteral("乙的新行"));
    ASSERT_TRUE(first->Save());
    ASSERT_TRUE(second->Save());
    EXPECT_EQ(count(), 7);
    const QString explains = dump().join(QLatin1Char('\n'));
    for (const char *e : {"甲的新行一", "甲的新行二", "乙的新行"})
        EXPECT_TRUE(explains.contains(QString::fromUtf8(e))) << e;
    // Each keeps working with its own keys afterwards: nothing is added twice.
    first->setIsDirty(true);
    second->setIsDirty(true);
    ASSERT_TRUE(first->Save());
    ASSERT_TRUE(second->Save());
    EXPECT_EQ(count(), 7);
}

TEST(SavingPostgres, ConnectionLostMidSaveRollsBackAndTheNextSaveStoresOnce)
{
    kxtest::TestDatabase testDb(Engine::Postgres);
    kx::Database db = testDb.open();
    ASSERT_TRUE(kx::Schema::create(db).ok());
    kxtest::BookBuilder b(db);
    const int book = b.book(QStringLiteral("01"), QStringLiteral("现金日记账"));
    for (int i = 1; i <= 3; ++i)
        b.record(book, i, rec("2026-01-05", "记录", "10", "10"));
    // The server drops this connection the moment it meets the row, as a
    // stopped server or a broken network would.
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE FUNCTION cut() RETURNS trigger AS $$ BEGIN "
                                       "IF NEW.Explain = 'cut' THEN PERFORM pg_terminate_backend(pg_backend_pid()); END IF; "
                                       "RETURN NEW; END $$ LANGUAGE plpgsql"), {}}).ok());
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TRIGGER cut BEFORE INSERT OR UPDATE ON kxJournalRecs "
                                       "FOR EACH ROW EXECUTE FUNCTION cut()"), {}}).ok());
    const auto dumpAll = [&db] {
        QStringList out;
        kx::Result<QSqlQuery> r = kx::sqlExec(db, {QStringLiteral("Select RecID, Row, Explain From kxJournalRecs Order by RecID"), {}});
        QSqlQuery q = r.takeValue();
        while (q.next())
            out << q.value(0).toString() + QLatin1Char('|') + q.value(1).toString() + QLatin1Char('|') + q.value(2).toString();
        return out;
    };
    const QStringList stored = dumpAll();

    kx::SqlAccContext acc(testDb.open());
    kx::Journal j;
    j.setAcc(&acc);
    ASSERT_TRUE(j.Load(book));
    kx::Sheet *g = kx::Sheet::of(j.Grid());
    g->setText(1, QStringLiteral("Explain"), QStringLiteral("改了"));
    g->setRows(5);
    g->setText(4, QStringLiteral("JnlDate"), QStringLiteral("2026-01-06"));
    g->setText(4, QStringLiteral("Explain"), QStringLiteral("cut"));
    j.setIsDirty(true);
    QStringList said;
    QObject::connect(&j, &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    EXPECT_FALSE(j.Save());
    EXPECT_EQ(dumpAll(), stored);
    EXPECT_TRUE(j.IsDirty());
    EXPECT_EQ(g->text(4, QStringLiteral("RecID")), QString());
    EXPECT_FALSE(said.isEmpty());

    g->setText(4, QStringLiteral("Explain"), QStringLiteral("恢复后"));
    ASSERT_TRUE(j.Save()) << said.join(QLatin1Char('\n')).toStdString();
    const QStringList after = dumpAll();
    ASSERT_EQ(after.size(), 4) << "stored once, no duplicates";
    EXPECT_TRUE(after.at(0).endsWith(QStringLiteral("改了")));
    EXPECT_TRUE(after.at(3).endsWith(QStringLiteral("恢复后")));
}
