// Statements kept beside a bank book, and the balance reconciliation of the
// book: its two adjusted balances, on paper and in a spreadsheet, on both
// engines, and the tool's two commands.
#include "support/TestDatabase.h"

#include "bank/Reconciliation.h"
#include "bank/ReconciliationReport.h"
#include "bank/StatementMatcher.h"
#include "bank/StatementStore.h"
#include "data/SqlAccess.h"
#include "ledger/Book.h"
#include "ledger/LedgerHost.h"
#include "output/BookSession.h"

#include <kxjournal/SqlAccContext.h>

#include <QDir>
#include <QStringEncoder>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

kx::Currency money(const char *text)
{
    return kx::Currency::fromText(QString::fromLatin1(text)).value();
}

kx::StatementLine bankLine(const QDate &date, kx::StatementSide side, kx::Currency amount, const QString &reference,
                           const QString &memo = QString())
{
    kx::StatementLine l;
    l.date = date;
    l.side = side;
    l.amount = amount;
    l.reference = reference;
    l.memo = memo;
    l.counterparty = QStringLiteral("华南公司");
    return l;
}

QByteArray run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    EXPECT_TRUE(p.waitForFinished(60000)) << qPrintable(program);
    return p.readAllStandardOutput();
}

class StatementStoreTest : public ::testing::TestWithParam<Engine>
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        db = testDb->open();
        docId = kxtest::fillSampleBooks(db, 20, 1);
        ASSERT_GT(docId, 0);
    }
    std::unique_ptr<kxtest::TestDatabase> testDb;
    kx::Database db;
    int docId = 0;
};

class Reconciling : public StatementStoreTest
{
protected:
    void SetUp() override
    {
        testDb = std::make_unique<kxtest::TestDatabase>(GetParam());
        {
            kx::Database filler = testDb->open();
            docId = kxtest::fillSampleBooks(filler, 300, 1);
        }
        ASSERT_GT(docId, 0);
        acc = std::make_unique<kx::SqlAccContext>(testDb->open());
        session = std::make_unique<kx::BookSession>(acc.get(), docId, kx::LedgerHost::none());
        ASSERT_TRUE(session->load());
    }
    // The journal's balance after \a day, from the table itself.
    kx::Currency storedBalance(const QDate &day)
    {
        const kx::Result<QVariant> v = kx::sqlScalar(
            acc->Connection(),
            {QStringLiteral("SELECT SUM(COALESCE(Debit, 0)) - SUM(COALESCE(Credit, 0)) FROM kxJournalRecs WHERE "
                            "DocID = %1 AND Tag = 0 AND JnlDate <= ?")
                 .arg(docId),
             {day}});
        EXPECT_TRUE(v.ok());
        return kx::Currency::fromText(v.value().toString()).valueOr(kx::Currency::invalid());
    }
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::BookSession> session;
};

} // namespace

TEST_P(StatementStoreTest, AFileIsImportedOnceAndAnOverlappingOneAddsOnlyItsNewLines)
{
    kx::StatementStore store(db);
    kx::Statement first;
    first.format = QStringLiteral("csv");
    first.hash = QByteArray::fromHex("0102");
    first.lines << bankLine(QDate(2025, 3, 1), kx::StatementSide::Receipt, money("1234.5678"), QStringLiteral("T1"),
                            QStringLiteral("货款；三月"))
                << bankLine(QDate(2025, 3, 2), kx::StatementSide::Payment, money("0.01"), QStringLiteral("T2"))
                << bankLine(QDate(2025, 3, 2), kx::StatementSide::Payment, money("99999999.99"), QStringLiteral("T3"));
    first.lines[1].balance = money("1234.5578");
    first.lines[0].sourceLine = 7;
    kx::Result<kx::ImportOutcome> done = store.import(docId, first, QStringLiteral("三月.csv"), QStringLiteral("出纳"));
    ASSERT_TRUE(done.ok()) << qPrintable(done.error());
    EXPECT_EQ(done.value().added, 3);
    EXPECT_FALSE(done.value().again);

    done = store.import(docId, first, QStringLiteral("copy.csv"), QStringLiteral("出纳"));
    ASSERT_TRUE(done.ok());
    EXPECT_TRUE(done.value().again);
    EXPECT_EQ(done.value().added, 0);
    EXPECT_EQ(done.value().before.left(4), QString::number(QDate::currentDate().year()));

    kx::Statement second = first;
    second.hash = QByteArray::fromHex("0304");
    second.lines.removeFirst();
    second.lines << bankLine(QDate(2025, 3, 4), kx::StatementSide::Receipt, money("5"), QStringLiteral("T4"));
    done = store.import(docId, second, QStringLiteral("四月.csv"), QStringLiteral("出纳"));
    ASSERT_TRUE(done.ok());
    EXPECT_EQ(done.value().added, 1);
    EXPECT_EQ(done.value().skipped, 2);

    const kx::Result<QList<kx::StoredLine>> lines = store.lines(docId);
    ASSERT_TRUE(lines.ok()) << qPrintable(lines.error());
    ASSERT_EQ(lines.value().size(), 4);
    const kx::StatementLine &l = lines.value().first().line;
    EXPECT_EQ(l.date, QDate(2025, 3, 1));
    EXPECT_EQ(l.side, kx::StatementSide::Receipt);
    EXPECT_EQ(l.amount, money("1234.5678"));
    EXPECT_EQ(l.memo, QStringLiteral("货款；三月"));
    EXPECT_EQ(l.counterparty, QStringLiteral("华南公司"));
    EXPECT_EQ(l.sourceLine, 7);
    EXPECT_FALSE(l.balance.has_value());
    EXPECT_EQ(lines.value().at(1).line.balance, std::optional<kx::Currency>(money("1234.5578")));
    EXPECT_EQ(lines.value().at(2).line.amount, money("99999999.99"));
    EXPECT_EQ(store.lines(docId, QDate(2025, 3, 2)).value().size(), 3);
    EXPECT_TRUE(store.lines(docId + 1).value().isEmpty()) << "another book has none";
}

TEST_P(StatementStoreTest, MatchesAndTheBooksLayoutAreKept)
{
    kx::StatementStore store(db);
    EXPECT_TRUE(store.matches(docId).value().isEmpty());
    kx::Statement s;
    s.hash = "x";
    s.lines << bankLine(QDate(2025, 1, 2), kx::StatementSide::Payment, money("3"), QString());
    ASSERT_TRUE(store.import(docId, s, QStringLiteral("a.csv"), QString()).ok());
    const int id = store.lines(docId).value().first().id;
    ASSERT_TRUE(store.match({{id, 10}, {id, 11}}, QStringLiteral("出纳"), false).ok());
    const QMultiHash<int, int> m = store.matches(docId).value();
    EXPECT_EQ(m.size(), 2);
    const QList<int> matched = m.values(id);
    EXPECT_EQ(QSet<int>(matched.cbegin(), matched.cend()), (QSet<int>{10, 11}));
    EXPECT_EQ(store.unmatch({id}).value(), 2);
    EXPECT_TRUE(store.matches(docId).value().isEmpty());

    EXPECT_FALSE(store.mapping(docId).value().has_value());
    kx::ColumnMapping layout;
    layout.date = 0;
    layout.receipt = 3;
    layout.payment = 4;
    layout.name = QStringLiteral("工行网银");
    ASSERT_TRUE(store.rememberMapping(docId, layout).ok());
    layout.balance = 5;
    ASSERT_TRUE(store.rememberMapping(docId, layout).ok()) << "confirmed again: the newer layout";
    const std::optional<kx::ColumnMapping> kept = store.mapping(docId).value();
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(kept->toString(), layout.toString());
}

// A line the database refuses halfway through a file: nothing of the file
// stays, and the same file goes in whole once the database takes it.
TEST(StatementImport, AFileTheDatabaseRefusesHalfwayLeavesNothing)
{
    kxtest::TestDatabase testDb(Engine::Sqlite);
    kx::Database db = testDb.open();
    const int docId = kxtest::fillSampleBooks(db, 20, 1);
    kx::StatementStore store(db);
    kx::Statement s;
    s.hash = "half";
    for (const char *ref : {"A1", "BAD", "A3"})
        s.lines << bankLine(QDate(2025, 5, 6), kx::StatementSide::Receipt, money("10"), QString::fromLatin1(ref));
    ASSERT_TRUE(store.lines(docId).ok());  // the tables made
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON kxBankStmt WHEN NEW.BankRef = 'BAD' "
                                               "BEGIN SELECT RAISE(ABORT, 'refused'); END"),
                                {}})
                    .ok());
    const kx::Result<kx::ImportOutcome> failed = store.import(docId, s, QStringLiteral("半.csv"), QString());
    ASSERT_FALSE(failed.ok());
    EXPECT_TRUE(failed.error().contains(QStringLiteral("refused"))) << qPrintable(failed.error());
    EXPECT_TRUE(store.lines(docId).value().isEmpty());
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("SELECT COUNT(*) FROM kxBankImport"), {}}).value().toInt(), 0);

    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("DROP TRIGGER refuse"), {}}).ok());
    const kx::Result<kx::ImportOutcome> done = store.import(docId, s, QStringLiteral("半.csv"), QString());
    ASSERT_TRUE(done.ok());
    EXPECT_FALSE(done.value().again);
    EXPECT_EQ(done.value().added, 3);
}

// The statement holds every record of the first half year but three (the
// bank has not seen them), and a fee and interest the journal has not got:
// each lands on its side of the statement, and both adjusted balances are
// the same figure. A bank balance one yuan off shows as a difference, in
// red in the spreadsheet.
TEST_P(Reconciling, TheTwoAdjustedBalancesAgreeWithItemsOpenOnBothSides)
{
    const QDate to(2025, 6, 30);
    QList<kx::BankRecord> records;
    for (const kx::BankRecord &r : kx::BankRecord::of(session->book()))
        if (r.date <= to)
            records << r;
    ASSERT_GT(records.size(), 60);
    std::sort(records.begin(), records.end(), [](const auto &a, const auto &b) { return a.date < b.date; });
    // Held back: the first receipt and two payments of the half year.
    const kx::BankRecord heldIn = *std::find_if(records.cbegin(), records.cend(),
                                                [](const auto &r) { return r.side == kx::StatementSide::Receipt; });
    QList<kx::BankRecord> heldOut;
    for (const kx::BankRecord &r : records)
        if (r.side == kx::StatementSide::Payment && heldOut.size() < 2)
            heldOut << r;
    ASSERT_EQ(heldOut.size(), 2);
    const QSet<int> held{heldIn.recId, heldOut[0].recId, heldOut[1].recId};

    // The bank books a record the day after, so the last day's records are
    // still open too; its balances follow its own lines in date order.
    QList<kx::StatementLine> bankLines;
    for (const kx::BankRecord &r : records)
        if (!held.contains(r.recId))
            bankLines << bankLine(r.date.addDays(1), r.side, r.amount, r.number, r.explain);
    bankLines << bankLine(QDate(2025, 6, 21), kx::StatementSide::Receipt, money("3.21"), QStringLiteral("INT0621"), QStringLiteral("结息"))
              << bankLine(QDate(2025, 6, 28), kx::StatementSide::Payment, money("12.50"), QStringLiteral("FEE0628"), QStringLiteral("手续费"));
    std::stable_sort(bankLines.begin(), bankLines.end(), [](const auto &a, const auto &b) { return a.date < b.date; });
    kx::Currency bank = kx::Reconciliation::balanceOf(session->book(), QDate(2024, 12, 31));
    kx::Currency bankAtEnd;
    QList<kx::BankRecord> lateIn, lateOut;  // the journal's on the last day, the bank's on the next
    kx::Statement statement;
    statement.format = QStringLiteral("csv");
    statement.hash = "half-year";
    for (kx::StatementLine l : bankLines) {
        bank = l.side == kx::StatementSide::Receipt ? bank + l.amount : bank - l.amount;
        l.balance = bank;
        statement.lines << l;
        if (l.date <= to)
            bankAtEnd = bank;
    }
    for (const kx::BankRecord &r : records)
        if (r.date == to && !held.contains(r.recId))
            (r.side == kx::StatementSide::Receipt ? lateIn : lateOut) << r;
    kx::Currency lateSum;
    for (const kx::BankRecord &r : lateIn)
        lateSum = lateSum + r.amount;
    for (const kx::BankRecord &r : lateOut)
        lateSum = lateSum - r.amount;

    kx::Database &db = acc->Connection();
    kx::StatementStore store(db);
    ASSERT_TRUE(store.import(docId, statement, QStringLiteral("上半年.csv"), QStringLiteral("出纳")).ok());
    const kx::StatementMatcher::Outcome found =
        kx::StatementMatcher::match(store.lines(docId).value(), kx::BankRecord::of(session->book()));
    EXPECT_EQ(found.pairs.size(), records.size() - 3);
    ASSERT_TRUE(store.match(found.pairs, QStringLiteral("出纳"), true).ok());

    const kx::Result<kx::Reconciliation> made = kx::Reconciliation::of(session->book(), db, to);
    ASSERT_TRUE(made.ok()) << qPrintable(made.error());
    const kx::Reconciliation &r = made.value();
    EXPECT_EQ(r.bookBalance, storedBalance(to));
    EXPECT_EQ(r.bankBalance, bankAtEnd);
    using R = kx::Reconciliation;
    ASSERT_EQ(r.items[R::BankReceived].size(), 1);
    EXPECT_EQ(r.items[R::BankReceived][0].amount, money("3.21"));
    ASSERT_EQ(r.items[R::BankPaid].size(), 1);
    EXPECT_EQ(r.items[R::BankPaid][0].reference, QStringLiteral("FEE0628"));
    ASSERT_EQ(r.items[R::BookReceived].size(), 1 + lateIn.size());
    EXPECT_EQ(r.items[R::BookReceived][0].key, heldIn.recId);
    ASSERT_EQ(r.items[R::BookPaid].size(), 2 + lateOut.size());
    EXPECT_EQ(r.items[R::BookPaid][0].key, heldOut[0].recId);
    EXPECT_EQ(r.items[R::BookPaid][1].key, heldOut[1].recId);
    EXPECT_EQ(r.adjustedBook(), r.bookBalance + money("3.21") - money("12.50"));
    EXPECT_EQ(r.adjustedBank(), bankAtEnd + heldIn.amount - heldOut[0].amount - heldOut[1].amount + lateSum);
    EXPECT_EQ(r.difference(), kx::Currency());

    QTemporaryDir dir;
    const QString pdf = dir.filePath(QStringLiteral("调节表.pdf"));
    const QString xlsx = dir.filePath(QStringLiteral("调节表.xlsx"));
    const kx::ReconciliationReport report(r, QStringLiteral("王出纳"));
    ASSERT_TRUE(report.write(pdf).ok());
    ASSERT_TRUE(report.write(xlsx).ok());
    const QString text = QString::fromUtf8(run(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")}));
    for (const QString &want : {QStringLiteral("银行存款余额调节表"), QStringLiteral("编制人：王出纳"),
                                QStringLiteral("截止日期：2025-06-30"), QStringLiteral("加：银收企未收"),
                                QStringLiteral("减：企付银未付"), QStringLiteral("手续费"), QStringLiteral("两者相符"),
                                r.adjustedBook().format(QStringLiteral("#,##0.00")),
                                r.bookBalance.format(QStringLiteral("#,##0.00")),
                                bankAtEnd.format(QStringLiteral("#,##0.00"))})
        EXPECT_TRUE(text.contains(want)) << qPrintable(want) << "\n" << qPrintable(text);
    const QString sheet = QString::fromUtf8(run(QStringLiteral("unzip"), {QStringLiteral("-p"), xlsx, QStringLiteral("xl/worksheets/sheet1.xml")}));
    const QString strings = QString::fromUtf8(run(QStringLiteral("unzip"), {QStringLiteral("-p"), xlsx, QStringLiteral("xl/sharedStrings.xml")}));
    EXPECT_TRUE(strings.contains(QStringLiteral("企业银行存款日记账余额")));
    EXPECT_TRUE(strings.contains(QStringLiteral("调节后的存款余额")));
    EXPECT_TRUE(strings.contains(QStringLiteral("FEE0628")));
    EXPECT_TRUE(sheet.contains(QStringLiteral("<v>%1</v>").arg(r.adjustedBook().toString()))) << qPrintable(r.adjustedBook().toString());
    EXPECT_TRUE(sheet.contains(QStringLiteral("<v>12.5</v>")));

    // The bank says one yuan more than its lines add up to.
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("UPDATE kxBankStmt SET Balance = Balance + 1 WHERE DocID = %1").arg(docId), {}})
                    .ok());
    const kx::Reconciliation off = kx::Reconciliation::of(session->book(), db, to).value();
    EXPECT_EQ(off.difference(), money("-1"));
    ASSERT_TRUE(kx::ReconciliationReport(off, QString()).write(xlsx).ok());
    const QString styles = QString::fromUtf8(run(QStringLiteral("unzip"), {QStringLiteral("-p"), xlsx, QStringLiteral("xl/styles.xml")}));
    EXPECT_TRUE(styles.contains(QStringLiteral("FFFF0000"))) << "the difference is red";
    EXPECT_TRUE(QString::fromUtf8(run(QStringLiteral("unzip"), {QStringLiteral("-p"), xlsx, QStringLiteral("xl/worksheets/sheet1.xml")}))
                    .contains(QStringLiteral("<v>-1</v>")));

    // Before the statement begins there is nothing to reconcile with.
    const kx::Result<kx::Reconciliation> early = kx::Reconciliation::of(session->book(), db, QDate(2024, 12, 31));
    ASSERT_FALSE(early.ok());
    EXPECT_EQ(early.error(), QStringLiteral("2024-12-31 以前没有导入过这本账的银行对账单。"));
}

// The tool imports a bank's CSV (GBK, a header block, a totals line), says
// so when the same file comes again, matches and writes the statement; a
// file it cannot read and a day before any statement end in one line and
// exit code 1.
TEST(ReconcileTool, ImportsMatchesAndWritesTheStatementWithoutADisplay)
{
    kxtest::TestDatabase testDb(Engine::Sqlite);
    int docId = 0;
    QList<kx::BankRecord> records;
    {
        kx::Database db = testDb.open();
        docId = kxtest::fillSampleBooks(db, 120, 1);
        ASSERT_GT(docId, 0);
    }
    {
        kx::SqlAccContext acc(testDb.open());
        kx::BookSession session(&acc, docId, kx::LedgerHost::none());
        ASSERT_TRUE(session.load());
        for (const kx::BankRecord &r : kx::BankRecord::of(session.book()))
            if (r.date <= QDate(2025, 3, 31))
                records << r;
    }
    ASSERT_GT(records.size(), 10);
    QStringList csv{QStringLiteral("账号：6222020200012345678"), QStringLiteral("户名：示例公司"),
                    QStringLiteral("交易日期,摘要,收入金额,支出金额,余额,对方户名,对方账号,交易流水号")};
    // The bank's balance before the first line is what the journal held then.
    kx::Currency balance;
    {
        kx::SqlAccContext acc(testDb.open());
        kx::BookSession session(&acc, docId, kx::LedgerHost::none());
        ASSERT_TRUE(session.load());
        balance = kx::Reconciliation::balanceOf(session.book(), QDate(2024, 12, 31));
    }
    for (const kx::BankRecord &r : records) {
        const bool in = r.side == kx::StatementSide::Receipt;
        balance = in ? balance + r.amount : balance - r.amount;
        csv << QStringLiteral("%1,\"%2\",%3,%4,%5,,,B%6")
                   .arg(r.date.toString(QStringLiteral("yyyyMMdd")), r.explain, in ? r.amount.toString() : QStringLiteral("0.00"),
                        in ? QStringLiteral("0.00") : r.amount.toString(), balance.toString())
                   .arg(r.recId);
    }
    csv << QStringLiteral("合计,,,,,,,");
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("对账单.csv"));
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        QStringEncoder gbk("GBK");
        f.write(gbk.encode(csv.join(QStringLiteral("\r\n"))));
    }
    auto tool = [](const QStringList &args) {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("QT_QPA_PLATFORM"));
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(KX_TOOL), args);
        EXPECT_TRUE(p.waitForFinished(120000));
        return std::make_tuple(p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()),
                               QString::fromUtf8(p.readAllStandardError()));
    };
    const QStringList where{QStringLiteral("--db"), testDb.url(), QStringLiteral("--book"), QStringLiteral("020101")};
    auto [rc, out, err] = tool(QStringList{QStringLiteral("statement"), QStringLiteral("import")} + where + QStringList{file});
    EXPECT_EQ(rc, 0) << qPrintable(err);
    EXPECT_TRUE(out.contains(QStringLiteral("读入 %1 行，导入 %1 行，跳过 0 行").arg(records.size()))) << qPrintable(out);
    EXPECT_TRUE(out.contains(QStringLiteral("收入=收入金额"))) << qPrintable(out);
    {
        kx::Database db = testDb.open();
        EXPECT_TRUE(kx::StatementStore(db).mapping(docId).value().has_value()) << "the first file's layout is the book's";
    }
    std::tie(rc, out, err) = tool(QStringList{QStringLiteral("statement"), QStringLiteral("import")} + where + QStringList{file});
    EXPECT_EQ(rc, 0);
    EXPECT_TRUE(out.contains(QStringLiteral("导入 0 行：这个文件已经在"))) << qPrintable(out);

    const QString pdf = dir.filePath(QStringLiteral("调节表.pdf"));
    std::tie(rc, out, err) = tool(QStringList{QStringLiteral("reconcile")} + where +
                                  QStringList{QStringLiteral("--to"), QStringLiteral("2025-03-31"), QStringLiteral("--auto"),
                                              QStringLiteral("--out"), pdf});
    EXPECT_EQ(rc, 0) << qPrintable(err);
    EXPECT_TRUE(out.contains(QStringLiteral("自动勾对 %1 笔。").arg(records.size()))) << qPrintable(out);
    EXPECT_TRUE(out.contains(QStringLiteral("两边相符"))) << qPrintable(out);
    EXPECT_TRUE(err.isEmpty()) << qPrintable(err);
    EXPECT_TRUE(QString::fromUtf8(run(QStringLiteral("pdftotext"), {pdf, QStringLiteral("-")})).contains(QStringLiteral("银行存款余额调节表")));

    const QString bad = dir.filePath(QStringLiteral("坏.csv"));
    {
        QFile f(bad);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("交易日期,摘要,收入金额,支出金额\r\n20250105,x,12.3x,0\r\n");
    }
    std::tie(rc, out, err) = tool(QStringList{QStringLiteral("statement"), QStringLiteral("import")} + where + QStringList{bad});
    EXPECT_EQ(rc, 1);
    EXPECT_EQ(err.count(QLatin1Char('\n')), 1) << qPrintable(err);
    EXPECT_TRUE(err.contains(QStringLiteral("坏.csv"))) << qPrintable(err);
    std::tie(rc, out, err) = tool(QStringList{QStringLiteral("reconcile")} + where +
                                  QStringList{QStringLiteral("--to"), QStringLiteral("2024-06-30"), QStringLiteral("--out"),
                                              dir.filePath(QStringLiteral("早.xlsx"))});
    EXPECT_EQ(rc, 1);
    EXPECT_EQ(err, QStringLiteral("kxjournal: 020101: 2024-06-30 以前没有导入过这本账的银行对账单。\n"));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("早.xlsx"))));
}

INSTANTIATE_TEST_SUITE_P(Engines, StatementStoreTest, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
INSTANTIATE_TEST_SUITE_P(Engines, Reconciling, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

// A line ticked to two records, one of them after the day: on that day the
// line is still open and so is the record before it, and the two sides
// agree. A statement listed newest first gives its day's last balance.
TEST(ReconciliationEquation, ALineTickedAcrossTheDayAndANewestFirstStatement)
{
    kx::BankRecord r1, r2;
    r1.recId = 1;
    r1.date = QDate(2025, 1, 30);
    r1.amount = money("600");
    r2.recId = 2;
    r2.date = QDate(2025, 2, 1);
    r2.amount = money("400");
    kx::StoredLine l;
    l.id = 7;
    l.line = bankLine(QDate(2025, 1, 31), kx::StatementSide::Receipt, money("1000"), QStringLiteral("X"));
    l.line.balance = money("1000");
    QMultiHash<int, int> matches;
    matches.insert(7, 1);
    matches.insert(7, 2);
    const kx::Reconciliation r = kx::Reconciliation::of({r1, r2}, money("600"), {l}, matches, {}, QDate(2025, 1, 31)).value();
    EXPECT_EQ(r.difference(), kx::Currency());
    EXPECT_EQ(r.items[kx::Reconciliation::BankReceived].size(), 1);
    EXPECT_EQ(r.items[kx::Reconciliation::BookReceived].size(), 1);

    kxtest::TestDatabase testDb(Engine::Sqlite);
    kx::Database db = testDb.open();
    const int docId = kxtest::fillSampleBooks(db, 20, 1);
    kx::Statement s;
    s.hash = "newest-first";
    s.lines << bankLine(QDate(2025, 1, 31), kx::StatementSide::Payment, money("200"), QStringLiteral("C"))
            << bankLine(QDate(2025, 1, 31), kx::StatementSide::Receipt, money("500"), QStringLiteral("B"))
            << bankLine(QDate(2025, 1, 30), kx::StatementSide::Receipt, money("500"), QStringLiteral("A"));
    s.lines[0].balance = money("800");
    s.lines[1].balance = money("1000");
    s.lines[2].balance = money("500");
    kx::StatementStore store(db);
    ASSERT_TRUE(store.import(docId, s, QStringLiteral("倒序.csv"), QString()).ok());
    const kx::Reconciliation back =
        kx::Reconciliation::of({}, money("800"), store.lines(docId).value(), {}, {}, QDate(2025, 1, 31)).value();
    EXPECT_EQ(back.bankBalance, money("800")) << "the day's last balance, not its first";
}
