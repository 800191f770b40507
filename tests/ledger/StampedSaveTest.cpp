// A save that trusts what it noted at the load or the last save (and skips
// reading the book back), or that writes a record where it stands, must still
// store what the grid shows and keep what others stored.
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
#include "ledger/ConflictCheck.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QSqlQuery>
#include <gtest/gtest.h>

using kxtest::Engine;
using C = kx::JournalColumns;

namespace {

struct Host : kx::LedgerHost {
    void prompt(const QString &text, bool) override { said << text; }
    void failure(const QString &text, bool) override { failed << text; }
    bool ask(const QString &text, const QString &) override
    {
        asked << text;
        return true;
    }
    QStringList said, failed, asked;
};

class StampedSave : public ::testing::Test, protected kxtest::SampleBookFixture
{
protected:
    void SetUp() override
    {
        openSample(Engine::Sqlite, 200);
        kx::JournalDefinition(acc->Connection(), state.book).read(docId);
        state.fields.accountFormat = QStringLiteral("0.00");
    }

    void load()
    {
        ASSERT_EQ(kx::BookLoader(on(book, kx::LedgerHost::none())).load(0), kx::BookLoader::Loaded);
    }

    bool save()
    {
        state.dirty = true;
        return kx::BookSaver(on(book, host)).save(QStringLiteral("测试"), 1);
    }

    void typeDebit(int row, const QString &debit)
    {
        const C columns(grid);
        kx::BookRow(grid, columns, row).setText(C::Debit, debit);
        kx::BookRow(grid, columns, row).setText(C::Credit, QString());
        kx::BalanceCalculator(book).calculate(grid.fixedRows());
    }

    // A field of a stored record, read on a connection of its own.
    QVariant storedField(const QString &field, int recId) const
    {
        kx::Database reader = testDb->open();
        QSqlQuery q(reader.handle());
        q.prepare(QStringLiteral("SELECT %1 FROM kxJournalRecs WHERE RecID = ?").arg(field));
        q.addBindValue(recId);
        EXPECT_TRUE(q.exec() && q.next());
        return q.value(0);
    }

    kx::Book book;
    kx::Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
    Host host;
};

} // namespace

// The host closes the connection; the save opens it again, and the engine may
// hand out a fresh connection at the same address that counts from the start
// again. What another program stored meanwhile is still seen.
TEST_F(StampedSave, AConnectionOpenedAgainStillSeesOtherChanges)
{
    load();
    const C columns(grid);
    const int targetRow = grid.fixedRows() + 40;
    const int target = kx::BookRow(grid, columns, targetRow).recId();
    ASSERT_GT(target, 0);
    {
        kx::Database other = testDb->open();
        ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("UPDATE kxJournalRecs SET Explain = ? WHERE RecID = ?"),
                                       {QStringLiteral("另一个程序改的"), target}})
                        .ok());
    }
    acc->Connection().handle().close();
    kx::BookRow(grid, columns, targetRow).setText(C::Remark, QStringLiteral("我们的备注"));
    ASSERT_TRUE(save()) << host.failed.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(storedField(QStringLiteral("Explain"), target).toString(), QStringLiteral("另一个程序改的"));
    EXPECT_EQ(storedField(QStringLiteral("Remark"), target).toString(), QStringLiteral("我们的备注"));
}

// A load inside a transaction of the host's reads what the host has not
// committed; once the host rolls back, the save must not take it for stored.
TEST_F(StampedSave, ALoadInsideARolledBackTransactionIsNotTrusted)
{
    load();
    const C columns(grid);
    const int targetRow = grid.fixedRows() + 40;
    const int target = kx::BookRow(grid, columns, targetRow).recId();
    ASSERT_GT(target, 0);
    const QString stored = storedField(QStringLiteral("Explain"), target).toString();
    QSqlDatabase handle = acc->Connection().handle();
    ASSERT_TRUE(handle.transaction());
    ASSERT_TRUE(kx::sqlRun(acc->Connection(), {QStringLiteral("UPDATE kxJournalRecs SET Explain = ? WHERE RecID = ?"),
                                                {QStringLiteral("未提交的说明"), target}})
                    .ok());
    load();
    ASSERT_TRUE(handle.rollback());
    ASSERT_EQ(kx::BookRow(grid, columns, targetRow).recId(), target);
    kx::BookRow(grid, columns, targetRow).setText(C::Remark, QStringLiteral("我们的备注"));
    ASSERT_TRUE(save()) << host.failed.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(storedField(QStringLiteral("Explain"), target).toString(), stored);
    EXPECT_EQ(storedField(QStringLiteral("Remark"), target).toString(), QStringLiteral("我们的备注"));
}

// Another user swapped the places of two records; a save in bulk merges that
// and must store each record at the place the grid shows it, so that what it
// remembers is what the database holds.
TEST_F(StampedSave, APlaceChangedElsewhereIsWrittenBackInBulk)
{
    load();
    const C columns(grid);
    const int a = grid.fixedRows() + 60;
    const int keyA = kx::BookRow(grid, columns, a).recId();
    const int keyB = kx::BookRow(grid, columns, a + 1).recId();
    ASSERT_GT(keyA, 0);
    ASSERT_GT(keyB, 0);
    {
        kx::Database other = testDb->open();
        ASSERT_TRUE(kx::sqlRun(other, {QStringLiteral("UPDATE kxJournalRecs SET Row = CASE RecID WHEN ? THEN ? ELSE ? END "
                                                      "WHERE RecID IN (?, ?)"),
                                       {keyA, a + 1, a, keyA, keyB}})
                        .ok());
    }
    typeDebit(grid.fixedRows() + 1, QStringLiteral("4321.5"));  // every balance below moves: a bulk pass
    ASSERT_TRUE(save()) << host.failed.join(QLatin1Char('\n')).toStdString();
    ASSERT_EQ(kx::BookRow(grid, columns, a).recId(), keyA);
    EXPECT_EQ(storedField(QStringLiteral("Row"), keyA).toInt(), a);
    EXPECT_EQ(storedField(QStringLiteral("Row"), keyB).toInt(), a + 1);
    const kx::Result<QList<int>> changed =
        kx::ConflictCheck(acc->Connection(), state.stored).changedElsewhere({keyA, keyB}, docId);
    ASSERT_TRUE(changed.ok());
    EXPECT_TRUE(changed.value().isEmpty()) << changed.value().size() << " records differ from what was remembered";
}
