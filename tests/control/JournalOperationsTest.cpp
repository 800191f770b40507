// One operation at a time, whatever a host does in its event handlers, and a
// context the host may delete whenever it likes.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QSignalSpy>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

using kx::Journal;

namespace {

class JournalOperations : public ::testing::Test
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(kxtest::Engine::Sqlite);
        kx::Database db = testDb->open();
        bookA = kxtest::fillSampleBooks(db, 300, 2);
        bookB = kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {QStringLiteral("01")}})
                    .valueOr(QVariant())
                    .toInt();
        ASSERT_GT(bookA, 0);
        ASSERT_GT(bookB, 0);
        acc = new kx::SqlAccContext(testDb->open());
        acc->setBeginDate(QDate(2025, 1, 1));
        journal.setAcc(acc);
        QObject::connect(&journal, &Journal::Notify, [this](const QString &m, bool) { said << m; });
    }
    void TearDown() override { delete acc.data(); }

    int storedExplainCount(const QString &text) const
    {
        kx::Database db = testDb->open();
        return kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where Explain=?"), {text}})
            .valueOr(QVariant())
            .toInt();
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    QPointer<kx::SqlAccContext> acc;
    Journal journal;
    QStringList said;
    int bookA = 0, bookB = 0;
};

} // namespace

TEST_F(JournalOperations, AContextTheHostDeletedIsNeverRead)
{
    journal.setDocID(bookA);
    ASSERT_TRUE(journal.Load());
    journal.setIsDirty(true);
    delete acc.data();

    EXPECT_EQ(journal.Acc(), nullptr);
    EXPECT_FALSE(journal.Load());
    EXPECT_FALSE(journal.Save());
    EXPECT_TRUE(journal.IsDirty()) << "nothing was stored";
    EXPECT_TRUE(said.contains(QStringLiteral("没有连接到账套。")));
    EXPECT_EQ(journal.AccCode(), QString());
    EXPECT_EQ(journal.Get_AccCodeField(QStringLiteral("AccName"), 1), QString());
    journal.setDocID(bookB);
    EXPECT_EQ(journal.DocID(), bookB);
}

TEST_F(JournalOperations, NothingStartsWhileALoadRuns)
{
    journal.setDocID(bookA);
    QList<bool> inner;
    bool once = false;
    QObject::connect(&journal, &Journal::Process, [&](int n) {
        if (n != 20 || once)
            return;
        once = true;
        // What a host's handler (or a queued click) might ask for mid-load.
        journal.setIsDirty(true);
        inner << journal.Save() << journal.Load(bookB) << journal.InsSumRow(3) << journal.RemoveSumRow(3);
        journal.menuAction(QStringLiteral("mnuRefresh"))->trigger();
        journal.DoCommand(QStringLiteral("Refresh"));
        journal.setDocID(bookB);
    });
    QSignalSpy bookChanged(&journal, &Journal::bookChanged);
    ASSERT_TRUE(journal.Load());
    EXPECT_EQ(bookChanged.count(), 1) << "refused requests change nothing, so they say nothing";
    EXPECT_EQ(inner, (QList<bool>{false, false, false, false}));
    EXPECT_EQ(journal.DocID(), bookA);
    EXPECT_EQ(said.count(QStringLiteral("正在读入记录，请等它完成后再试。")), 7);
    EXPECT_FALSE(said.contains(QStringLiteral("已经重新计算全部余额。")));
    EXPECT_TRUE(journal.Save()) << "once the load is over, a save runs";
}

TEST_F(JournalOperations, ALoadAskedForDuringASaveIsRefusedAndTheSaveStoresItsBook)
{
    journal.setDocID(bookA);
    ASSERT_TRUE(journal.Load());
    kx::Sheet *g = kx::Sheet::of(journal.Grid());
    const int rows = g->rows();
    g->setText(3, QStringLiteral("Explain"), QStringLiteral("改过的摘要"));
    journal.setIsDirty(true);
    bool loaded = true;
    QObject::connect(&journal, &Journal::Process, [&](int n) {
        if (n == 0)
            loaded = journal.Load(bookB);
    });
    ASSERT_TRUE(journal.Save());
    EXPECT_FALSE(loaded);
    EXPECT_TRUE(said.contains(QStringLiteral("正在存储记录，请等它完成后再试。")));
    EXPECT_EQ(g->rows(), rows) << "the grid still holds the book that was saved";
    EXPECT_EQ(storedExplainCount(QStringLiteral("改过的摘要")), 1);
    EXPECT_FALSE(journal.IsDirty());
}

TEST_F(JournalOperations, TheMenuAndDoCommandRunTheSameCommands)
{
    journal.setDocID(bookA);
    ASSERT_TRUE(journal.Load());
    for (const char *name : {"mnuCopy", "mnuRecalc", "mnuInsSumRow", "mnuStatistics", "mnuRefresh", "mnuPackJnl",
                             "mnuSideTask", "mnuDeleteRows", "mnuExport"})
        ASSERT_NE(journal.menuAction(QString::fromLatin1(name)), nullptr) << name;
    EXPECT_EQ(journal.menuAction(QStringLiteral("mnuNothing")), nullptr);
    journal.contextMenu()->popup(QPoint(0, 0));  // aboutToShow brings the states up to date
    EXPECT_TRUE(journal.menuAction(QStringLiteral("mnuRecalc"))->isEnabled());
    EXPECT_TRUE(journal.menuAction(QStringLiteral("mnuExport"))->isEnabled());
    EXPECT_NE(journal.menuAction(QStringLiteral("mnuFieldShow"))->menu(), nullptr) << "a list of columns";
    journal.contextMenu()->hide();

    QList<QPair<QString, bool>> notices;
    QObject::connect(&journal, &Journal::Notify, [&](const QString &m, bool box) { notices << qMakePair(m, box); });
    journal.menuAction(QStringLiteral("mnuStatistics"))->trigger();
    ASSERT_FALSE(notices.isEmpty());
    EXPECT_EQ(notices.last().first, journal.Statistics());
    EXPECT_TRUE(notices.last().second) << "statistics are shown in a box";

    QStringList commands;
    QObject::connect(&journal, &Journal::CommandExecute, [&](const QString &c, bool &) { commands << c; });
    journal.DoCommand(QStringLiteral("Refresh"));
    journal.menuAction(QStringLiteral("mnuRefresh"))->trigger();
    EXPECT_EQ(commands.count(QStringLiteral("Refresh")), 2);
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 2);

    QSignalSpy packed(&journal, &Journal::packedChanged);
    journal.menuAction(QStringLiteral("mnuPackJnl"))->trigger();
    EXPECT_TRUE(journal.IsPackedJnl());
    EXPECT_EQ(packed.count(), 1);
    journal.setIsPackedJnl(false);
    EXPECT_FALSE(journal.menuAction(QStringLiteral("mnuPackJnl"))->isChecked());
}

// Every name a host may send runs its action; the same name in another case
// runs nothing.
TEST_F(JournalOperations, EveryDoCommandNameRunsItsActionAndNoOtherCaseDoes)
{
    journal.setDocID(bookA);
    ASSERT_TRUE(journal.Load());
    kx::Sheet *g = kx::Sheet::of(journal.Grid());
    const int debit = g->colIndex(QStringLiteral("Debit"));
    const int explain = g->colIndex(QStringLiteral("Explain"));
    ASSERT_GE(debit, 0);
    ASSERT_GE(explain, 0);
    const QString amountFormat = g->colFormat(debit);
    QAction *side = journal.menuAction(QStringLiteral("mnuSideTask"));
    ASSERT_NE(side, nullptr);
    QStringList commands;
    QObject::connect(&journal, &Journal::CommandExecute, [&](const QString &c, bool &) { commands << c; });
    QStringList asked;
    journal.setFileNameAsker([&](const QString &suggested) {
        asked << suggested;
        return QString();  // the user closes the dialog
    });

    // What each name does, undone before the next name is tried.
    const auto disturb = [&] {
        QApplication::clipboard()->setText(QStringLiteral("before"));
        g->select(3, explain, 3, explain);
        g->setColFormat(debit, QStringLiteral("0.000"));
        g->setColHidden(explain, true);
        journal.DoCommand(QStringLiteral("SideVisible"), QStringLiteral("False"));
        commands.clear();
        asked.clear();
        said.clear();
    };
    struct Case {
        const char *name;
        const char *parameter;
        std::function<bool()> ran;
    };
    const std::vector<Case> cases{
        {"Copy", "", [&] { return QApplication::clipboard()->text() != QLatin1String("before"); }},
        {"Export", "", [&] { return asked.size() == 1 && asked.first().endsWith(QLatin1String(".csv")); }},
        {"DefaultFormat", "", [&] { return !g->isColHidden(explain); }},
        {"Refresh", "", [&] { return commands.contains(QLatin1String("Refresh")); }},
        {"AfterSetFormat", "", [&] { return g->colFormat(debit) == amountFormat; }},
        {"SetColFont", "", [&] { return g->colFormat(debit) == amountFormat; }},
        {"SideVisible", "True", [&] { return side->isChecked(); }},
    };
    for (const Case &c : cases) {
        const QString name = QString::fromLatin1(c.name);
        for (const QString &wrong : {name.toLower(), name.toUpper(), name + QLatin1Char(' ')}) {
            disturb();
            journal.DoCommand(wrong, QString::fromLatin1(c.parameter));
            EXPECT_FALSE(c.ran()) << qPrintable(wrong) << " ran";
            EXPECT_TRUE(commands.isEmpty()) << qPrintable(wrong);
        }
        disturb();
        journal.DoCommand(name, QString::fromLatin1(c.parameter));
        EXPECT_TRUE(c.ran()) << c.name << " did not run";
    }

    // "Find" is accepted and does nothing: no message, no event, nothing copied or moved.
    disturb();
    const int row = g->row();
    journal.DoCommand(QStringLiteral("Find"), QStringLiteral("银行"));
    EXPECT_TRUE(said.isEmpty());
    EXPECT_TRUE(commands.isEmpty());
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("before"));
    EXPECT_EQ(g->row(), row);
}
