// The reconciliation view beside the journal, driven as a cashier drives
// it: ticks from the keyboard, the automatic pass from its button, a tick
// taken off and a step undone, each stored at once; a context the host
// deleted and a control closed under the view.
#include "support/SampleJournal.h"

#include "bank/StatementStore.h"
#include "bank/StatementMatcher.h"
#include "control/ReconcileView.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/BookRow.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct ReconcileFixture : kxtest::SampleJournal {
    ReconcileFixture() : SampleJournal(150)
    {
        journal.setAsker([](const QString &, const QString &) { return true; });
        const kx::Sheet &g = *kx::Sheet::of(journal.Grid());
        const kx::JournalColumns columns(g);
        for (int r = g.fixedRows(); r < g.rows(); ++r) {
            const kx::BookRow row = kx::BookRow::of(g, columns, r);
            if (!row.isOpening() && row.isDated() && !row.isSummary() && row.date().month() == 2 && row.recId() > 0)
                february << row.recId();
        }
        kx::Statement s;
        s.hash = "february";
        // One line for each February record but the last, a day later.
        for (int r = g.fixedRows(); r < g.rows(); ++r) {
            const kx::BookRow row = kx::BookRow::of(g, columns, r);
            if (!february.contains(row.recId()) || row.recId() == february.last())
                continue;
            kx::StatementLine l;
            l.date = row.date().addDays(1);
            const kx::Currency net = row.debit() - row.credit();
            l.side = net.sign() > 0 ? kx::StatementSide::Receipt : kx::StatementSide::Payment;
            l.amount = net.abs();
            l.reference = QStringLiteral("B%1").arg(row.recId());
            s.lines << l;
        }
        EXPECT_TRUE(kx::StatementStore(acc->Connection()).import(book, s, QStringLiteral("二月.csv"), QString()).ok());
    }
    kx::ReconcileView *open()
    {
        journal.DoCommand(QStringLiteral("Reconcile"));
        auto *view = journal.findChild<kx::ReconcileView *>(QStringLiteral("reconcileView"));
        if (view) {
            QApplication::setActiveWindow(view);
            EXPECT_TRUE(QTest::qWaitForWindowActive(view));
        }
        return view;
    }
    int stored() { return int(kx::StatementStore(acc->Connection()).matches(book).value().size()); }
    QList<int> february;
};

void selectRow(QTableWidget *t, int row, QItemSelectionModel::SelectionFlags how = QItemSelectionModel::ClearAndSelect)
{
    t->selectionModel()->select(t->model()->index(row, 0), how | QItemSelectionModel::Rows);
}

} // namespace

TEST(ReconcileView, TicksFromTheKeyboardAndTheAutomaticPassAreStoredAndUndone)
{
    ReconcileFixture f;
    ASSERT_GT(f.february.size(), 4);
    kx::ReconcileView *view = f.open();
    ASSERT_NE(view, nullptr);
    auto *lines = view->findChild<QTableWidget *>(QStringLiteral("statementLines"));
    auto *records = view->findChild<QTableWidget *>(QStringLiteral("journalRecords"));
    auto *status = view->findChild<QLabel *>(QStringLiteral("reconcileStatus"));
    view->showMonth(QDate(2025, 2, 1));
    ASSERT_EQ(lines->rowCount(), f.february.size() - 1);
    ASSERT_EQ(records->rowCount(), f.february.size());

    // The first line and its record, ticked with Enter.
    const QString reference = lines->item(0, 4)->text();
    selectRow(lines, 0);
    // Records are found by their key, kept with the row.
    int target = -1;
    for (int r = 0; r < records->rowCount(); ++r)
        if (records->item(r, 0)->data(Qt::UserRole).toInt() == reference.mid(1).toInt())
            target = r;
    ASSERT_GE(target, 0);
    selectRow(records, target);
    QTest::keyClick(lines, Qt::Key_Return);
    EXPECT_EQ(f.stored(), 1) << qPrintable(status->text());
    EXPECT_EQ(lines->item(0, 0)->text(), QStringLiteral("✓"));

    // A record of the other side is refused, saying why.
    selectRow(lines, 1);
    int otherSide = -1;
    for (int r = 0; r < records->rowCount(); ++r)
        if (records->item(r, 3)->text() != lines->item(1, 2)->text())
            otherSide = r;
    ASSERT_GE(otherSide, 0);
    selectRow(records, otherSide);
    QTest::keyClick(lines, Qt::Key_Enter);
    EXPECT_EQ(f.stored(), 1);
    EXPECT_TRUE(status->text().contains(QStringLiteral("不能勾对"))) << qPrintable(status->text());

    // The automatic pass ticks the rest; the last record has no line.
    QPushButton *autoButton = nullptr;
    for (QPushButton *b : view->findChildren<QPushButton *>())
        if (b->text() == QStringLiteral("自动勾对"))
            autoButton = b;
    ASSERT_NE(autoButton, nullptr);
    QTest::mouseClick(autoButton, Qt::LeftButton);
    EXPECT_EQ(f.stored(), f.february.size() - 1);
    EXPECT_TRUE(status->text().startsWith(QStringLiteral("自动勾对 %1 笔").arg(f.february.size() - 2))) << qPrintable(status->text());

    // Ctrl+Z takes the whole pass back; Delete takes a line's tick off.
    QTest::keyClick(lines, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(f.stored(), 1);
    selectRow(lines, 0);
    QTest::keyClick(lines, Qt::Key_Delete);
    EXPECT_EQ(f.stored(), 0);
    EXPECT_EQ(lines->item(0, 0)->text(), QString());
    view->close();
}

TEST(ReconcileView, AContextDeletedOrAControlClosedUnderTheViewIsNoCrash)
{
    auto f = std::make_unique<ReconcileFixture>();
    kx::ReconcileView *view = f->open();
    ASSERT_NE(view, nullptr);
    f->journal.setAcc(nullptr);
    f->acc.reset();
    view->autoMatch();
    auto *status = view->findChild<QLabel *>(QStringLiteral("reconcileStatus"));
    EXPECT_EQ(status->text(), QStringLiteral("没有连接到账套。"));

    auto g = std::make_unique<ReconcileFixture>();
    QPointer<kx::ReconcileView> second = g->open();
    ASSERT_TRUE(second);
    g.reset();  // the control, its book and the view go together
    EXPECT_TRUE(second.isNull());
}

// Ticked records show it in the journal's 对账 column, from the view at once
// and from the database after a load; the filter hides them and shows them
// again; the ticks are no change to the book.
TEST(ReconcileView, TicksShowInTheJournalAndCanBeFilteredOut)
{
    ReconcileFixture f;
    kx::ReconcileView *view = f.open();
    ASSERT_NE(view, nullptr);
    view->autoMatch();
    view->close();
    const int matched = f.stored();
    ASSERT_EQ(matched, f.february.size() - 1);
    kx::GridModel *g = f.journal.Grid();
    const int mark = g->colIndex(QStringLiteral("Reconciled"));
    const int key = g->colIndex(QStringLiteral("RecID"));
    ASSERT_GE(mark, 0);
    EXPECT_TRUE(g->isColHidden(mark)) << "shown when the user asks for it";
    EXPECT_EQ(g->text(0, mark), QStringLiteral("对账"));
    auto ticked = [&] {
        QList<int> rows;
        for (int r = g->fixedRows(); r < g->rows(); ++r)
            if (g->text(r, mark) == QStringLiteral("✓"))
                rows << int(g->text(r, key).toInt());
        return rows;
    };
    QList<int> expected = f.february.mid(0, f.february.size() - 1);
    std::sort(expected.begin(), expected.end());
    QList<int> got = ticked();
    std::sort(got.begin(), got.end());
    EXPECT_EQ(got, expected) << "ticked from the view";
    EXPECT_FALSE(f.journal.IsDirty());

    ASSERT_TRUE(f.journal.Load(f.book));
    got = ticked();
    std::sort(got.begin(), got.end());
    EXPECT_EQ(got, expected) << "ticked from the database after a load";

    QAction *filter = f.journal.menuAction(QStringLiteral("mnuUnreconciled"));
    ASSERT_NE(filter, nullptr);
    ASSERT_TRUE(filter->isCheckable());
    filter->trigger();
    EXPECT_TRUE(filter->isChecked());
    int hidden = 0;
    for (int r = g->fixedRows(); r < g->rows(); ++r)
        if (g->isRowHidden(r)) {
            ++hidden;
            EXPECT_EQ(g->text(r, mark), QStringLiteral("✓"));
        }
    EXPECT_EQ(hidden, expected.size());
    filter->trigger();
    for (int r = g->fixedRows(); r < g->rows(); ++r)
        EXPECT_FALSE(g->isRowHidden(r)) << r;
}

// A statement imported from the view: its columns shown and confirmed once,
// then remembered for the book; the same file again adds nothing; a file
// that cannot be read is named with its reason and adds nothing.
TEST(ReconcileView, ImportsAStatementAfterTheLayoutIsConfirmedOnce)
{
    kxtest::SampleJournal j(80);
    QStringList asked;
    j.journal.setAsker([&](const QString &text, const QString &) {
        asked << text;
        return true;
    });
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("三月.csv"));
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        QStringEncoder gbk("GBK");
        f.write(gbk.encode(QStringLiteral("账号：6222020200012345678\r\n交易日期,摘要,收入金额,支出金额,余额,交易流水号\r\n"
                                          "20250302,货款,1000.00,,1000.00,A1\r\n20250303,手续费,,2.50,997.50,A2\r\n合计,,,,,\r\n")));
    }
    j.journal.DoCommand(QStringLiteral("Reconcile"));
    auto *view = j.journal.findChild<kx::ReconcileView *>(QStringLiteral("reconcileView"));
    ASSERT_NE(view, nullptr);
    auto *status = view->findChild<QLabel *>(QStringLiteral("reconcileStatus"));
    view->chooseFile = [&] { return file; };
    QPushButton *import = nullptr;
    for (QPushButton *b : view->findChildren<QPushButton *>())
        if (b->text() == QStringLiteral("导入对账单..."))
            import = b;
    ASSERT_NE(import, nullptr);
    QTest::mouseClick(import, Qt::LeftButton);
    EXPECT_EQ(status->text(), QStringLiteral("读入 2 行，导入 2 行，跳过 0 行（已经导入过）。"));
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked.first().contains(QStringLiteral("收入=收入金额"))) << qPrintable(asked.first());
    kx::StatementStore store(j.acc->Connection());
    EXPECT_EQ(store.lines(j.book).value().size(), 2);
    EXPECT_TRUE(store.mapping(j.book).value().has_value()) << "remembered for the book";

    QTest::mouseClick(import, Qt::LeftButton);
    EXPECT_EQ(asked.size(), 1) << "asked once per book";
    EXPECT_TRUE(status->text().startsWith(QStringLiteral("这个文件已经在"))) << qPrintable(status->text());
    EXPECT_EQ(store.lines(j.book).value().size(), 2);

    const QString bad = dir.filePath(QStringLiteral("坏.csv"));
    {
        QFile f(bad);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("交易日期,摘要,收入金额,支出金额\r\n20250305,x,12.3x,\r\n");
    }
    EXPECT_FALSE(view->importFile(bad));
    EXPECT_TRUE(status->text().startsWith(QStringLiteral("坏.csv："))) << qPrintable(status->text());
    EXPECT_EQ(store.lines(j.book).value().size(), 2);
    view->close();
}
