// The daily fund report beside the journal, driven as a cashier drives it:
// it opens at the book's last day, the dates and the books it covers are
// changed, a line is chosen and its records show below, and the report is
// printed and exported through the file asker; a context deleted and a
// control deleted under the view, also while the file asker is open.
#include "support/SampleJournal.h"

#include "control/DailyReportView.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "output/DailyReport.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

struct DailyFixture : kxtest::SampleJournal {
    DailyFixture() : SampleJournal(240) {}

    kx::DailyReportView *open()
    {
        journal.DoCommand(QStringLiteral("DailyReport"));
        auto *view = journal.findChild<kx::DailyReportView *>(QStringLiteral("dailyReportView"));
        if (view) {
            QApplication::setActiveWindow(view);
            EXPECT_TRUE(QTest::qWaitForWindowActive(view));
        }
        return view;
    }
    // The journal's records as it shows them: (day, 单据号, 摘要, debit, credit).
    QList<QStringList> records(const QDate &from, const QDate &to)
    {
        const kx::Sheet &g = *kx::Sheet::of(journal.Grid());
        const kx::JournalColumns columns(g);
        using C = kx::JournalColumns;
        QList<QStringList> out;
        for (int r = g.fixedRows(); r < g.rows(); ++r) {
            const kx::BookRow row = kx::BookRow::of(g, columns, r);
            if (!g.isDataRow(r) || row.isOpening() || row.isSummary() || !row.isDated() || row.date() < from ||
                row.date() > to)
                continue;
            const auto money = [](kx::Currency c) { return c.isZero() ? QString() : c.format(QStringLiteral("#,##0.00")); };
            out << QStringList{row.date().toString(Qt::ISODate), row.text(C::JnlNo), row.text(C::Explain),
                               money(row.amount(C::Debit)), money(row.amount(C::Credit))};
        }
        return out;
    }
};

QList<QStringList> shownRecords(QTableWidget *t)
{
    QList<QStringList> out;
    for (int r = 0; r < t->rowCount(); ++r)
        out << QStringList{t->item(r, 1)->text(), t->item(r, 2)->text(), t->item(r, 3)->text(), t->item(r, 5)->text(),
                           t->item(r, 6)->text()};
    return out;
}

QTreeWidgetItem *lineOf(QTreeWidget *tree, const QString &name)
{
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if ((*it)->text(1) == name)
            return *it;
    return nullptr;
}

void click(QTreeWidget *tree, QTreeWidgetItem *item)
{
    tree->scrollToItem(item);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(item).center());
}

QString pdfText(const QString &path)
{
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")});
    p.waitForFinished(60000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

} // namespace

TEST(DailyReportView, OpensAtTheLastDayShowsALinesRecordsAndWritesTheReport)
{
    DailyFixture f;
    QAction *item = f.journal.menuAction(QStringLiteral("mnuDailyReport"));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->text(), QStringLiteral("资金日报表..."));
    f.journal.contextMenu()->popup(QPoint(0, 0));
    EXPECT_TRUE(item->isEnabled());
    f.journal.contextMenu()->hide();

    kx::DailyReportView *view = f.open();
    ASSERT_NE(view, nullptr);
    auto *from = view->findChild<QDateEdit *>(QStringLiteral("dailyFrom"));
    auto *to = view->findChild<QDateEdit *>(QStringLiteral("dailyTo"));
    auto *scope = view->findChild<QComboBox *>(QStringLiteral("dailyScope"));
    auto *tree = view->findChild<QTreeWidget *>(QStringLiteral("dailyLines"));
    auto *records = view->findChild<QTableWidget *>(QStringLiteral("dailyRecords"));
    auto *status = view->findChild<QLabel *>(QStringLiteral("dailyStatus"));
    ASSERT_TRUE(from && to && scope && tree && records && status);

    // No record today (the samples are of 2025): the book's last day, its records below.
    const QList<QStringList> everything = f.records(QDate(2025, 1, 1), QDate(2025, 12, 31));
    ASSERT_FALSE(everything.isEmpty());
    const QDate last = QDate::fromString(everything.last().first(), Qt::ISODate);
    EXPECT_EQ(from->date(), last);
    EXPECT_EQ(to->date(), last);
    EXPECT_EQ(tree->topLevelItemCount(), 2) << "the book shown and the 合计 line";
    EXPECT_EQ(shownRecords(records), f.records(last, last));

    // A month typed into the dates: the book's records of the month.
    from->setFocus();
    from->setSelectedSection(QDateTimeEdit::DaySection);
    QTest::keyClicks(from, QStringLiteral("01"));
    from->setDate(QDate(2025, 3, 1));
    to->setDate(QDate(2025, 3, 31));
    EXPECT_EQ(view->windowTitle(), QStringLiteral("资金日报表 - 2025-03-01 至 2025-03-31"));
    const QList<QStringList> march = f.records(QDate(2025, 3, 1), QDate(2025, 3, 31));
    ASSERT_GE(march.size(), 3);
    EXPECT_EQ(shownRecords(records), march);

    // Every book: the tree of seven books and the 合计 line; a book without
    // records this month shows none; the bank books' line all of the bank's.
    scope->setCurrentIndex(scope->findData(true));
    int lines = 0;
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        ++lines;
    EXPECT_EQ(lines, 8);
    QTreeWidgetItem *cash = lineOf(tree, QStringLiteral("现金日记账"));
    ASSERT_NE(cash, nullptr);
    click(tree, cash);
    EXPECT_EQ(records->rowCount(), 0);
    QTreeWidgetItem *basic = lineOf(tree, QStringLiteral("基本户"));
    ASSERT_NE(basic, nullptr);
    EXPECT_EQ(basic->parent()->text(1), QStringLiteral("工商银行")) << "a book under the book above it";
    click(tree, basic);
    EXPECT_EQ(shownRecords(records), march);
    click(tree, lineOf(tree, QStringLiteral("银行日记账")));
    EXPECT_EQ(shownRecords(records), march) << "the only bank book with records";
    EXPECT_EQ(tree->topLevelItem(tree->topLevelItemCount() - 1)->text(1), QStringLiteral("合计"));
    EXPECT_EQ(tree->topLevelItem(tree->topLevelItemCount() - 1)->text(7), lineOf(tree, QStringLiteral("银行日记账"))->text(7));

    // The dates the wrong way round: said, nothing shown, nothing written.
    from->setDate(QDate(2025, 4, 1));
    EXPECT_EQ(status->text(), QStringLiteral("日期范围不对：开始日期不能晚于结束日期。"));
    EXPECT_EQ(tree->topLevelItemCount(), 0);
    from->setDate(QDate(2025, 3, 1));
    ASSERT_GT(tree->topLevelItemCount(), 0);

    // 打印 and 导出 through the file asker, the records listed when ticked.
    QString answer = f.folder.filePath(QStringLiteral("三月"));
    QStringList asked;
    view->chooseFile = [&](const QString &caption, const QString &) {
        asked << caption;
        return answer;
    };
    view->findChild<QCheckBox *>(QStringLiteral("dailyWithRows"))->setChecked(true);
    view->findChild<QPushButton *>(QStringLiteral("dailyPrint"))->click();
    const QString printed = pdfText(answer + QStringLiteral(".pdf"));
    for (const QString &want : {QStringLiteral("资金日报表"), QStringLiteral("日期：2025-03-01 至 2025-03-31"),
                                QStringLiteral("合计"), QStringLiteral("对方科目"), march.first().at(0),
                                march.last().at(3).isEmpty() ? march.last().at(4) : march.last().at(3),
                                lineOf(tree, QStringLiteral("银行日记账"))->text(7)})
        EXPECT_TRUE(printed.contains(want)) << qPrintable(want) << "\n" << qPrintable(printed);
    answer = f.folder.filePath(QStringLiteral("三月.xlsx"));
    view->findChild<QPushButton *>(QStringLiteral("dailyExport"))->click();
    EXPECT_TRUE(QFile::exists(answer)) << qPrintable(status->text());
    EXPECT_EQ(asked, (QStringList{QStringLiteral("打印资金日报表"), QStringLiteral("导出资金日报表")}));
    answer = f.folder.filePath(QStringLiteral("三月.txt"));
    view->findChild<QPushButton *>(QStringLiteral("dailyExport"))->click();
    EXPECT_FALSE(QFile::exists(answer));
    EXPECT_TRUE(status->text().startsWith(QStringLiteral("资金日报表只能导出成 .xlsx 或 .csv 文件"))) << qPrintable(status->text());

    // Opened again: the same view.
    EXPECT_EQ(f.open(), view);
    view->close();
}

TEST(DailyReportView, AContextOrAControlDeletedUnderTheViewIsNoCrash)
{
    auto f = std::make_unique<DailyFixture>();
    kx::DailyReportView *view = f->open();
    ASSERT_NE(view, nullptr);
    f->journal.setAcc(nullptr);
    f->acc.reset();
    EXPECT_FALSE(view->reload());
    auto *status = view->findChild<QLabel *>(QStringLiteral("dailyStatus"));
    EXPECT_EQ(status->text(), QStringLiteral("没有连接到账套。"));
    EXPECT_FALSE(view->printTo(f->folder.filePath(QStringLiteral("x.pdf"))));
    f->journal.contextMenu()->popup(QPoint(0, 0));
    EXPECT_FALSE(f->journal.menuAction(QStringLiteral("mnuDailyReport"))->isEnabled()) << "no context, no report";
    f->journal.contextMenu()->hide();

    // The control closed with the view open: the view goes with it.
    auto g = std::make_unique<DailyFixture>();
    QPointer<kx::DailyReportView> second = g->open();
    ASSERT_TRUE(second);
    g.reset();
    EXPECT_TRUE(second.isNull());

    // The host deletes the control while the file asker is open.
    auto h = std::make_unique<DailyFixture>();
    QPointer<kx::DailyReportView> third = h->open();
    ASSERT_TRUE(third);
    QTemporaryDir keep;
    third->chooseFile = [&](const QString &, const QString &) {
        h.reset();
        return keep.filePath(QStringLiteral("gone.pdf"));
    };
    third->findChild<QPushButton *>(QStringLiteral("dailyPrint"))->click();
    EXPECT_TRUE(third.isNull());
    EXPECT_FALSE(QFile::exists(keep.filePath(QStringLiteral("gone.pdf"))));
}
