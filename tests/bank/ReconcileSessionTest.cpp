// Reconciling by hand: ticks one to one and one to many, refusals that say
// why, undo of each step, the month shown, and a statement line made into
// a journal record through the edit pipeline.
#include "support/TestDatabase.h"

#include "bank/ReconcileSession.h"
#include "bank/StatementStore.h"
#include "editing/EditContext.h"
#include "editing/EditRules.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "output/BookSession.h"

#include <kxjournal/SqlAccContext.h>

#include <gtest/gtest.h>

namespace {

class ReconcileByHand : public ::testing::Test
{
protected:
    void SetUp() override
    {
        {
            kx::Database filler = testDb.open();
            docId = kxtest::fillSampleBooks(filler, 200, 1);
        }
        ASSERT_GT(docId, 0);
        acc = std::make_unique<kx::SqlAccContext>(testDb.open());
        session = std::make_unique<kx::BookSession>(acc.get(), docId, kx::LedgerHost::none());
        ASSERT_TRUE(session->load());
        for (const kx::BankRecord &r : kx::BankRecord::of(session->book()))
            if (r.date.month() == 3)
                march << r;
        ASSERT_GT(march.size(), 6);
    }
    // The first two records of March on \a side.
    QList<kx::BankRecord> two(kx::StatementSide side) const
    {
        QList<kx::BankRecord> out;
        for (const kx::BankRecord &r : march)
            if (r.side == side && out.size() < 2)
                out << r;
        return out;
    }
    int lineId(const QString &reference) const
    {
        const QList<kx::StoredLine> lines = kx::StatementStore(acc->Connection()).lines(docId).value();
        for (const kx::StoredLine &l : lines)
            if (l.line.reference == reference)
                return l.id;
        return 0;
    }
    kxtest::TestDatabase testDb{kxtest::Engine::Sqlite};
    int docId = 0;
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::BookSession> session;
    QList<kx::BankRecord> march;
};

kx::StatementLine bankLine(const QDate &date, kx::StatementSide side, kx::Currency amount, const char *reference,
                           const QString &counterparty = QString())
{
    kx::StatementLine l;
    l.date = date;
    l.side = side;
    l.amount = amount;
    l.reference = QString::fromLatin1(reference);
    l.counterparty = counterparty;
    l.memo = QStringLiteral("网银转账");
    return l;
}

} // namespace

TEST_F(ReconcileByHand, TicksOneToOneAndOneToManyAndUndoesEachStep)
{
    const QList<kx::BankRecord> pay = two(kx::StatementSide::Payment);
    ASSERT_EQ(pay.size(), 2);
    kx::Statement s;
    s.hash = "march";
    s.lines << bankLine(pay[1].date, kx::StatementSide::Payment, pay[0].amount + pay[1].amount, "BOTH")
            << bankLine(pay[0].date, kx::StatementSide::Receipt, pay[0].amount, "WRONGSIDE")
            << bankLine(QDate(2025, 4, 2), kx::StatementSide::Payment, kx::Currency::fromUnits(3), "APRIL");
    ASSERT_TRUE(kx::StatementStore(acc->Connection()).import(docId, s, QStringLiteral("三月.csv"), QString()).ok());

    kx::ReconcileSession r(session->book(), acc->Connection(), QStringLiteral("出纳"));
    ASSERT_TRUE(r.read().ok());
    r.setMonth(QDate(2025, 3, 17));
    EXPECT_EQ(r.openLines().size(), 2) << "April's line is not shown in March";
    EXPECT_EQ(r.openRecords().size(), march.size());

    const int both = lineId(QStringLiteral("BOTH"));
    kx::Result<void> done = r.match(both, {pay[0].recId});
    ASSERT_FALSE(done.ok());
    EXPECT_TRUE(done.error().contains(QStringLiteral("金额不符"))) << qPrintable(done.error());
    done = r.match(lineId(QStringLiteral("WRONGSIDE")), {pay[0].recId});
    ASSERT_FALSE(done.ok());
    EXPECT_EQ(done.error(), QStringLiteral("对账单是收，所选的记录是付，不能勾对。"));

    ASSERT_TRUE(r.match(both, {pay[0].recId, pay[1].recId}).ok());
    EXPECT_TRUE(r.isMatched(pay[0].recId));
    EXPECT_EQ(r.openRecords().size(), march.size() - 2);
    EXPECT_EQ(r.openLines().size(), 1);
    EXPECT_EQ(kx::StatementStore(acc->Connection()).matches(docId).value().values(both).size(), 2) << "stored at once";
    EXPECT_FALSE(r.match(both, {march.last().recId}).ok()) << "a line is ticked once";

    ASSERT_TRUE(r.unmatch(both).ok());
    EXPECT_FALSE(r.isMatched(pay[1].recId));
    EXPECT_TRUE(kx::StatementStore(acc->Connection()).matches(docId).value().isEmpty());
    ASSERT_TRUE(r.undo().value()) << "the untick taken back";
    EXPECT_TRUE(r.isMatched(pay[1].recId));
    ASSERT_TRUE(r.undo().value()) << "the tick taken back";
    EXPECT_EQ(r.openRecords().size(), march.size());
    EXPECT_TRUE(kx::StatementStore(acc->Connection()).matches(docId).value().isEmpty());
    EXPECT_FALSE(r.undo().value());

    // A fresh read sees what was stored.
    ASSERT_TRUE(r.match(both, {pay[1].recId, pay[0].recId}).ok());
    kx::ReconcileSession again(session->book(), acc->Connection(), QString());
    ASSERT_TRUE(again.read().ok());
    EXPECT_TRUE(again.isMatched(pay[0].recId));
    EXPECT_TRUE(again.isMatched(pay[1].recId));
}

TEST_F(ReconcileByHand, ALineTheJournalLacksBecomesARecordAsIfTyped)
{
    kx::Book &book = session->book();
    book.state().allowModify = true;
    const kx::JournalColumns columns = book.columns();
    // The counterparty of an earlier record, and the account it went to.
    QString counterparty, account;
    for (int row = book.sheet().fixedRows(); row < book.sheet().rows() && counterparty.isEmpty(); ++row) {
        const kx::BookRow r = kx::BookRow::of(book.sheet(), columns, row);
        const QString explain = r.text(kx::JournalColumns::Explain);
        if (explain.startsWith(QStringLiteral("收到")) && explain.contains(QStringLiteral("公司")) &&
            !r.text(kx::JournalColumns::AccName).isEmpty()) {
            counterparty = explain.mid(2, explain.indexOf(QStringLiteral("公司")));
            account = r.text(kx::JournalColumns::AccName);
        }
    }
    ASSERT_FALSE(counterparty.isEmpty());
    kx::Statement s;
    s.hash = "fee";
    s.lines << bankLine(QDate(2025, 12, 30), kx::StatementSide::Receipt, kx::Currency::fromText(QStringLiteral("1234.56")).value(),
                        "R1", counterparty);
    ASSERT_TRUE(kx::StatementStore(acc->Connection()).import(docId, s, QStringLiteral("r.csv"), QString()).ok());
    kx::ReconcileSession r(book, acc->Connection(), QString());
    ASSERT_TRUE(r.read().ok());

    kx::EditContext ctx(book);
    const kx::EditRules rules;
    const int rowsBefore = book.sheet().rows();
    const kx::Result<int> made = r.recordFrom(lineId(QStringLiteral("R1")), ctx, rules);
    ASSERT_TRUE(made.ok()) << qPrintable(made.error());
    const kx::BookRow row = kx::BookRow::of(book.sheet(), columns, made.value());
    EXPECT_EQ(row.date(), QDate(2025, 12, 30));
    EXPECT_EQ(row.text(kx::JournalColumns::Explain), QStringLiteral("网银转账（") + counterparty + QStringLiteral("）"));
    EXPECT_EQ(row.text(kx::JournalColumns::AccName), account);
    EXPECT_EQ(row.debit(), kx::Currency::fromText(QStringLiteral("1234.56")).value());
    EXPECT_TRUE(row.credit().isZero());
    EXPECT_EQ(row.balance(), kx::BookRow::of(book.sheet(), columns, made.value() - 1).balance() + row.debit())
        << "the balance worked out as for a typed amount";
    EXPECT_TRUE(book.state().dirty);
    EXPECT_GE(book.sheet().rows(), rowsBefore);
    EXPECT_FALSE(kx::BookRow::of(book.sheet(), columns, book.sheet().rows() - 1).isDated()) << "an empty row waits below";
}
