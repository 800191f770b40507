#include "QtPrinters.h"
#include "support/BookBuilder.h"
#include "support/TestDatabase.h"

#include "data/BookDefinition.h"
#include "ledger/LedgerState.h"
#include "data/JournalDefinition.h"

#include <kxjournal/GridView.h>
#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QSignalSpy>
#include <QToolButton>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

QVariantMap rec(const char *date, const char *explain, const char *debit = nullptr, const char *credit = nullptr,
                const char *balance = nullptr, int tag = 0)
{
    QVariantMap m{{QStringLiteral("JnlDate"), QString::fromLatin1(date)},
                  {QStringLiteral("Explain"), QString::fromUtf8(explain)},
                  {QStringLiteral("Tag"), tag}};
    if (debit)
        m.insert(QStringLiteral("Debit"), QString::fromLatin1(debit));
    if (credit)
        m.insert(QStringLiteral("Credit"), QString::fromLatin1(credit));
    if (balance)
        m.insert(QStringLiteral("Balance"), QString::fromLatin1(balance));
    return m;
}

// Books 01 > 0102 > 010201, 010202, with records in the two bottom books
// and in 0102 itself, each book with its own opening row.
class Loading : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        kx::Database db = testDb->open();
        ASSERT_TRUE(db.isOpen()) << db.lastError().toStdString();
        ASSERT_TRUE(kx::Schema::create(db).ok());
        kxtest::BookBuilder b(db);
        bank = b.account(QStringLiteral("1002"), QStringLiteral("银行存款"));
        top = b.book(QStringLiteral("01"), QStringLiteral("银行日记账"));
        mid = b.book(QStringLiteral("0102"), QStringLiteral("工商银行"), QStringLiteral("借"),
                     QStringLiteral("科目|%1").arg(bank), QStringLiteral("对方|7"));
        low1 = b.book(QStringLiteral("010201"), QStringLiteral("基本户"));
        low2 = b.book(QStringLiteral("010202"), QStringLiteral("一般户"));
        empty = b.book(QStringLiteral("03"), QStringLiteral("空账"));
        const int voucher = b.voucher(QStringLiteral("2026-01-05"), QStringLiteral("记"), 12);

        b.record(low1, 1, rec("2026-01-01", "期初余额", "100", "0", "100"));
        QVariantMap linked = rec("2026-01-05", "收到货款", "50", nullptr, "150");
        linked.insert(QStringLiteral("DirID"), voucher);
        linked.insert(QStringLiteral("AccID"), bank);
        b.record(low1, 3, linked);
        QVariantMap broken = rec("2026-01-06", "支付", nullptr, "200", "-50");
        broken.insert(QStringLiteral("DirID"), voucher + 99);
        b.record(low1, 2, broken); // stored row 2: shown before the record with row 3
        b.record(low1, 4, rec("2026-01-31", "2026年01月小结", nullptr, nullptr, "-50", -1));
        b.record(low1, 5, rec("2026-02-02", "利息", "0.5", nullptr, "0"));
        b.record(low2, 1, rec("2026-01-01", "期初余额", "10", nullptr, "10"));
        b.record(low2, 2, rec("2026-02-10", "手续费", nullptr, "1", "9"));
        b.record(mid, 1, rec("2026-01-03", "期初余额", nullptr, nullptr, "0"));

        acc = std::make_unique<kx::SqlAccContext>(testDb->open());
        acc->setBeginDate(QDate(2026, 1, 1));
        journal = std::make_unique<kx::Journal>();
        journal->setAcc(acc.get());
        journal->setAccountFormat(QStringLiteral("0.00"));
    }

    QString cell(int row, const char *key) const { return journal->Grid()->text(row, QString::fromLatin1(key)); }
    // The records' cells: the empty row a load leaves at the bottom for typing is not one.
    QStringList column(const char *key) const
    {
        QStringList out;
        const kx::Sheet *g = kx::Sheet::of(journal->Grid());
        int end = g->rows();
        if (end > 1 && cell(end - 1, "JnlDate").isEmpty() && cell(end - 1, "RecID").isEmpty())
            --end;
        for (int r = 1; r < end; ++r)
            out << cell(r, key);
        return out;
    }

    std::unique_ptr<kxtest::TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::Journal> journal;
    int bank = 0, top = 0, mid = 0, low1 = 0, low2 = 0, empty = 0;
};

} // namespace

TEST_P(Loading, BookDefinitionIdsAndCaption)
{
    journal->setDocID(mid);
    EXPECT_EQ(journal->AccID(), 0) << "the grid's row, not the book";
    EXPECT_EQ(journal->AccCode(), QStringLiteral("1002"));
    EXPECT_EQ(journal->RelativeAccID(), 7);
    EXPECT_EQ(journal->Direction(), QStringLiteral("借"));
    EXPECT_FALSE(journal->IsBottomClass());

    kx::BookDefinition book;
    kx::Database db = testDb->open();
    kx::JournalDefinition def(db, book);
    def.read(mid);
    EXPECT_EQ(def.subordinateIds(), (QList<int>{mid, low1, low2}));
    EXPECT_EQ(def.subordinateList(), QStringLiteral("|%1|%2|%3|").arg(mid).arg(low1).arg(low2));
    EXPECT_EQ(def.caption(false), QStringLiteral("银行日记账\\工商银行"));
    EXPECT_EQ(def.caption(true), QStringLiteral("银行日记账\\工商银行(合并日记账)"));
    int id = 0;
    EXPECT_EQ(def.field(QStringLiteral("AssistName"), id), QStringLiteral("工商银行"));
    EXPECT_EQ(id, mid) << "id 0 means the current book, written back";
    def.read(low1);
    EXPECT_TRUE(book.isBottomClass);
    EXPECT_EQ(book.accId, 0) << "an empty Address gives no account";
    EXPECT_EQ(def.subordinateList(), QStringLiteral("|%1|").arg(low1));
    kx::LedgerState packed;
    packed.book = book;
    packed.isPacked = true;
    EXPECT_FALSE(packed.isConsolidated()) << "a bottom book is never consolidated";
    EXPECT_EQ(def.caption(packed.isConsolidated()), QStringLiteral("银行日记账\\工商银行\\基本户"));
    def.read(0);
    EXPECT_EQ(def.caption(false), QStringLiteral("流水账"));
    EXPECT_EQ(def.subordinateList(), QString());
}

// A host that writes into the grid from the load's reports (its progress,
// its message) writes either into the book being replaced, which the load
// then shows as stored, or into the book as loaded, where the change stays
// a change: never a value shown as stored that is not.
TEST_P(Loading, WhatAHostWritesWhileALoadReportsIsNeverTakenForStored)
{
    ASSERT_TRUE(journal->Load(low1));
    const QString stored2 = cell(2, "Explain"), stored3 = cell(3, "Explain");
    kx::Sheet *grid = kx::Sheet::of(journal->Grid());
    ASSERT_NE(grid, nullptr);
    QObject::connect(journal.get(), &kx::Journal::Process, [&](int n) {
        if (n > 20 && n < 100)
            grid->setText(2, grid->colIndex(QStringLiteral("Explain")), QStringLiteral("进度里改的%1").arg(n));
    });
    QObject::connect(journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) {
        if (m.startsWith(QStringLiteral("已读入")))
            grid->setText(3, grid->colIndex(QStringLiteral("Explain")), QStringLiteral("消息里改的"));
    });
    ASSERT_TRUE(journal->Load(low1));
    EXPECT_TRUE(cell(2, "Explain") == stored2 || grid->isRowTouched(2)) << cell(2, "Explain").toStdString();
    EXPECT_TRUE(cell(3, "Explain") == stored3 || grid->isRowTouched(3)) << cell(3, "Explain").toStdString();
}

TEST_P(Loading, SingleBookInStoredOrderDressedAndLabelled)
{
    QStringList said;
    QList<int> progress;
    QObject::connect(journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    QObject::connect(journal.get(), &kx::Journal::Process, [&](int n) { progress << n; });
    QSignalSpy loaded(journal.get(), &kx::Journal::AfterLoaded);

    ASSERT_TRUE(journal->Load(low1));
    EXPECT_EQ(loaded.count(), 1);
    EXPECT_EQ(journal->Caption(), QStringLiteral("银行日记账\\工商银行\\基本户"));
    EXPECT_EQ(said, (QStringList{QStringLiteral("读入：基本户”的记录..."), QStringLiteral("已读入“基本户”的记录。")}));
    ASSERT_GE(progress.size(), 5);
    EXPECT_EQ(progress.mid(0, 3), (QList<int>{0, 10, 20}));
    EXPECT_EQ(progress.last(), -1);
    EXPECT_EQ(progress.at(progress.size() - 2), 100);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end() - 1));

    EXPECT_EQ(journal->Grid()->rows(), 7);
    EXPECT_EQ(cell(6, "Explain") + cell(6, "JnlDate") + cell(6, "RecID"), QString());
    EXPECT_EQ(column("Explain"), (QStringList{QStringLiteral("期初余额"), QStringLiteral("支付"), QStringLiteral("收到货款"),
                                              QStringLiteral("2026年01月小结"), QStringLiteral("利息")}));
    EXPECT_EQ(column("JnlDate"), (QStringList{QStringLiteral("2026-01-01"), QStringLiteral("2026-01-06"),
                                              QStringLiteral("2026-01-05"), QStringLiteral("2026-01-31"),
                                              QStringLiteral("2026-02-02")}));
    EXPECT_EQ(column("ShowName"), (QStringList{QStringLiteral("2026年期初"), QStringLiteral("2026年01月06日"),
                                               QStringLiteral("2026年01月05日"), QStringLiteral("2026年01月"),
                                               QStringLiteral("2026年02月02日")}));
    EXPECT_EQ(column("AccDoc"), (QStringList{QString(), QStringLiteral("#错误的凭证链接#"), QStringLiteral("01-05记 12"),
                                             QString(), QString()}));
    EXPECT_EQ(column("Credit"), (QStringList{QString(), QStringLiteral("200"), QString(), QString(), QString()}))
        << "zero amounts are emptied";
    EXPECT_EQ(column("Debit").at(4), QStringLiteral("0.5"));
    EXPECT_EQ(column("Dir"), (QStringList{QStringLiteral("借"), QStringLiteral("贷"), QStringLiteral("借"),
                                          QStringLiteral("贷"), QStringLiteral("平")}));
    EXPECT_EQ(column("Locked"), (QStringList{QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("1"),
                                             QStringLiteral("1"), QStringLiteral("0")}))
        << "rows up to the last summary row are closed";
    EXPECT_EQ(journal->LastSumRow(), 4);
    EXPECT_TRUE(journal->Grid()->isSubtotal(4));
    EXPECT_TRUE(journal->Grid()->cellBold(4, 6));
    EXPECT_EQ(journal->Grid()->cellForeColor(2, 6), QColor(0x80, 0x80, 0x80)) << "no colour chosen: a grey";
    EXPECT_EQ(cell(3, "AccName"), QStringLiteral("银行存款"));
    EXPECT_EQ(journal->gridView()->isColumnHidden(journal->Grid()->colIndex(QStringLiteral("AssistName")) - 1), true);
    EXPECT_EQ(journal->findChild<QToolButton *>(QStringLiteral("btnOpt"))->property("imageKey").toString(), QStringLiteral("Jnl"));
}

TEST_P(Loading, ConsolidatedJournalInterleavesByDateWithMonthSubtotals)
{
    journal->setIsPackedJnl(true);
    QStringList said;
    QObject::connect(journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    ASSERT_TRUE(journal->Load(mid));
    EXPECT_EQ(journal->Caption(), QStringLiteral("银行日记账\\工商银行(合并日记账)"));
    EXPECT_EQ(said.value(0), QStringLiteral("读入：工商银行”及其所有下级日记账的记录..."));
    const QStringList explains = column("Explain");
    EXPECT_EQ(explains, (QStringList{QStringLiteral("期初余额"), QStringLiteral("期初余额"), QStringLiteral("期初余额"),
                                     QStringLiteral("收到货款"), QStringLiteral("支付"),
                                     QStringLiteral("2026年01月06日小结"), QStringLiteral("利息"), QStringLiteral("手续费")}))
        << explains.join(QLatin1Char(',')).toStdString();
    EXPECT_EQ(column("JnlDate").at(5), QStringLiteral("2026-01-06"));
    EXPECT_EQ(column("AssistName").at(3), QStringLiteral("基本户"));
    EXPECT_EQ(column("Tag").at(0), QStringLiteral("0"));
    EXPECT_EQ(cell(6, "Tag"), QStringLiteral("-1"));
    EXPECT_FALSE(journal->gridView()->isColumnHidden(journal->Grid()->colIndex(QStringLiteral("AssistName")) - 1));
    EXPECT_EQ(journal->findChild<QToolButton *>(QStringLiteral("btnOpt"))->property("imageKey").toString(), QStringLiteral("Jnl1"));

    // A bottom book asked for consolidated is read as a single book, in stored order.
    ASSERT_TRUE(journal->Load(low1));
    EXPECT_EQ(column("Explain").at(1), QStringLiteral("支付"));
    EXPECT_EQ(journal->Caption(), QStringLiteral("银行日记账\\工商银行\\基本户"));
}

TEST_P(Loading, EmptyBookShowsItsOpeningRowWithoutAfterLoaded)
{
    QSignalSpy loaded(journal.get(), &kx::Journal::AfterLoaded);
    QList<int> progress;
    QObject::connect(journal.get(), &kx::Journal::Process, [&](int n) { progress << n; });
    EXPECT_TRUE(journal->Load(empty));
    EXPECT_EQ(loaded.count(), 0);
    EXPECT_EQ(journal->Grid()->rows(), 10);
    EXPECT_EQ(cell(1, "Explain"), QStringLiteral("期初余额"));
    EXPECT_EQ(cell(1, "JnlDate"), QStringLiteral("2026-01-01"));
    EXPECT_EQ(cell(1, "ShowName"), QStringLiteral("2026年期初"));
    EXPECT_TRUE(journal->Grid()->isSubtotal(1));
    EXPECT_EQ(cell(2, "Explain"), QString());
    EXPECT_EQ(progress.last(), -1);
    EXPECT_TRUE(journal->Grid()->redraw());
    EXPECT_EQ(journal->Grid()->tag(), QString());
}

TEST_P(Loading, CancelledLoadLeavesTheGridAsItWas)
{
    ASSERT_TRUE(journal->Load(low1));
    journal->Grid()->setText(2, QStringLiteral("Explain"), QStringLiteral("正在改"));
    bool cancel = true;
    QObject::connect(journal.get(), &kx::Journal::CommandExecute, [&](const QString &name, bool &c) {
        if (name == QLatin1String("Load"))
            c = cancel;
    });
    QSignalSpy loaded(journal.get(), &kx::Journal::AfterLoaded);
    QSignalSpy notify(journal.get(), &kx::Journal::Notify);
    EXPECT_FALSE(journal->Load(low2));
    EXPECT_EQ(loaded.count(), 0);
    EXPECT_EQ(notify.count(), 0);
    EXPECT_EQ(cell(2, "Explain"), QStringLiteral("正在改"));
    EXPECT_EQ(journal->Grid()->rows(), 7);
    cancel = false;
    EXPECT_TRUE(journal->Load(low2));
    EXPECT_EQ(journal->Grid()->rows(), 4);
}

INSTANTIATE_TEST_SUITE_P(Engines, Loading, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
