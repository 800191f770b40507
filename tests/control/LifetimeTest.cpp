// A host may delete the control or its context from inside any handler of
// any event an operation raises: the operation ends quietly, touches nothing
// freed, and leaves the database with all or none of what it was writing.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include <kxjournal/GridView.h>
#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPointer>
#include <QTest>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

using kx::Journal;
using kxtest::Engine;

namespace {

/// What the host does the first time the event fires.
enum class Action {
    Delete,           ///< `delete` the control
    DeleteLater,      ///< deleteLater() and let events run; deleted once the operation is over
    DeleteLaterLoop,  ///< deleteLater() and run an event loop, which deletes it there and then
    DeleteContext,    ///< `delete` the context
};

const char *actionName(Action a)
{
    switch (a) {
    case Action::Delete: return "Delete";
    case Action::DeleteLater: return "DeleteLater";
    case Action::DeleteLaterLoop: return "DeleteLaterLoop";
    case Action::DeleteContext: return "DeleteContext";
    }
    return "";
}

struct Case {
    std::string operation;
    std::string event;
    Action action;
    Engine engine;
};

std::string caseName(const ::testing::TestParamInfo<Case> &info)
{
    const Case &c = info.param;
    return c.operation + "_" + c.event + "_" + actionName(c.action) + "_" + kxtest::engineName(c.engine);
}

/// Every long operation with the events it raises on the sample book.
const std::vector<std::pair<std::string, std::vector<std::string>>> &operations()
{
    static const std::vector<std::pair<std::string, std::vector<std::string>>> all = {
        {"Load", {"CommandExecute", "Notify", "Process", "AfterLoaded", "bookChanged"}},
        {"Refresh", {"CommandExecute", "Notify", "Process", "AfterLoaded"}},
        {"Save", {"CommandExecute", "Notify", "Process", "AfterSaved", "dirtyChanged"}},
        {"Paste", {"DataChanged"}},
        {"InsertRows", {"Notify"}},
        {"DeleteRows", {"Ask", "Notify", "CommandExecute", "DataChanged"}},
        {"CloseBook", {"CommandExecute", "DataChanged"}},
        {"Export", {"CommandExecute", "Notify", "Process", "AfterExport"}},
        {"Print", {"CommandExecute"}},
        {"Make", {"CommandExecute", "AfterMaked"}},
        {"DelHistory", {"CommandExecute", "Ask", "Notify"}},
        {"Find", {"FindMsg", "Notify"}},
    };
    return all;
}

std::vector<Case> allCases()
{
    std::vector<Case> cases;
    for (const auto &[operation, events] : operations())
        for (const std::string &event : events)
            for (Action a : {Action::Delete, Action::DeleteLater, Action::DeleteLaterLoop, Action::DeleteContext}) {
                cases.push_back({operation, event, a, Engine::Sqlite});
                if (operation == "Load" || operation == "Save")
                    cases.push_back({operation, event, a, Engine::Postgres});
            }
    return cases;
}

const QString Changed = QStringLiteral("宿主删除控件时改过的摘要");

class Lifetime : public ::testing::TestWithParam<Case>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam().engine);
        kx::Database db = testDb->open();
        book = kxtest::fillSampleBooks(db, 60, 2);
        ASSERT_GT(book, 0);
        acc = new kx::SqlAccContext(testDb->open());
        acc->setBeginDate(QDate(2025, 1, 1));
        journal = new Journal;
        journal->setAcc(acc);
        journal->setDocID(book);
        journal->setVoucherFolder(folder.path());
        journal->setAsker([this](const QString &, const QString &) {
            if (armed == "Ask")
                fire();
            return true;
        });
        ASSERT_TRUE(journal->Load());
    }

    void TearDown() override
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        delete journal.data();
        delete acc.data();
    }

    /// The host's answer to the armed event, the first time it fires.
    void fire()
    {
        if (fired)
            return;
        fired = true;
        switch (GetParam().action) {
        case Action::Delete:
            delete journal.data();
            break;
        case Action::DeleteLater:
            journal->deleteLater();
            QCoreApplication::processEvents();
            break;
        case Action::DeleteLaterLoop: {
            journal->deleteLater();
            QEventLoop loop;
            QTimer::singleShot(0, &loop, &QEventLoop::quit);
            loop.exec();
            deletedInHandler = journal.isNull();
            break;
        }
        case Action::DeleteContext:
            delete acc.data();
            break;
        }
    }

    /// Connects fire() to the event named \a event.
    void arm(const std::string &event)
    {
        armed = event;
        Journal *j = journal;
        const auto on = [this] { fire(); };
        if (event == "CommandExecute")
            QObject::connect(j, &Journal::CommandExecute, [on](const QString &, bool &) { on(); });
        else if (event == "Notify")
            QObject::connect(j, &Journal::Notify, on);
        else if (event == "Process")
            QObject::connect(j, &Journal::Process, on);
        else if (event == "AfterLoaded")
            QObject::connect(j, &Journal::AfterLoaded, on);
        else if (event == "AfterSaved")
            QObject::connect(j, &Journal::AfterSaved, on);
        else if (event == "DataChanged")
            QObject::connect(j, &Journal::DataChanged, on);
        else if (event == "dirtyChanged")
            QObject::connect(j, &Journal::dirtyChanged, on);
        else if (event == "bookChanged")
            QObject::connect(j, &Journal::bookChanged, on);
        else if (event == "AfterExport")
            QObject::connect(j, &Journal::AfterExport, on);
        else if (event == "AfterMaked")
            QObject::connect(j, &Journal::AfterMaked, on);
        else if (event == "FindMsg")
            QObject::connect(j, &Journal::FindMsg, on);
    }

    /// Runs the operation named \a operation on the control.
    void run(const std::string &operation)
    {
        Journal *j = journal;
        kx::Sheet *g = kx::Sheet::of(j->Grid());
        const int explain = g->colIndex(QStringLiteral("Explain"));
        const int open = j->LastSumRow() + 1;  // the first row the user may change
        if (operation == "Load") {
            j->Load();
        } else if (operation == "Refresh") {
            j->DoCommand(QStringLiteral("Refresh"));
        } else if (operation == "Save") {
            j->Save();
        } else if (operation == "Paste") {
            g->setCursor(open, explain);
            j->pasteText(QStringLiteral("甲\n乙"));
        } else if (operation == "InsertRows") {
            g->setCursor(open, explain);
            j->InsertRows();
        } else if (operation == "DeleteRows") {
            j->DeleteRows(open);
        } else if (operation == "CloseBook") {
            j->CloseBook();
        } else if (operation == "Export") {
            j->ExportToFile(folder.filePath(QStringLiteral("book.csv")));
        } else if (operation == "Print") {
            j->printToPdf(folder.filePath(QStringLiteral("book.pdf")));
        } else if (operation == "Make") {
            g->select(3, explain, 5, explain);
            j->Make();
        } else if (operation == "DelHistory") {
            j->menuAction(QStringLiteral("mnuDelHistory"))->trigger();
        } else if (operation == "Find") {
            j->Find(QStringLiteral("2025"));
        }
    }

    int storedCount(const QString &explain) const
    {
        kx::Database db = testDb->open();
        return kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where Explain=?"), {explain}})
            .valueOr(QVariant(-1))
            .toInt();
    }

    int storedBefore(const QDate &date) const
    {
        kx::Database db = testDb->open();
        return kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=? And JnlDate<?"),
                          {book, date}})
            .valueOr(QVariant(-1))
            .toInt();
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    QTemporaryDir folder;
    QPointer<kx::SqlAccContext> acc;
    QPointer<Journal> journal;
    int book = 0;
    std::string armed;
    bool fired = false;
    bool deletedInHandler = false;
};

} // namespace

TEST_P(Lifetime, TheHostMayDeleteTheControlOrItsContextInsideAnyHandler)
{
    const Case &c = GetParam();
    const bool history = c.operation == "DelHistory";
    int oldRecords = 0;
    if (c.operation == "Save") {
        // Two changed rows: a save cut short stores both or neither.
        journal->Grid()->setText(3, QStringLiteral("Explain"), Changed);
        journal->Grid()->setText(6, QStringLiteral("Explain"), Changed);
        journal->setIsDirty(true);
    } else if (history) {
        acc->setBeginDate(QDate(2025, 6, 1));
        oldRecords = storedBefore(QDate(2025, 6, 1));
        ASSERT_GT(oldRecords, 0);
    }
    arm(c.event);
    run(c.operation);
    EXPECT_TRUE(fired) << c.operation << " raises no " << c.event;
    if (c.action == Action::DeleteLaterLoop)
        EXPECT_TRUE(deletedInHandler) << "the event loop in the handler deletes the control there";
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the wait cursor goes with the operation";

    if (c.action == Action::DeleteContext) {
        ASSERT_FALSE(journal.isNull());
        EXPECT_EQ(journal->Acc(), nullptr);
        // The control goes on working without a context.
        QStringList said;
        QObject::connect(journal, &Journal::Notify, [&](const QString &m, bool) { said << m; });
        EXPECT_FALSE(journal->Load());
        EXPECT_TRUE(said.contains(QStringLiteral("没有连接到账套。")));
        journal->Grid()->setCursor(journal->LastSumRow() + 1, journal->Grid()->colIndex(QStringLiteral("Explain")));
        EXPECT_TRUE(journal->InsertRows());
    } else {
        EXPECT_TRUE(journal.isNull());
    }
    if (c.operation == "Save") {
        const int stored = storedCount(Changed);
        EXPECT_TRUE(stored == 0 || stored == 2) << "stored " << stored << " of the 2 changed rows";
    }
    if (history) {
        const int left = storedBefore(QDate(2025, 6, 1));
        // The opening row stays whatever happens: it carries the balance brought in.
        EXPECT_TRUE(left == 1 || left == oldRecords) << left << " of " << oldRecords << " old records left";
    }
}

INSTANTIATE_TEST_SUITE_P(Matrix, Lifetime, ::testing::ValuesIn(allCases()), caseName);

namespace {

/// The control's own widgets start an operation: a key on the grid, an item
/// of the menu, a typed cell; the host deletes the control in its handler.
class WidgetLifetime : public ::testing::TestWithParam<std::string>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(Engine::Sqlite);
        kx::Database db = testDb->open();
        const int book = kxtest::fillSampleBooks(db, 60, 2);
        ASSERT_GT(book, 0);
        acc = std::make_unique<kx::SqlAccContext>(testDb->open());
        acc->setBeginDate(QDate(2025, 1, 1));
        journal = new Journal;
        journal->setAcc(acc.get());
        journal->setDocID(book);
        ASSERT_TRUE(journal->Load());
        journal->resize(1000, 400);
        journal->show();
    }

    void TearDown() override
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        delete journal.data();
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> acc;
    QPointer<Journal> journal;
};

} // namespace

TEST_P(WidgetLifetime, TheWidgetThatStartedTheOperationMayGoWithTheControl)
{
    const std::string how = GetParam();
    kx::GridView *view = journal->gridView();
    kx::Sheet *g = kx::Sheet::of(journal->Grid());
    const int row = journal->LastSumRow() + 1;
    g->setCursor(row, g->colIndex(QStringLiteral("Explain")));
    view->setFocus();
    bool fired = false;
    const auto gone = [&] {
        if (fired)
            return;
        fired = true;
        delete journal.data();
    };
    journal->setAsker([&](const QString &, const QString &) {
        gone();
        return true;
    });
    QObject::connect(journal, &Journal::DataChanged, gone);
    if (how == "DeleteKey") {
        QTest::keyClick(view, Qt::Key_Delete);
    } else if (how == "MenuItem") {
        journal->menuAction(QStringLiteral("mnuDeleteRows"))->trigger();
    } else if (how == "Typing") {
        QTest::keyClick(view, Qt::Key_F2);
        ASSERT_NE(view->activeEditor(), nullptr);
        QTest::keyClicks(view->activeEditor(), QStringLiteral("abc"));
        QTest::keyClick(view->activeEditor(), Qt::Key_Return);
    }
    // Whatever the grid's view still had queued runs now, and then what the
    // deleted control left behind goes.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(fired);
    EXPECT_TRUE(journal.isNull());
}

INSTANTIATE_TEST_SUITE_P(Starts, WidgetLifetime, ::testing::Values("DeleteKey", "MenuItem", "Typing"));
