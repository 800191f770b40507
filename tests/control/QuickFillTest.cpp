// Whole records from their explanation: an explanation earlier records
// carry fills the empty account and amount from the latest of them, as one
// undo step with the explanation; what the cashier typed stands; the host
// can turn it off, and the bag keeps the choice.
#include "support/SampleJournal.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"

#include <kxjournal/EditCycle.h>
#include <kxjournal/PropertyBag.h>

namespace {

struct Filling : kxtest::SampleJournal {
    Filling() : SampleJournal(200)
    {
        journal.setAsker([](const QString &, const QString &) { return true; });
        g = kx::Sheet::of(journal.Grid());
        const kx::JournalColumns columns(*g);
        // The latest record of an explanation that recurs, and its figures.
        for (int r = g->rows() - 1; r > g->fixedRows() && source < 0; --r) {
            const kx::BookRow row = kx::BookRow::of(*g, columns, r);
            if (!row.isDated() || row.isSummary() || row.text(kx::JournalColumns::AccName).isEmpty())
                continue;
            source = r;
        }
        explain = g->text(source, QStringLiteral("Explain"));
        blank = g->rows() - 1;
    }
    bool type(const char *key, const QString &text)
    {
        return g->editCycle()->editCell(blank, g->colIndex(QString::fromLatin1(key)), text);
    }
    QString at(const char *key) const { return g->text(blank, QString::fromLatin1(key)); }
    kx::Sheet *g = nullptr;
    int source = -1;
    int blank = 0;
    QString explain;
};

} // namespace

TEST(QuickFill, TheLatestRecordOfAnExplanationFillsTheEmptyFieldsAsOneStep)
{
    Filling f;
    ASSERT_GT(f.source, 0);
    ASSERT_FALSE(f.explain.isEmpty());
    ASSERT_TRUE(f.type("ShowName", QStringLiteral("2025-12-31")));
    const QString balanceBefore = f.g->text(f.blank, QStringLiteral("Balance"));
    ASSERT_TRUE(f.type("Explain", f.explain));
    EXPECT_EQ(f.at("AccName"), f.g->text(f.source, QStringLiteral("AccName")));
    EXPECT_EQ(f.at("AccID"), f.g->text(f.source, QStringLiteral("AccID")));
    EXPECT_EQ(f.g->amount(f.blank, f.g->colIndex(QStringLiteral("Debit"))),
              f.g->amount(f.source, f.g->colIndex(QStringLiteral("Debit"))));
    EXPECT_EQ(f.g->amount(f.blank, f.g->colIndex(QStringLiteral("Credit"))),
              f.g->amount(f.source, f.g->colIndex(QStringLiteral("Credit"))));
    const kx::Currency moved = f.g->amount(f.blank, f.g->colIndex(QStringLiteral("Debit"))) -
                               f.g->amount(f.blank, f.g->colIndex(QStringLiteral("Credit")));
    ASSERT_FALSE(moved.isZero());
    EXPECT_NE(f.g->text(f.blank, QStringLiteral("Balance")), balanceBefore) << "the balance follows the amount";

    // One step: the explanation and what it filled go back together.
    f.journal.undo();
    EXPECT_EQ(f.at("Explain"), QString());
    EXPECT_EQ(f.at("AccName"), QString());
    EXPECT_EQ(f.at("Debit"), QString());
    EXPECT_EQ(f.at("Credit"), QString());
    EXPECT_EQ(f.at("ShowName").isEmpty(), false) << "the date typed before stays";
}

TEST(QuickFill, WhatWasTypedStandsAndTheHostMayTurnItOff)
{
    Filling f;
    ASSERT_TRUE(f.type("ShowName", QStringLiteral("2025-12-31")));
    ASSERT_TRUE(f.type("Debit", QStringLiteral("7.77")));
    ASSERT_TRUE(f.type("Explain", f.explain));
    EXPECT_EQ(f.at("AccName"), f.g->text(f.source, QStringLiteral("AccName"))) << "the empty account is filled";
    EXPECT_EQ(f.g->amount(f.blank, f.g->colIndex(QStringLiteral("Debit"))), kx::Currency::fromText(QStringLiteral("7.77")).value())
        << "the amount typed stands";
    EXPECT_TRUE(f.at("Credit").isEmpty());

    Filling off;
    off.journal.setQuickFill(false);
    kx::PropertyBag bag;
    off.journal.WriteProperties(bag);
    Filling restored;
    restored.journal.ReadProperties(bag);
    EXPECT_FALSE(restored.journal.quickFill()) << "the bag keeps the choice";
    ASSERT_TRUE(restored.type("ShowName", QStringLiteral("2025-12-31")));
    ASSERT_TRUE(restored.type("Explain", restored.explain));
    EXPECT_TRUE(restored.at("AccName").isEmpty());
    EXPECT_TRUE(restored.at("Debit").isEmpty());
    EXPECT_TRUE(restored.at("Credit").isEmpty());
}

// A new record takes the next 单据号 as it is dated: the nearest number above
// with its prefix and width, wider when it runs out; a number typed first
// stands; the host can turn it off.
TEST(Numbering, ANewRecordTakesTheNextNumberAsItIsDated)
{
    const auto numberAfter = [](const QString &above, const QString &between, bool on, const QString &typed = {}) {
        Filling f;
        f.journal.setAutoNumber(on);
        const int no = f.g->colIndex(QStringLiteral("JnlNo"));
        // The last record above the empty row, and one more above it.
        const kx::JournalColumns columns(*f.g);
        int last = f.blank - 1;
        while (!kx::BookRow::of(*f.g, columns, last).isDated() || kx::BookRow::of(*f.g, columns, last).isSummary())
            --last;
        int earlier = last - 1;
        while (kx::BookRow::of(*f.g, columns, earlier).isSummary())
            --earlier;
        f.g->setText(earlier, no, above);
        f.g->setText(last, no, between);
        if (!typed.isEmpty())
            EXPECT_TRUE(f.type("JnlNo", typed));
        EXPECT_TRUE(f.type("ShowName", QStringLiteral("2025-12-31")));
        return f.at("JnlNo");
    };
    EXPECT_EQ(numberAfter(QStringLiteral("1"), QStringLiteral("收-0099"), true), QStringLiteral("收-0100"));
    EXPECT_EQ(numberAfter(QStringLiteral("1"), QStringLiteral("99"), true), QStringLiteral("100"));
    EXPECT_EQ(numberAfter(QStringLiteral("1"), QStringLiteral("20240131000000000001"), true), QStringLiteral("20240131000000000002"))
        << "digits beyond the fifteen counted stay as they are";
    EXPECT_EQ(numberAfter(QStringLiteral("A7"), QString(), true), QStringLiteral("A8")) << "a record without a number is passed";
    EXPECT_EQ(numberAfter(QStringLiteral("1"), QStringLiteral("12"), true, QStringLiteral("X1")), QStringLiteral("X1"))
        << "a number typed first stands";
    EXPECT_EQ(numberAfter(QStringLiteral("1"), QStringLiteral("12"), false), QString()) << "turned off";
}

// A summary row is no record to copy; a closed month's records take nothing.
TEST(QuickFill, SummaryRowsAreNoSourceAndClosedRecordsTakeNothing)
{
    Filling f;
    // Early in the book, so that the last days stay open to new records.
    const int summary = f.g->fixedRows() + 4;
    ASSERT_TRUE(f.journal.InsSumRow(summary - 1));
    const kx::JournalColumns columns(*f.g);
    ASSERT_TRUE(kx::BookRow::of(*f.g, columns, summary).isSummary());
    f.g->setText(summary, f.g->colIndex(QStringLiteral("Explain")), QStringLiteral("只在汇总行上的摘要"));
    f.blank = f.g->rows() - 1;
    ASSERT_TRUE(f.type("ShowName", QStringLiteral("2025-12-31")));
    ASSERT_TRUE(f.type("Explain", QStringLiteral("只在汇总行上的摘要")));
    EXPECT_TRUE(f.at("AccName").isEmpty());
    EXPECT_TRUE(f.at("Debit").isEmpty());
    EXPECT_TRUE(f.at("Credit").isEmpty());

    Filling closed;
    ASSERT_TRUE(closed.journal.CloseBook());
    ASSERT_TRUE(closed.journal.Save());
    // The record with the account emptied on purpose, in the closed month.
    const QString account = closed.g->text(closed.source, QStringLiteral("AccName"));
    EXPECT_FALSE(closed.g->editCycle()->editCell(closed.source, closed.g->colIndex(QStringLiteral("Explain")), closed.explain));
    EXPECT_EQ(closed.g->text(closed.source, QStringLiteral("AccName")), account);
    EXPECT_FALSE(closed.journal.IsDirty());
}
