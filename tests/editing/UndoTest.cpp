// Undo and redo of edits: every cell an edit touched comes back, and the
// history ends where something else changed the grid.
#include "QtPrinters.h"
#include "editing/EditingBook.h"

#include <kxjournal/EditCycle.h>

#include <QSignalSpy>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

// Every cell's text, colour and every row mark: what undo must give back exactly.
QStringList snapshot(const kx::Sheet &g)
{
    QStringList s;
    for (int r = 0; r < g.rows(); ++r) {
        s << QStringLiteral("#%1 mark=%2").arg(r).arg(g.rowData(r).toString());
        for (int c = 0; c < g.cols(); ++c)
            s << g.text(r, c) + QLatin1Char('/') + g.cellForeColor(r, c).name();
    }
    return s;
}

} // namespace

TEST(Undo, AnAmountEditComesBackWithEveryBalanceBelowAndRedoesExactly)
{
    EditingBook b;
    kxtest::runMenuItem(*b.journal, "mnuRecalc");
    b.journal->setModifiedForeColor(QColor(200, 0, 0));
    const QStringList before = snapshot(*b.grid);
    EXPECT_FALSE(b.journal->canUndo());
    ASSERT_TRUE(b.type(2, "Credit", QStringLiteral("70")));
    ASSERT_EQ(b.text(2, "Debit"), QString());
    ASSERT_EQ(b.text(4, "Balance"), QStringLiteral("680"));
    const QStringList after = snapshot(*b.grid);
    ASSERT_TRUE(b.journal->canUndo());

    QSignalSpy dirty(b.journal.get(), &kx::Journal::dirtyChanged);
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(snapshot(*b.grid), before);
    EXPECT_FALSE(b.journal->IsDirty());
    EXPECT_EQ(dirty.count(), 1);
    EXPECT_EQ(b.grid->row(), 2);
    EXPECT_EQ(b.grid->col(), b.col("Credit"));
    ASSERT_TRUE(b.journal->redo());
    EXPECT_EQ(snapshot(*b.grid), after);
    EXPECT_TRUE(b.journal->IsDirty());
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(snapshot(*b.grid), before);
}

TEST(Undo, StepsUndoInTurnAndAnAppendedRowGoesAgain)
{
    EditingBook b;
    kxtest::runMenuItem(*b.journal, "mnuRecalc");
    const int rows = b.grid->rows();
    const QStringList start = snapshot(*b.grid);
    ASSERT_TRUE(b.type(rows - 1, "ShowName", QStringLiteral("0120")));
    ASSERT_TRUE(b.type(rows - 1, "AccName", QStringLiteral("glfy")));
    ASSERT_TRUE(b.type(rows - 1, "Debit", QStringLiteral("99")));
    ASSERT_EQ(b.grid->rows(), rows + 1);
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(rows - 1, "Debit"), QString());
    EXPECT_EQ(b.text(rows - 1, "AccName"), QStringLiteral("管理费用"));
    ASSERT_TRUE(b.journal->undo());
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.grid->rows(), rows);
    EXPECT_EQ(snapshot(*b.grid), start);
    EXPECT_FALSE(b.journal->undo());
    ASSERT_TRUE(b.journal->redo());
    ASSERT_TRUE(b.journal->redo());
    ASSERT_TRUE(b.journal->redo());
    EXPECT_EQ(b.text(rows - 1, "Debit"), QStringLiteral("99"));
    EXPECT_EQ(b.grid->rows(), rows + 1);
}

// Undo keeps what the user typed; balances are worked out again from it. A
// book whose stored balances were wrong (this one stores none) shows the
// running sums after the undo of its first edit, not the stored figures.
TEST(Undo, BalancesAreWorkedOutAgainNotPutBack)
{
    EditingBook b;
    ASSERT_EQ(b.text(4, "Balance"), QString()) << "as stored";
    const QString typed = b.text(2, "Credit");
    ASSERT_TRUE(b.type(2, "Credit", QStringLiteral("70")));
    ASSERT_EQ(b.text(4, "Balance"), QStringLiteral("680"));
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(2, "Credit"), typed);
    EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
    // 1000 + 500 − 200 − 50, row by row.
    EXPECT_EQ(b.text(1, "Balance"), QStringLiteral("1000"));
    EXPECT_EQ(b.text(2, "Balance"), QStringLiteral("1500"));
    EXPECT_EQ(b.text(3, "Balance"), QStringLiteral("1300"));
    EXPECT_EQ(b.text(4, "Balance"), QStringLiteral("1250"));
    EXPECT_FALSE(b.journal->IsDirty());
    ASSERT_TRUE(b.journal->redo());
    EXPECT_EQ(b.text(4, "Balance"), QStringLiteral("680"));
}

TEST(Undo, SaveLoadAndChangesMadeElsewhereEndTheHistory)
{
    EditingBook b;
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("一")));
    ASSERT_TRUE(b.journal->Save());
    EXPECT_FALSE(b.journal->canUndo());
    EXPECT_FALSE(b.journal->undo());
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("一"));

    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("二")));
    b.grid->moveColTo(b.col("Remark"), b.col("Remark") - 1);
    EXPECT_FALSE(b.journal->undo()) << "columns moved under the step: it must not be put back";
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("二"));

    ASSERT_TRUE(b.type(5, "Explain", QStringLiteral("三")));
    b.grid->setText(5, b.col("Remark"), QStringLiteral("host"));
    EXPECT_FALSE(b.journal->canUndo());

    ASSERT_TRUE(b.type(5, "Explain", QStringLiteral("四")));
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_FALSE(b.journal->canUndo());
}

TEST(Undo, ARefusedEditLeavesNoStepAndKeepsTheHistory)
{
    EditingBook b;
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("一")));
    EXPECT_FALSE(b.type(2, "AccName", QStringLiteral("no such account")));
    EXPECT_FALSE(b.type(3, "ShowName", QStringLiteral("1999-01-01")));
    ASSERT_TRUE(b.journal->canUndo());
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收到货款"));
    EXPECT_EQ(b.journal->AccID(2), b.receivable);
}

TEST(Undo, AHostSavingFromTheUndoEventsOrAnOpenEditNeverBreaksAStep)
{
    EditingBook b;
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("一")));
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("二")));
    // A host that stores on every change: the step being undone must outlive it.
    const auto saving = QObject::connect(b.journal.get(), &kx::Journal::DataChanged, [&] { b.journal->Save(); });
    EXPECT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));
    QObject::disconnect(saving);

    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("三")));
    kx::EditCycle *cycle = b.grid->editCycle();
    ASSERT_TRUE(cycle->begin(2, b.col("Remark")));
    EXPECT_FALSE(b.journal->canUndo()) << "not while an edit is open";
    EXPECT_FALSE(b.journal->undo());
    cycle->cancel();
    EXPECT_TRUE(b.journal->undo());
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));
}
