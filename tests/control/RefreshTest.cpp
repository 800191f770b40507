// 刷新 reads the book again; changes not yet stored are never dropped
// without the user saying so: 存储 stores them first, 不存储 drops them,
// 取消 keeps everything as it is.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QTest>
#include <gtest/gtest.h>

using kx::Journal;
using kxtest::Engine;

namespace {

enum Answer { Store, Drop, Keep };

class Refresh : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        kx::Database db = testDb->open();
        const int book = kxtest::fillSampleBooks(db, 60, 1);
        ASSERT_GT(book, 0);
        acc = std::make_unique<kx::SqlAccContext>(testDb->open());
        acc->setBeginDate(QDate(2025, 1, 1));
        journal.setAcc(acc.get());
        journal.setAsker([](const QString &text, const QString &) {
            ADD_FAILURE() << "unexpected question: " << text.toStdString();
            return false;
        });
        journal.setChoiceAsker([this](const QString &text, const QString &title, const QStringList &answers) {
            questions << text;
            titles << title;
            offered = answers;
            return answer;
        });
        QObject::connect(&journal, &Journal::CommandExecute, [this](const QString &command, bool &cancel) {
            commands << command;
            cancel = command == vetoed;
        });
        journal.setDocID(book);
        ASSERT_TRUE(journal.Load());
        row = journal.Grid()->fixedRows() + 3;
        key = int(kx::Sheet::of(journal.Grid())->number(row, journal.Grid()->colIndex(QStringLiteral("RecID"))));
        ASSERT_GT(key, 0);
        stored = storedExplain();
        commands.clear();
    }

    QString storedExplain() const
    {
        return kx::sqlScalar(testDb->open(), {QStringLiteral("Select Explain From kxJournalRecs Where RecID=?"), {key}})
            .valueOr(QVariant())
            .toString();
    }
    QString shownExplain() const { return journal.Grid()->text(row, QStringLiteral("Explain")); }

    void change(const QString &explain)
    {
        journal.Grid()->setText(row, QStringLiteral("Explain"), explain);
        journal.setIsDirty(true);
    }

    void refresh()
    {
        questions.clear();
        commands.clear();
        journal.menuAction(QStringLiteral("mnuRefresh"))->trigger();
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> acc;
    Journal journal;
    QStringList questions, titles, offered, commands;
    int answer = Keep;
    QString vetoed;
    int row = 0, key = 0;
    QString stored;
};

} // namespace

TEST_P(Refresh, UnsavedChangesAreStoredDroppedOrKeptAsTheUserAnswers)
{
    // Nothing changed: the book is read again without a question.
    refresh();
    EXPECT_TRUE(questions.isEmpty());
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 1);

    // 取消: nothing is read, nothing is stored.
    change(QStringLiteral("改过的摘要"));
    answer = Keep;
    refresh();
    ASSERT_EQ(questions.size(), 1);
    EXPECT_EQ(questions.first(), QStringLiteral("“%1”有没有存储的修改。要先存储吗？").arg(journal.Caption()));
    EXPECT_EQ(titles.first(), journal.Caption());
    EXPECT_EQ(offered, (QStringList{QStringLiteral("存储"), QStringLiteral("不存储"), QStringLiteral("取消")}));
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 0);
    EXPECT_EQ(commands.count(QStringLiteral("Save")), 0);
    EXPECT_EQ(shownExplain(), QStringLiteral("改过的摘要"));
    EXPECT_TRUE(journal.IsDirty());
    EXPECT_EQ(storedExplain(), stored);

    // 存储, but the save fails: the change stays on screen, nothing is read over it.
    answer = Store;
    vetoed = QStringLiteral("Save");
    refresh();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(commands.count(QStringLiteral("Save")), 1);
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 0);
    EXPECT_EQ(shownExplain(), QStringLiteral("改过的摘要"));
    EXPECT_TRUE(journal.IsDirty());
    EXPECT_EQ(storedExplain(), stored);

    // 存储: stored, then read again.
    vetoed.clear();
    refresh();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(commands.indexOf(QStringLiteral("Save")), commands.indexOf(QStringLiteral("Load")) - 1)
        << commands.join(QLatin1Char(' ')).toStdString();
    EXPECT_EQ(storedExplain(), QStringLiteral("改过的摘要"));
    EXPECT_EQ(shownExplain(), QStringLiteral("改过的摘要"));
    EXPECT_FALSE(journal.IsDirty());

    // 不存储: the stored text comes back.
    change(QStringLiteral("不要的摘要"));
    answer = Drop;
    refresh();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(commands.count(QStringLiteral("Save")), 0);
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 1);
    EXPECT_EQ(shownExplain(), QStringLiteral("改过的摘要"));
    EXPECT_EQ(storedExplain(), QStringLiteral("改过的摘要"));
    EXPECT_FALSE(journal.IsDirty());

    // A question closed without an answer keeps everything.
    change(QStringLiteral("又改的摘要"));
    answer = -1;
    refresh();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 0);
    EXPECT_EQ(shownExplain(), QStringLiteral("又改的摘要"));
    EXPECT_TRUE(journal.IsDirty());
}

// What is still in an open cell is a change like any other.
TEST_P(Refresh, TextInAnOpenCellCountsAsAChange)
{
    journal.resize(900, 500);
    journal.show();
    kx::GridView *view = journal.gridView();
    // The empty row a loaded book ends with, to type a new record in.
    row = journal.Grid()->rows() - 1;
    ASSERT_EQ(shownExplain(), QString());
    view->edit(journal.Grid()->indexAt(row, journal.Grid()->colIndex(QStringLiteral("Explain"))));
    ASSERT_NE(view->activeEditor(), nullptr);
    QTest::keyClicks(view->activeEditor(), QStringLiteral("typed not stored"));
    ASSERT_FALSE(journal.IsDirty());

    answer = Keep;
    refresh();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(commands.count(QStringLiteral("Load")), 0);
    EXPECT_EQ(view->activeEditor(), nullptr);
    EXPECT_EQ(shownExplain(), QStringLiteral("typed not stored"));
    EXPECT_TRUE(journal.IsDirty());
}

INSTANTIATE_TEST_SUITE_P(Engines, Refresh, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
