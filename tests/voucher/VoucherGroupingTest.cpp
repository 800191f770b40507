// Making vouchers of a month's records one per record, one per 收/付 type,
// or all in one: which records go where, their sides and numbers, and the
// files read back; the choice kept by the control and its menu.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"
#include "voucher/VoucherPlan.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>
#include <kxjournal/PropertyBag.h>
#include <kxjournal/VoucherFile.h>

#include <QAction>
#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <iostream>

using kx::Currency;
using kx::Voucher;
using kxtest::BookBuilder;
using kxtest::EditingBook;
using kxtest::Engine;

namespace {

Currency money(const char *text) { return Currency::fromText(QString::fromLatin1(text)).value(); }

// The ICBC bank book through January 2025: the three records every editing
// book has, six more (one already linked to a voucher, one without an
// account), and a sub-total row below 支付货款. Vouchers of January: 记 5
// and 9, 收 40.
struct MonthBook : EditingBook {
    explicit MonthBook(Engine engine) : EditingBook(engine)
    {
        const kx::Database db = this->db->open();
        EXPECT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournal Set Address=? Where asID=%1").arg(book),
                                    {QStringLiteral("银行|%1").arg(icbc)}})
                        .ok());
        BookBuilder b(db);
        b.voucher(QStringLiteral("2025-01-08"), QStringLiteral("记"), 5);
        b.voucher(QStringLiteral("2025-01-20"), QStringLiteral("记"), 9);
        linked = b.voucher(QStringLiteral("2025-01-10"), QStringLiteral("收"), 40);
        auto rec = [&](int row, const char *date, const char *explain, int accId, const char *side, const char *amount,
                       int dirId = 0) {
            QVariantMap f{{QStringLiteral("JnlDate"), QString::fromUtf8(date)},
                          {QStringLiteral("Explain"), QString::fromUtf8(explain)},
                          {QString::fromUtf8(side), QString::fromUtf8(amount)},
                          {QStringLiteral("AccID"), accId},
                          {QStringLiteral("DirID"), dirId}};
            b.record(book, row, f);
        };
        rec(5, "2025-01-18", "收回欠款", receivable, "Debit", "1200.5");
        rec(6, "2025-01-20", "支付货款", payable, "Credit", "300");
        rec(7, "2025-01-22", "已做凭证的收款", receivable, "Debit", "80", linked);
        rec(8, "2025-01-25", "退回多收款", receivable, "Debit", "-100");
        rec(9, "2025-01-27", "未指定科目", 0, "Credit", "10");
        rec(10, "2025-01-28", "付办公费", expenses, "Credit", "75.25");
        rec(11, "2025-01-31", "利息收入", receivable, "Debit", "9.75");
        acc->setCurPeriod(QStringLiteral("202501"));
        acc->setDocTypes(QStringLiteral("记|收|付|转"));
        acc->setUserName(QStringLiteral("张三"));
        journal->Load(book);
        EXPECT_TRUE(journal->InsSumRow(6));
        EXPECT_EQ(text(7, "Tag"), QStringLiteral("-1")) << "the sub-total row";
        journal->setVoucherFolder(folder.path());
        QObject::connect(journal.get(), &kx::Journal::AfterMaked, [this](const QString &p) { made << p; });
    }
    // Every row from the opening balance to the empty row at the end.
    void selectAll() const { grid->select(1, col("Explain"), grid->rows() - 1, col("Explain")); }
    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files); }
    QList<Voucher> makeAll(const char *grouping)
    {
        made.clear();
        said.clear();
        journal->setVoucherGrouping(QString::fromLatin1(grouping));
        selectAll();
        EXPECT_TRUE(journal->Make()) << qPrintable(said.join(QLatin1Char('\n')));
        QList<Voucher> out;
        for (const QString &path : std::as_const(made)) {
            const kx::Result<Voucher> v = kx::VoucherFile::read(path);
            EXPECT_TRUE(v.ok()) << qPrintable(v.ok() ? QString() : v.error());
            out << v.valueOr(Voucher());
        }
        return out;
    }
    void clearFolder() const
    {
        for (const QString &f : files())
            QFile::remove(QDir(folder.path()).filePath(f));
    }

    QTemporaryDir folder;
    QStringList made;  ///< every AfterMaked path, in order
    int linked = 0;
};

// The counter lines of \a v (all but the last), as explanation, code and sides.
QList<QString> counters(const Voucher &v)
{
    QList<QString> out;
    for (int i = 0; i + 1 < v.lines.size(); ++i) {
        const Voucher::Line &l = v.lines.at(i);
        out << QStringLiteral("%1 %2 %3/%4").arg(l.explain, l.accCode, l.debit.toString(), l.credit.toString());
    }
    return out;
}

class VoucherGrouping : public ::testing::TestWithParam<Engine>
{
};

} // namespace

TEST_P(VoucherGrouping, EachGroupingOfAMonthBalancesAndCountsOn)
{
    MonthBook b(GetParam());
    // A debit book: a receipt's counter account takes it on the credit side.
    const QStringList receipts{QStringLiteral("收到货款 1122 0/500"), QStringLiteral("收回欠款 1122 0/1200.5"),
                               QStringLiteral("退回多收款 1122 0/-100"), QStringLiteral("利息收入 1122 0/9.75")};
    const QStringList payments{QStringLiteral("付材料款 2202 200/0"), QStringLiteral("报销差旅费 6602 50/0"),
                               QStringLiteral("支付货款 2202 300/0"), QStringLiteral("付办公费 6602 75.25/0")};
    const QStringList inOrder{receipts[0], payments[0], payments[1], receipts[1], payments[2],
                              receipts[2], payments[3], receipts[3]};

    const QList<Voucher> all = b.makeAll("all");
    ASSERT_EQ(all.size(), 1);
    EXPECT_EQ(all[0].docType, QStringLiteral("记"));
    EXPECT_EQ(all[0].docNo, 10);
    EXPECT_EQ(all[0].addQty, b.grid->rows() - 1) << "every selected row counts, as one voucher always did";
    EXPECT_EQ(counters(all[0]), inOrder) << "no summary row, linked record or record without an account";
    EXPECT_EQ(all[0].lines.last().accCode, QStringLiteral("100201"));
    EXPECT_EQ(all[0].lines.last().debit, money("985"));
    EXPECT_EQ(all[0].lines.last().credit, money("0"));
    EXPECT_EQ(b.files().size(), 1);
    b.clearFolder();

    const QList<Voucher> perRecord = b.makeAll("record");
    ASSERT_EQ(perRecord.size(), inOrder.size());
    EXPECT_EQ(b.files().size(), inOrder.size()) << "one file per voucher";
    for (int i = 0; i < perRecord.size(); ++i) {
        SCOPED_TRACE(i);
        const Voucher &v = perRecord[i];
        EXPECT_EQ(v.docType, QStringLiteral("记"));
        EXPECT_EQ(v.docNo, 10 + i) << "numbered on from the period's next 记";
        EXPECT_EQ(v.addQty, 1);
        EXPECT_EQ(v.inputor, QStringLiteral("张三"));
        ASSERT_EQ(v.lines.size(), 2);
        EXPECT_EQ(counters(v), QStringList{inOrder[i]});
        EXPECT_EQ(v.lines[1].accCode, QStringLiteral("100201"));
        EXPECT_EQ(v.lines[1].row, 1);
        EXPECT_EQ(v.debitTotal(), v.creditTotal());
    }
    EXPECT_EQ(perRecord[0].lines[1].debit, money("500")) << "money in: the bank's debit";
    EXPECT_EQ(perRecord[1].lines[1].credit, money("200")) << "money out: the bank's credit";
    EXPECT_EQ(perRecord[1].lines[1].forex, money("-200"));
    QStringList names;
    for (const QString &path : b.made)
        names << QFileInfo(path).fileName();
    EXPECT_EQ(names, [&] { QStringList s = names; s.sort(); return s; }()) << "the files list in voucher order";
    for (const QString &name : names)
        EXPECT_TRUE(name == name.toLower() && name.endsWith(QLatin1String(".kxe"))) << qPrintable(name);
    b.clearFolder();

    const QList<Voucher> perType = b.makeAll("type");
    ASSERT_EQ(perType.size(), 2);
    EXPECT_EQ(perType[0].docType, QStringLiteral("收"));
    EXPECT_EQ(perType[0].docNo, 41) << "the next 收 of the period";
    EXPECT_EQ(perType[0].addQty, 4);
    EXPECT_EQ(counters(perType[0]), receipts);
    EXPECT_EQ(perType[0].lines.last().debit, money("1610.25"));
    EXPECT_EQ(perType[0].lines.last().credit, money("0"));
    EXPECT_EQ(perType[0].lines.last().row, 4);
    EXPECT_EQ(perType[1].docType, QStringLiteral("付"));
    EXPECT_EQ(perType[1].docNo, 1) << "no 付 yet this period";
    EXPECT_EQ(counters(perType[1]), payments);
    EXPECT_EQ(perType[1].lines.last().debit, money("0"));
    EXPECT_EQ(perType[1].lines.last().credit, money("625.25"));
    for (const Voucher &v : perType)
        EXPECT_EQ(v.debitTotal(), v.creditTotal());

    // One general type: both vouchers take it, one after the other.
    b.acc->setDocTypes(QStringLiteral("记"));
    const QList<Voucher> general = b.makeAll("type");
    ASSERT_EQ(general.size(), 2);
    EXPECT_EQ((QList<int>{general[0].docNo, general[1].docNo}), (QList<int>{10, 11}));
    EXPECT_EQ(general[0].docType, QStringLiteral("记"));
    EXPECT_EQ(general[1].docType, QStringLiteral("记"));
    EXPECT_EQ(counters(general[0]), receipts);
}

TEST_P(VoucherGrouping, ACreditBookTakesItsCreditsAsReceipts)
{
    MonthBook b(GetParam());
    ASSERT_TRUE(kx::sqlRun(b.db->open(),
                           {QStringLiteral("Update kxJournal Set ZipCode=? Where asID=%1").arg(b.book), {QStringLiteral("贷")}})
                    .ok());
    ASSERT_TRUE(b.journal->Load());
    b.acc->setDocTypes(QStringLiteral("现收|现付|银收|银付|转"));
    const QList<Voucher> perType = b.makeAll("type");
    ASSERT_EQ(perType.size(), 2);
    EXPECT_EQ(perType[0].docType, QStringLiteral("现收"));
    EXPECT_EQ(counters(perType[0]),
              (QStringList{QStringLiteral("付材料款 2202 0/200"), QStringLiteral("报销差旅费 6602 0/50"),
                           QStringLiteral("支付货款 2202 0/300"), QStringLiteral("付办公费 6602 0/75.25")}));
    EXPECT_EQ(perType[0].lines.last().debit, money("625.25"));
    EXPECT_EQ(perType[1].docType, QStringLiteral("现付"));
    EXPECT_EQ(perType[1].lines.size(), 5);
    EXPECT_EQ(perType[1].lines.last().credit, money("1610.25"));
}

TEST_P(VoucherGrouping, OneVoucherThatCannotBeMadeWritesNoFile)
{
    MonthBook b(GetParam());
    b.journal->setVoucherGrouping(QStringLiteral("record"));

    // The fourth voucher's explanation has no GBK form: named, nothing written.
    b.grid->setText(5, b.col("Explain"), QStringLiteral("收回欠款😀"));
    b.selectAll();
    b.said.clear();
    EXPECT_FALSE(b.journal->Make());
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said[0].startsWith(QStringLiteral("第5行记录的摘要“收回欠款😀”"))) << qPrintable(b.said[0]);
    EXPECT_TRUE(b.files().isEmpty()) << qPrintable(b.files().join(QLatin1Char(' ')));
    b.grid->setText(5, b.col("Explain"), QStringLiteral("收回欠款"));

    // Room for one more 记, not for eight.
    BookBuilder(b.db->open()).voucher(QStringLiteral("2025-01-30"), QStringLiteral("记"), 32766);
    b.said.clear();
    EXPECT_FALSE(b.journal->Make());
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said[0].contains(QStringLiteral("32767"))) << qPrintable(b.said[0]);
    EXPECT_TRUE(b.files().isEmpty());
    EXPECT_TRUE(b.made.isEmpty());

    const QList<Voucher> one = b.makeAll("all");
    ASSERT_EQ(one.size(), 1);
    EXPECT_EQ(one[0].docNo, 32767);

    // A selection of nothing to book makes nothing in any grouping.
    for (const char *grouping : {"all", "record", "type"}) {
        b.clearFolder();
        b.said.clear();
        b.made.clear();
        b.journal->setVoucherGrouping(QString::fromLatin1(grouping));
        // The sub-total and the linked record; the record without an account.
        for (const auto &[first, last] : {std::pair{7, 8}, std::pair{10, 10}}) {
            b.said.clear();
            b.grid->select(first, b.col("Explain"), last, b.col("Explain"));
            EXPECT_FALSE(b.journal->Make()) << grouping;
            EXPECT_EQ(b.said, QStringList{QStringLiteral("未找到生成凭证的记录，未能生成记账凭证。")}) << grouping;
        }
        EXPECT_TRUE(b.files().isEmpty()) << grouping;
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, VoucherGrouping, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

TEST(VoucherGroupingChoice, TheControlKeepsItInItsMenuAndItsBag)
{
    EditingBook b;
    EXPECT_EQ(b.journal->voucherGrouping(), QStringLiteral("all"));
    const auto checks = [&] {
        QString s;
        for (const char *name : {"mnuVoucherPerRecord", "mnuVoucherPerType", "mnuVoucherAllInOne"}) {
            QAction *a = b.journal->menuAction(QString::fromLatin1(name));
            s += !a ? QLatin1Char('?') : a->isChecked() ? QLatin1Char('x') : QLatin1Char('.');
        }
        return s;
    };
    EXPECT_EQ(checks(), QStringLiteral("..x"));
    EXPECT_EQ(b.journal->menuAction(QStringLiteral("mnuVoucherPerType"))->text(), QStringLiteral("按收付类型"));

    kxtest::runMenuItem(*b.journal, "mnuVoucherPerType");
    EXPECT_EQ(b.journal->voucherGrouping(), QStringLiteral("type"));
    EXPECT_EQ(checks(), QStringLiteral(".x."));
    kxtest::runMenuItem(*b.journal, "mnuVoucherPerType");
    EXPECT_EQ(checks(), QStringLiteral(".x.")) << "choosing the chosen item keeps it";
    kxtest::runMenuItem(*b.journal, "mnuVoucherPerRecord");
    EXPECT_EQ(checks(), QStringLiteral("x.."));

    b.said.clear();
    b.journal->setVoucherGrouping(QStringLiteral("month"));
    EXPECT_EQ(b.journal->voucherGrouping(), QStringLiteral("record"));
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said[0].contains(QStringLiteral("month"))) << qPrintable(b.said[0]);
    b.journal->setVoucherGrouping(QStringLiteral(" Type "));
    EXPECT_EQ(checks(), QStringLiteral(".x."));

    kx::PropertyBag bag;
    b.journal->WriteProperties(bag);
    EXPECT_EQ(bag.read(QStringLiteral("VoucherGrouping"), QVariant()).toString(), QStringLiteral("type"));
    kx::Journal restored;
    restored.ReadProperties(bag);
    EXPECT_EQ(restored.voucherGrouping(), QStringLiteral("type"));
    // A name this version does not know leaves the choice as it was.
    kx::PropertyBag odd;
    odd.write(QStringLiteral("VoucherGrouping"), QStringLiteral("weekly"));
    restored.ReadProperties(odd);
    EXPECT_EQ(restored.voucherGrouping(), QStringLiteral("type"));
}

// Random months: whatever the records, every grouping books each record
// that may take a voucher exactly once, on the side its amount says, and
// every voucher balances. The seed is printed; KX_SEED repeats a run.
TEST(VoucherGroupingRandom, EveryRecordOnceAndEveryVoucherBalanced)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::system()->generate();
    std::cout << "voucher grouping seed " << seed << " (KX_SEED repeats it)" << std::endl;
    QRandomGenerator rng(seed);
    MonthBook b(Engine::Sqlite);
    for (int round = 0; round < 6; ++round) {
        SCOPED_TRACE(round);
        // Rewrite the records' amounts and links in the grid as a user might have.
        QStringList booked, receipts;
        for (int r = 2; r < b.grid->rows() - 1; ++r) {
            if (b.text(r, "Tag") == QLatin1String("-1"))
                continue;
            QString amount = QString::number(qint64(rng.bounded(2000000)) - 200000) + QStringLiteral(".") +
                             QString::number(1 + rng.bounded(99));
            const bool in = rng.bounded(2) == 0;
            const bool linked = rng.bounded(5) == 0;
            b.grid->setText(r, b.col("Debit"), in ? amount : QString());
            b.grid->setText(r, b.col("Credit"), in ? QString() : amount);
            b.grid->setText(r, b.col("DirID"), linked ? QString::number(b.linked) : QStringLiteral("0"));
            b.grid->setText(r, b.col("Explain"), QStringLiteral("记录%1").arg(r));
            if (!linked && b.text(r, "AccID").toInt() > 0) {
                booked << QStringLiteral("记录%1").arg(r);
                if (in)
                    receipts << QStringLiteral("记录%1").arg(r);
            }
        }
        if (booked.isEmpty())
            continue;
        for (const char *grouping : {"all", "record", "type"}) {
            SCOPED_TRACE(grouping);
            b.clearFolder();
            const QList<Voucher> vouchers = b.makeAll(grouping);
            ASSERT_EQ(b.files().size(), vouchers.size());
            QStringList seen, seenReceipts;
            for (int i = 0; i < vouchers.size(); ++i) {
                const Voucher &v = vouchers[i];
                EXPECT_EQ(v.debitTotal(), v.creditTotal()) << "seed " << seed;
                ASSERT_GE(v.lines.size(), 2);
                for (int l = 0; l + 1 < v.lines.size(); ++l) {
                    seen << v.lines[l].explain;
                    // Money in stands on the counter account's credit side.
                    if (!v.lines[l].credit.isZero())
                        seenReceipts << v.lines[l].explain;
                    if (QLatin1String(grouping) == QLatin1String("type"))
                        EXPECT_EQ(receipts.contains(v.lines[l].explain), v.docType == QStringLiteral("收"))
                            << qPrintable(v.lines[l].explain) << " seed " << seed;
                }
                if (i > 0 && v.docType == vouchers[i - 1].docType)
                    EXPECT_EQ(v.docNo, vouchers[i - 1].docNo + 1) << "seed " << seed;
            }
            EXPECT_EQ(seen.size(), booked.size()) << "seed " << seed;
            seen.sort();
            QStringList expected = booked;
            expected.sort();
            EXPECT_EQ(seen, expected) << "seed " << seed;
            seenReceipts.sort();
            receipts.sort();
            EXPECT_EQ(seenReceipts, receipts) << "seed " << seed;
        }
    }
}
