// A save writes only what differs from what the database holds, and the
// database still ends as if every row had been written.
#include "QtPrinters.h"
#include "support/SampleBookFixture.h"
#include "support/TestDatabase.h"

#include "data/JournalDefinition.h"
#include "data/SqlAccess.h"
#include "ledger/Book.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/BookSaver.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QRandomGenerator>
#include <gtest/gtest.h>

using kxtest::Engine;
using C = kx::JournalColumns;

namespace {

struct Messages : kx::LedgerHost {
    void prompt(const QString &text, bool) override { said << text; }
    QStringList said;
};

class PartialSave : public ::testing::TestWithParam<Engine>, protected kxtest::SampleBookFixture
{
protected:
    void SetUp() override
    {
        openSample(GetParam(), 150);
        loadSample(book);
    }

    bool save()
    {
        state.dirty = true;
        const bool ok = kx::BookSaver(on(book, host)).save(QStringLiteral("测试"), 1);
        if (!ok)
            ADD_FAILURE() << host.said.join(QLatin1Char('\n')).toStdString();
        return ok;
    }

    // What a full rewrite would store: every dated row's stored fields, in grid order.
    static QStringList stored(const kx::Sheet &g)
    {
        const C columns(g);
        QStringList out;
        for (int r = g.fixedRows(); r < g.rows(); ++r) {
            const kx::BookRow row = kx::BookRow::of(g, columns, r);
            if (!row.isDated())
                continue;
            QStringList f{QString::number(row.recId()), row.dateText(), row.text(C::JnlNo), QString::number(row.accId()),
                          row.text(C::Explain), row.balance().toString(), row.text(C::Field1), row.text(C::Remark),
                          QString::number(row.tag()), QString::number(row.dirId())};
            if (!row.isSummary() || r == g.fixedRows())
                f << row.debit().toString() << row.credit().toString() << row.forex().toString();
            out << f.join(QLatin1Char('|'));
        }
        return out;
    }

    int firstOpenRecord() const
    {
        const C columns(grid);
        for (int r = std::max(state.lastSumRow, grid.fixedRows()) + 1; r < grid.rows(); ++r)
            if (kx::BookRow::of(grid, columns, r).isDated() && !kx::BookRow::of(grid, columns, r).isSummary())
                return r;
        return -1;
    }

    kx::Book book;
    kx::Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
    Messages host;
};

} // namespace

TEST_P(PartialSave, RandomChangesEndAsAFullRewriteWould)
{
    QRandomGenerator rng(GetParam() == Engine::Sqlite ? 7 : 11);
    for (int round = 0; round < 6; ++round) {
        const int open = firstOpenRecord();
        ASSERT_GT(open, 0);
        const C columns(grid);
        const auto anyOpenRow = [&] {
            int r = open + int(rng.bounded(quint32(grid.rows() - open)));
            while (r < grid.rows() - 1 && !kx::BookRow(grid, columns, r).isDated())
                ++r;
            return r;
        };
        for (int step = 0; step < 8; ++step) {
            const int r = anyOpenRow();
            const kx::BookRow row(grid, columns, r);
            switch (rng.bounded(5)) {
            case 0:
                row.setText(C::Explain, QStringLiteral("第%1轮改%2").arg(round).arg(step));
                break;
            case 1:
                row.setText(C::Debit, QString::number(rng.bounded(100000) / 100.0, 'f', 2));
                row.setText(C::Credit, QString());
                break;
            case 2: {
                grid.insertRowAt(r);
                const kx::BookRow fresh(grid, columns, r);
                fresh.setText(C::JnlDate, kx::BookRow(grid, columns, r + 1).dateText());
                fresh.setText(C::Explain, QStringLiteral("新增%1-%2").arg(round).arg(step));
                fresh.setText(C::Credit, QStringLiteral("12.5"));
                break;
            }
            case 3:
                if (row.isDated() && r != open) {
                    state.removedRecords << row.recId();
                    grid.removeRowAt(r);
                }
                break;
            default:
                if (r + 1 < grid.rows() && kx::BookRow(grid, columns, r + 1).isDated())
                    grid.moveRowTo(r, r + 1);
            }
        }
        kx::BalanceCalculator(book).calculate(grid.fixedRows());
        const QStringList expected = stored(grid);
        ASSERT_TRUE(save()) << "round " << round;

        kx::Book second;
        kx::Sheet &reread = second.sheet();
        loadSample(second);
        EXPECT_EQ(stored(reread), stored(grid)) << "round " << round;
        EXPECT_EQ(stored(grid).size(), expected.size());
        const int inDb = kx::sqlScalar(acc->Connection(), {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=?"), {docId}})
                             .valueOr(QVariant())
                             .toInt();
        EXPECT_EQ(inDb, expected.size()) << "no record left over, none missing";
    }
}

TEST_P(PartialSave, AnotherUsersChangeToAnUntouchedRowSurvives)
{
    const int mine = firstOpenRecord();
    ASSERT_GT(mine, 0);
    const C columns(grid);
    int theirs = mine + 1;
    while (!kx::BookRow(grid, columns, theirs).isDated() || kx::BookRow(grid, columns, theirs).isSummary())
        ++theirs;
    const int theirKey = kx::BookRow(grid, columns, theirs).recId();
    kx::Database other = testDb->open();
    ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("Update kxJournalRecs Set Explain=? Where RecID=?"),
                           {QStringLiteral("别人改的"), theirKey}})
                    .ok());

    kx::BookRow(grid, columns, mine).setText(C::Explain, QStringLiteral("我改的"));
    ASSERT_TRUE(save());
    EXPECT_EQ(kx::sqlScalar(other, {QStringLiteral("Select Explain From kxJournalRecs Where RecID=?"), {theirKey}})
                  .valueOr(QVariant())
                  .toString(),
              QStringLiteral("别人改的"));

    // A save with nothing changed writes nothing at all.
    ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("Update kxJournalRecs Set Remark=? Where DocID=?"),
                           {QStringLiteral("别人的备注"), docId}})
                    .ok());
    ASSERT_TRUE(save());
    EXPECT_EQ(kx::sqlScalar(other, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=? And Remark=?"),
                            {docId, QStringLiteral("别人的备注")}})
                  .valueOr(QVariant())
                  .toInt(),
              state.stored.count());
}

// A host that writes into the grid from a progress report of a save (here,
// halfway, into a record the pass has already gone by untouched) loses
// nothing: the change is stored, or the book stays dirty with it.
TEST_P(PartialSave, AChangeMadeWhileTheSaveReportsProgressIsNotLost)
{
    const C columns(grid);
    // A record in the first half, which the pass has gone by at halfway.
    int target = grid.fixedRows() + 1;
    while (!kx::BookRow(grid, columns, target).isDated() || kx::BookRow(grid, columns, target).isSummary())
        ++target;
    ASSERT_LT(target, grid.rows() / 2);
    const int key = kx::BookRow(grid, columns, target).recId();
    ASSERT_GT(key, 0);
    struct Meddling : Messages {
        kx::Sheet *grid = nullptr;
        int row = 0;
        bool done = false;
        void progress(int percent) override
        {
            if (percent >= 50 && !done) {
                done = true;
                const C columns(*grid);
                kx::BookRow(*grid, columns, row).setText(C::Explain, QStringLiteral("进度里改的"));
            }
        }
    } meddling;
    meddling.grid = &grid;
    meddling.row = target;
    // Something to save further down, so the pass has work past the middle.
    kx::BookRow(grid, columns, grid.rows() - 2).setText(C::Remark, QStringLiteral("最后一行的备注"));
    state.dirty = true;
    const bool saved = kx::BookSaver(on(book, meddling)).save(QStringLiteral("测试"), 1);
    ASSERT_TRUE(meddling.done);
    const QString stored = kx::sqlScalar(acc->Connection(), {QStringLiteral("Select Explain From kxJournalRecs Where RecID=?"), {key}})
                               .valueOr(QVariant())
                               .toString();
    if (stored != QStringLiteral("进度里改的")) {
        EXPECT_TRUE(state.dirty) << "saved " << saved;
        EXPECT_TRUE(grid.isRowTouched(target));
        state.dirty = true;
        ASSERT_TRUE(save());
        EXPECT_EQ(kx::sqlScalar(acc->Connection(), {QStringLiteral("Select Explain From kxJournalRecs Where RecID=?"), {key}})
                      .valueOr(QVariant())
                      .toString(),
                  QStringLiteral("进度里改的"));
    }

    // A host that never stops changing the grid gets a save that stores
    // nothing and says so, the book left dirty.
    struct Restless : Messages {
        kx::Sheet *grid = nullptr;
        int row = 0;
        int told = 0;
        void failure(const QString &text, bool) override { said << text; }
        void progress(int percent) override
        {
            if (percent > 0) {
                const C columns(*grid);
                kx::BookRow(*grid, columns, row).setText(C::Remark, QStringLiteral("第%1次").arg(++told));
            }
        }
    } restless;
    restless.grid = &grid;
    restless.row = target;
    const QString before = kx::sqlScalar(acc->Connection(), {QStringLiteral("Select Remark From kxJournalRecs Where RecID=?"), {key}})
                               .valueOr(QVariant())
                               .toString();
    state.dirty = true;
    EXPECT_FALSE(kx::BookSaver(on(book, restless)).save(QStringLiteral("测试"), 1));
    EXPECT_TRUE(restless.said.contains(QStringLiteral("存储时表格一直在被改动，没有存储任何记录。请稍后再存储。")))
        << restless.said.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(state.dirty);
    EXPECT_EQ(kx::sqlScalar(acc->Connection(), {QStringLiteral("Select Remark From kxJournalRecs Where RecID=?"), {key}})
                  .valueOr(QVariant())
                  .toString(),
              before);
}

INSTANTIATE_TEST_SUITE_P(Engines, PartialSave, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
