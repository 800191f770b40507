// The ledger classes on a bare grid, reporting to a plain LedgerHost: no
// control, no widget, and the model contract checked all along.
#include "QtPrinters.h"
#include "support/SampleBookFixture.h"
#include "support/TestDatabase.h"

#include "data/JournalDefinition.h"
#include "ledger/Book.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/BookSaver.h"
#include "ledger/CommandRegistry.h"
#include "ledger/LedgerCommands.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/SummaryRows.h"

#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QAbstractItemModelTester>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

// What a host hears: every message, every progress step.
struct Transcript : kx::LedgerHost {
    void prompt(const QString &text, bool) override { messages << text; }
    void progress(int percent) override { steps << percent; }
    void markDirty() override { ++dirty; }
    QStringList messages;
    QList<int> steps;
    int dirty = 0;
};

class LedgerWithoutControl : public ::testing::TestWithParam<Engine>, protected kxtest::SampleBookFixture
{
protected:
    void SetUp() override
    {
        openSample(GetParam(), 120);
    }

    // The sample loaded into \a book, as it is stored (figures unformatted).
    void load(kx::Book &book, kx::LedgerHost &host)
    {
        kx::JournalDefinition(acc->Connection(), book.state().book).read(docId);
        ASSERT_EQ(kx::BookLoader(on(book, host)).load(0), kx::BookLoader::Loaded);
    }

};

} // namespace

TEST_P(LedgerWithoutControl, LoadEditSumAndSaveOnABareGrid)
{
    kx::Book book;
    kx::Sheet &grid = book.sheet();
    QAbstractItemModelTester tester(&grid, QAbstractItemModelTester::FailureReportingMode::Fatal);
    kx::LedgerState &state = book.state();
    Transcript host;
    load(book, host);
    EXPECT_EQ(host.steps.front(), 0);
    EXPECT_EQ(host.steps.back(), -1);
    EXPECT_TRUE(host.messages.last().startsWith(QStringLiteral("已读入“")));

    const kx::JournalColumns columns(grid);
    int record = 0;
    for (int r = grid.fixedRows() + 1; r < grid.rows() && !record; ++r)
        if (kx::BookRow(grid, columns, r).isDated() && !kx::BookRow(grid, columns, r).isSummary() &&
            r > state.lastSumRow)
            record = r;
    ASSERT_GT(record, 0);
    kx::BookRow(grid, columns, record).setText(kx::JournalColumns::Explain, QStringLiteral("不经控件改的摘要"));
    ASSERT_TRUE(kx::SummaryRows(on(book, host)).insert(record));
    EXPECT_EQ(host.dirty, 1);
    EXPECT_EQ(state.lastSumRow, record + 1);
    const kx::JournalColumns after(grid);
    EXPECT_TRUE(kx::BookRow(grid, after, record + 1).isSummary());

    state.dirty = true;
    ASSERT_TRUE(kx::BookSaver(on(book, host)).save(QStringLiteral("测试"), 1))
        << host.messages.join(QLatin1Char('\n')).toStdString();
    EXPECT_FALSE(state.dirty);

    kx::Book second;
    kx::Sheet &again = second.sheet();
    QAbstractItemModelTester againTester(&again, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const kx::LedgerState &reread = second.state();
    load(second, kx::LedgerHost::none());
    ASSERT_EQ(again.rows(), grid.rows());
    const kx::JournalColumns cols(again);
    EXPECT_EQ(kx::BookRow(again, cols, record).text(kx::JournalColumns::Explain), QStringLiteral("不经控件改的摘要"));
    EXPECT_TRUE(kx::BookRow(again, cols, record + 1).isSummary());
    EXPECT_EQ(reread.lastSumRow, state.lastSumRow);
}

TEST_P(LedgerWithoutControl, WithoutAContextNothingIsReadOrWritten)
{
    Transcript host;
    kx::Book book(host);
    kx::LedgerState &state = book.state();
    EXPECT_EQ(kx::BookLoader(book).load(docId), kx::BookLoader::Failed);
    state.dirty = true;
    EXPECT_FALSE(kx::BookSaver(book).save(QStringLiteral("x"), 1));
    EXPECT_TRUE(state.dirty);
    EXPECT_EQ(host.messages.count(QStringLiteral("没有连接到账套。")), 2);
}

TEST_P(LedgerWithoutControl, BookCommandsRunThroughTheRegistryAndItsGate)
{
    kx::Book book;
    kx::Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
    Transcript host;
    load(book, host);
    kx::CommandRegistry registry;
    kx::LedgerCommands::offer(registry, book);
    const kx::Command *recalc = registry.byName(QStringLiteral("mnuRecalc"));
    ASSERT_NE(recalc, nullptr);
    EXPECT_EQ(registry.byCommand(QStringLiteral("mnuRecalc")), nullptr) << "menu names are not command names";

    bool open = false;
    registry.setGate([&](const kx::Command &) { return open; });
    EXPECT_FALSE(registry.run(*recalc));
    EXPECT_FALSE(host.messages.contains(QStringLiteral("已经重新计算全部余额。")));
    open = true;
    EXPECT_TRUE(registry.run(*recalc));
    EXPECT_TRUE(host.messages.contains(QStringLiteral("已经重新计算全部余额。")));
}

INSTANTIATE_TEST_SUITE_P(Engines, LedgerWithoutControl, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
