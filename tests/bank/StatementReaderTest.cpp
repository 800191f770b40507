#include "bank/StatementReader.h"
#include "QtPrinters.h"
#include "bank/BiffWriter.h"

#include <QCryptographicHash>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <xlsxwriter.h>

using kx::ColumnMapping;
using kx::Currency;
using kx::Statement;
using kx::StatementLine;
using kx::StatementReader;
using kx::StatementSide;

namespace {

Currency money(const char *text) { return Currency::fromText(QString::fromUtf8(text)).value(); }

QByteArray gbk(const QString &text)
{
    QStringEncoder enc("GBK");
    QByteArray out = enc.encode(text);
    EXPECT_FALSE(enc.hasError());
    return out;
}

QString lines(std::initializer_list<const char *> rows, const char *eol = "\r\n")
{
    QString out;
    for (const char *r : rows)
        out += QString::fromUtf8(r) + QString::fromLatin1(eol);
    return out;
}

Statement readOk(const QByteArray &bytes, const QString &name, const std::optional<ColumnMapping> &mapping = {})
{
    kx::Result<Statement> r = StatementReader::read(bytes, name, mapping);
    EXPECT_TRUE(r.ok()) << r.error().toStdString();
    return r.ok() ? r.value() : Statement();
}

QString readError(const QByteArray &bytes, const QString &name, const std::optional<ColumnMapping> &mapping = {})
{
    kx::Result<Statement> r = StatementReader::read(bytes, name, mapping);
    EXPECT_FALSE(r.ok()) << "read " << (r.ok() ? r.value().lines.size() : 0) << " lines";
    return r.error();
}

struct Expected
{
    int sourceLine;
    QDate date;
    StatementSide side;
    const char *amount;
    const char *balance; // nullptr: none given
    const char *reference;
    const char *counterparty;
    const char *counterpartyAccount;
    const char *memo;
};

void expectLines(const Statement &st, const std::vector<Expected> &want)
{
    ASSERT_EQ(st.lines.size(), qsizetype(want.size()));
    for (size_t i = 0; i < want.size(); ++i) {
        const StatementLine &l = st.lines.at(qsizetype(i));
        const Expected &w = want[i];
        SCOPED_TRACE(testing::Message() << "line " << i << " from source line " << l.sourceLine);
        EXPECT_EQ(l.sourceLine, w.sourceLine);
        EXPECT_EQ(l.date, w.date);
        EXPECT_EQ(l.side, w.side);
        EXPECT_EQ(l.amount, money(w.amount)) << l.amount.toString().toStdString();
        if (w.balance) {
            ASSERT_TRUE(l.balance.has_value());
            EXPECT_EQ(*l.balance, money(w.balance)) << l.balance->toString().toStdString();
        } else {
            EXPECT_FALSE(l.balance.has_value());
        }
        EXPECT_EQ(l.reference, QString::fromUtf8(w.reference));
        EXPECT_EQ(l.counterparty, QString::fromUtf8(w.counterparty));
        EXPECT_EQ(l.counterpartyAccount, QString::fromUtf8(w.counterpartyAccount));
        EXPECT_EQ(l.memo, QString::fromUtf8(w.memo));
    }
}

constexpr auto In = StatementSide::Receipt;
constexpr auto Out = StatementSide::Payment;

// A statement as a bank's online banking gives it: a header block above
// the table and totals below it.
QString headedStatement()
{
    return lines({
        "中国某某银行 账户交易明细",
        "账号：6222020200112233445",
        "户名：华南贸易有限公司",
        "起止日期：2026-03-01 至 2026-03-31",
        "",
        "交易日期,摘要,收入金额,支出金额,余额,对方户名,对方账号,交易流水号",
        "2026-03-02 09:15:00,货款,\"￥1,234.56\",,11234.56,广州永达有限公司,6222000011112222,TX0001",
        "20260303,\"房租,三月\",,3000.00,8234.56,李四物业,=\"6217000099998888\",TX0002",
        "2026/3/5,利息,0.56,-,8235.12,,,TX0003",
        "2026年3月6日,手续费,,(12.30),8222.82,,,TX0004",
        "2026-03-07,冲正,0,0.00,8222.82,,,TX0005",
        "2026-03-08,\"代收\r\n货款\",500,,8722.82,\"张三 \"\"个体\"\"\",,TX0006",
        "合计,,\"1,735.12\",\"3,012.30\",,,,",
        "笔数：5,,,,,,,",
        "第 1 页 共 1 页",
        "打印时间：2026-04-01 08:00:00",
    });
}

const std::vector<Expected> HeadedLines = {
    {7, QDate(2026, 3, 2), In, "1234.56", "11234.56", "TX0001", "广州永达有限公司", "6222000011112222", "货款"},
    {8, QDate(2026, 3, 3), Out, "3000", "8234.56", "TX0002", "李四物业", "6217000099998888", "房租,三月"},
    {9, QDate(2026, 3, 5), In, "0.56", "8235.12", "TX0003", "", "", "利息"},
    {10, QDate(2026, 3, 6), Out, "12.3", "8222.82", "TX0004", "", "", "手续费"},
    {12, QDate(2026, 3, 8), In, "500", "8722.82", "TX0006", "张三 \"个体\"", "", "代收\r\n货款"},
};

} // namespace

TEST(StatementReader, ReadsABanksCsvInEitherEncodingBetweenItsHeaderBlockAndTotals)
{
    const QString text = headedStatement();
    const QByteArray gbkBytes = gbk(text);
    const QByteArray forms[] = {gbkBytes, text.toUtf8(), QByteArray("\xEF\xBB\xBF") + text.toUtf8()};
    for (const QByteArray &bytes : forms) {
        const Statement st = readOk(bytes, QStringLiteral("明细.csv"));
        expectLines(st, HeadedLines);
        EXPECT_EQ(st.format, QStringLiteral("csv"));
        EXPECT_EQ(st.account, QStringLiteral("6222020200112233445"));
        EXPECT_EQ(st.mappingUsed, QStringLiteral("日期=交易日期, 收入=收入金额, 支出=支出金额, 余额=余额, "
                                                 "流水号=交易流水号, 对方户名=对方户名, 对方账号=对方账号, 摘要=摘要"));
        EXPECT_TRUE(st.balanceBreaks.isEmpty()) << st.balanceBreaks.size();
        EXPECT_EQ(st.hash, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
    }
    // The mark of "借" in GBK, to be sure the file really was GBK.
    EXPECT_FALSE(gbkBytes.contains(text.toUtf8().mid(0, 6)));
}

TEST(StatementReader, BankSideColumnsAndSignedAmountsGiveTheDepositorsSide)
{
    // The bank's 借方 (debit) is money leaving the account: a payment.
    const QString bankSide = lines({
        "记账日期,借方发生额,贷方发生额,余额,摘要,用途",
        "2026-04-01,100.00,,900.00,转账,房租",
        "2026-04-02,,250.00,1150.00,汇入,",
    });
    Statement st = readOk(gbk(bankSide), QStringLiteral("a.csv"));
    expectLines(st, {{2, QDate(2026, 4, 1), Out, "100", "900", "", "", "", "转账；房租"},
                     {3, QDate(2026, 4, 2), In, "250", "1150", "", "", "", "汇入"}});
    EXPECT_TRUE(st.mappingUsed.contains(QStringLiteral("收入=贷方发生额, 支出=借方发生额"))) << st.mappingUsed.toStdString();
    EXPECT_TRUE(st.mappingUsed.contains(QStringLiteral("摘要=摘要+用途"))) << st.mappingUsed.toStdString();

    // One amount column and a side column, as words from either side's
    // books; a bank that also signs the amount signs it the same way.
    const QString flagged = lines({
        "交易时间,交易金额,借贷标志,账户余额,交易参考号",
        "2026-04-03 10:00:00,100.00,借,900.00,R1",
        "2026-04-04 11:00:00,40.00,贷,940.00,R2",
        "2026-04-05,-15.00,借,925.00,R3",
        "2026-04-06,5.00,收,930.00,R4",
        "2026-04-07,30.00,出,900.00,R5",
    }, "\n");
    st = readOk(flagged.toUtf8(), QStringLiteral("b.csv"));
    expectLines(st, {{2, QDate(2026, 4, 3), Out, "100", "900", "R1", "", "", ""},
                     {3, QDate(2026, 4, 4), In, "40", "940", "R2", "", "", ""},
                     {4, QDate(2026, 4, 5), Out, "15", "925", "R3", "", "", ""},
                     {5, QDate(2026, 4, 6), In, "5", "930", "R4", "", "", ""},
                     {6, QDate(2026, 4, 7), Out, "30", "900", "R5", "", "", ""}});
    EXPECT_TRUE(st.balanceBreaks.isEmpty());

    // Without a side column the sign decides; tab-separated text reads the same.
    const QString signedText = lines({"日期\t金额\t备注", "2026-04-08\t-30.5\t付", "2026-04-09\t¥12\t收"});
    st = readOk(signedText.toUtf8(), QStringLiteral("c.txt"));
    expectLines(st, {{2, QDate(2026, 4, 8), Out, "30.5", nullptr, "", "", "", "付"},
                     {3, QDate(2026, 4, 9), In, "12", nullptr, "", "", "", "收"}});
}

TEST(StatementReader, FlagsTheLinesWhoseBalanceDoesNotFollow)
{
    const QString text = lines({
        "交易日期,收入,支出,余额",
        "2026-05-01,100,,100",
        "2026-05-02,50,,150",
        "2026-05-03,,20,140", // 150 - 20 is 130
        "2026-05-04,,10,130",
        "2026-05-05,5,,",     // no balance given: nothing to check
        "2026-05-06,5,,140",
    });
    Statement st = readOk(text.toUtf8(), QStringLiteral("x.csv"));
    EXPECT_EQ(st.balanceBreaks, QList<int>{4});
    ASSERT_EQ(st.lines.size(), 6);
    EXPECT_FALSE(st.lines.at(4).balance.has_value());

    // Newest first, as many banks list: the balances chain from the bottom.
    const QString newestFirst = lines({
        "交易日期,收入,支出,余额",
        "2026-05-04,,10,130",
        "2026-05-03,,20,140",
        "2026-05-02,50,,160",
        "2026-05-01,100,,110",
    });
    st = readOk(newestFirst.toUtf8(), QStringLiteral("y.csv"));
    EXPECT_EQ(st.balanceBreaks, QList<int>{});
}

TEST(StatementReader, ABadLineFailsTheWholeReadNamingIt)
{
    const char *header = "交易日期,摘要,收入金额,支出金额,余额";
    EXPECT_EQ(readError(gbk(lines({"账号：1", header, "2026-03-01,a,1,,1", "2026-03-02,b,\"12,3x\",,2", "2026-03-03,c,1,,3"})),
                        QStringLiteral("a.csv")),
              QStringLiteral("第 4 行：金额“12,3x”不是数目。"));
    EXPECT_EQ(readError(lines({header, "2026-03-01,a,1,,1", "2026-02-30,b,1,,2"}).toUtf8(), QStringLiteral("a.csv")),
              QStringLiteral("第 3 行：日期“2026-02-30”不是有效的日期。"));
    EXPECT_EQ(readError(lines({header, "2026-03-01,a,1,,1", "2026-03-02,b,1,\"x\",2"}).toUtf8(), QStringLiteral("a.csv")),
              QStringLiteral("第 3 行：金额“x”不是数目。"));
    EXPECT_EQ(readError(lines({header, "2026-03-01,a,1,2,1"}).toUtf8(), QStringLiteral("a.csv")),
              QStringLiteral("第 2 行：收入“1”和支出“2”都有金额。"));
    EXPECT_EQ(readError(lines({header, "2026-03-01,a,1,,1x"}).toUtf8(), QStringLiteral("a.csv")),
              QStringLiteral("第 2 行：余额金额“1x”不是数目。"));
    EXPECT_EQ(readError(lines({"日期,金额,借贷标志", "2026-03-01,5,借", "2026-03-02,5,转"}).toUtf8(), QStringLiteral("a.csv")),
              QStringLiteral("第 3 行：方向“转”不是 借/贷、收/支 或 入/出。"));
    // A dated line after the table ended would be lost without a word.
    EXPECT_EQ(readError(lines({header, "2026-03-01,a,1,,1", ",以下空白,,,", "2026-03-02,b,1,,2"}).toUtf8(),
                        QStringLiteral("a.csv")),
              QStringLiteral("第 4 行：表格在第 3 行已经结束，这一行却还有交易。"));
    EXPECT_EQ(readError(lines({header, "2026-03-01,\"a,1,,1", "2026-03-02,b,1,,2"}).toUtf8(), QStringLiteral("a.csv")),
              QStringLiteral("第 2 行：引号没有结束。"));

    // A header no bank writes: the message lists the names looked for.
    const QString unknown = readError(lines({"Datum,Betrag,Text", "2026-03-01,1,a"}).toUtf8(), QStringLiteral("a.csv"));
    EXPECT_TRUE(unknown.startsWith(QStringLiteral("认不出对账单的表头："))) << unknown.toStdString();
    for (const char *name : {"交易日期", "记账日期", "收入金额", "支出金额", "贷方发生额", "交易金额"})
        EXPECT_TRUE(unknown.contains(QString::fromUtf8(name))) << name;
    const QString partial = readError(lines({"交易日期,摘要,对方户名", "2026-03-01,a,b"}).toUtf8(), QStringLiteral("a.csv"));
    EXPECT_TRUE(partial.startsWith(QStringLiteral("第 1 行的表头缺少日期列或金额列："))) << partial.toStdString();

    EXPECT_EQ(readError(QByteArray(), QStringLiteral("a.csv")), QStringLiteral("对账单文件是空的。"));
    EXPECT_EQ(readError(QByteArray("\r\n\r\n ,, \r\n"), QStringLiteral("a.csv")), QStringLiteral("文件里没有内容。"));
    QByteArray blob;
    for (int i = 0; i < 4096; ++i)
        blob.append(char((i * 7919) & 0xFF));
    EXPECT_EQ(readError(blob, QStringLiteral("a.csv")), QStringLiteral("文件不是文本，也不是认识的对账单格式。"));
    EXPECT_EQ(readError(QByteArray("\x81\x30\xFF\xFE\x81"), QStringLiteral("a.csv")),
              QStringLiteral("文件不是 UTF-8 或 GBK 编码的文本。"));
    EXPECT_TRUE(StatementReader::read(QStringLiteral("/nonexistent/x.csv")).error().contains(QStringLiteral("文件不存在")));
}

TEST(StatementReader, AConfirmedMappingOverridesTheGuessAndIsStoredAsText)
{
    ColumnMapping m;
    m.date = 0;
    m.amount = 2;
    m.memo = 1;
    m.reference = 3;
    m.name = QStringLiteral("某银行 & 网银=旧版");
    const std::optional<ColumnMapping> back = ColumnMapping::fromString(m.toString());
    ASSERT_TRUE(back.has_value()) << m.toString().toStdString();
    EXPECT_TRUE(*back == m);
    EXPECT_FALSE(ColumnMapping::fromString(QStringLiteral("date=x")).has_value());
    EXPECT_FALSE(ColumnMapping::fromString(QStringLiteral("colour=1")).has_value());

    // A table without a header: the mapping finds the first dated row.
    const QString headerless = lines({"导出时间 2026-06-30", "2026-06-01,工资,8000.00,S1", "2026-06-02,买菜,-35.5,S2"});
    Statement st = readOk(headerless.toUtf8(), QStringLiteral("n.csv"), m);
    expectLines(st, {{2, QDate(2026, 6, 1), In, "8000", nullptr, "S1", "", "", "工资"},
                     {3, QDate(2026, 6, 2), Out, "35.5", nullptr, "S2", "", "", "买菜"}});
    EXPECT_EQ(st.mappingUsed, QStringLiteral("日期=第1列, 金额=第3列, 流水号=第4列, 摘要=第2列"));

    // Over a header that would be guessed otherwise.
    ColumnMapping other;
    other.date = 1;  // 记账日期 rather than 交易日期
    other.receipt = 2;
    other.payment = 3;
    const QString twoDates = lines({"交易日期,记账日期,收入,支出", "2026-06-01,2026-06-03,5,", "2026-06-02,2026-06-04,,6"});
    st = readOk(twoDates.toUtf8(), QStringLiteral("d.csv"), other);
    expectLines(st, {{2, QDate(2026, 6, 3), In, "5", nullptr, "", "", "", ""},
                     {3, QDate(2026, 6, 4), Out, "6", nullptr, "", "", "", ""}});
    EXPECT_EQ(st.mappingUsed, QStringLiteral("日期=记账日期, 收入=收入, 支出=支出"));
    ColumnMapping past = other;
    past.receipt = 7;
    past.payment = 8;
    EXPECT_EQ(readError(twoDates.toUtf8(), QStringLiteral("d.csv"), past), QStringLiteral("第 2 行：只有 4 列，没有金额所在的列。"));
    EXPECT_EQ(readError(twoDates.toUtf8(), QStringLiteral("d.csv"), ColumnMapping()),
              QStringLiteral("给定的列对应不全：要有日期列和金额列。"));
}

TEST(StatementReader, ReadsAWorkbookWithSharedStringsAndDateSerials)
{
    QTemporaryDir dir;
    const QByteArray path = QFile::encodeName(dir.filePath(QStringLiteral("明细.xlsx")));
    lxw_workbook *wb = workbook_new(path.constData());
    lxw_worksheet *ws = workbook_add_worksheet(wb, "明细");
    lxw_format *dateFormat = workbook_add_format(wb);
    format_set_num_format(dateFormat, "yyyy-mm-dd");
    worksheet_write_string(ws, 0, 0, "账号", nullptr);
    worksheet_write_string(ws, 0, 1, "6222 0000 1111", nullptr);
    worksheet_write_string(ws, 1, 0, "户名：华南贸易", nullptr);
    const char *header[] = {"交易日期", "摘要", "收入金额", "支出金额", "余额", "对方户名"};
    for (int c = 0; c < 6; ++c)
        worksheet_write_string(ws, 3, lxw_col_t(c), header[c], nullptr);
    const double serial = double(QDate(1899, 12, 30).daysTo(QDate(2026, 3, 5)));
    worksheet_write_number(ws, 4, 0, serial, dateFormat);
    worksheet_write_string(ws, 4, 1, "货款", nullptr);
    worksheet_write_number(ws, 4, 2, 1234.56, nullptr);
    worksheet_write_number(ws, 4, 4, 11234.56, nullptr);
    worksheet_write_string(ws, 4, 5, "广州永达", nullptr);
    worksheet_write_string(ws, 5, 0, "2026-03-06", nullptr);
    worksheet_write_string(ws, 5, 1, "货款", nullptr); // the same shared string again
    worksheet_write_string(ws, 5, 3, "1,000.10", nullptr);
    worksheet_write_number(ws, 5, 4, 10234.46, nullptr);
    worksheet_write_number(ws, 6, 0, serial + 2.75, dateFormat); // a time of day too
    worksheet_write_number(ws, 6, 3, 0.1 + 0.2, nullptr);        // 0.30000000000000004
    worksheet_write_number(ws, 6, 4, 10234.16, nullptr);
    worksheet_write_string(ws, 8, 0, "合计", nullptr);
    ASSERT_EQ(workbook_close(wb), LXW_NO_ERROR);

    QFile file(QFile::decodeName(path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    kx::Result<Statement> r = StatementReader::read(QFile::decodeName(path));
    ASSERT_TRUE(r.ok()) << r.error().toStdString();
    const Statement &st = r.value();
    EXPECT_EQ(st.format, QStringLiteral("xlsx"));
    EXPECT_EQ(st.account, QStringLiteral("6222 0000 1111"));
    expectLines(st, {{5, QDate(2026, 3, 5), In, "1234.56", "11234.56", "", "广州永达", "", "货款"},
                     {6, QDate(2026, 3, 6), Out, "1000.1", "10234.46", "", "", "", "货款"},
                     {7, QDate(2026, 3, 7), Out, "0.3", "10234.16", "", "", "", ""}});
    EXPECT_EQ(st.hash, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
    // The same bytes under a name that says otherwise: the content decides.
    EXPECT_EQ(readOk(bytes, QStringLiteral("statement.csv")).lines.size(), 3);

    // A cut archive and a non-archive under the workbook's name.
    EXPECT_TRUE(readError(bytes.left(bytes.size() / 2), QStringLiteral("a.xlsx")).startsWith(QStringLiteral("不是有效的 .xlsx 工作簿")));
    EXPECT_TRUE(readError(QByteArray("PK\x03\x04garbage", 11), QStringLiteral("a.xlsx")).startsWith(QStringLiteral("不是有效的 .xlsx 工作簿")));
}

TEST(StatementReader, ReadsALegacyWorkbook)
{
    // Written by the test's own BIFF8 writer: no tool here writes .xls.
    kxtest::BiffWriter w;
    w.text(0, 0, QStringLiteral("账号：6222 0000 2222"));
    const char *header[] = {"记账日期", "借方发生额", "贷方发生额", "余额", "对方户名", "摘要"};
    for (int c = 0; c < 6; ++c)
        w.text(2, c, QString::fromUtf8(header[c]));
    const double serial = double(QDate(1899, 12, 30).daysTo(QDate(2026, 3, 5)));
    w.date(3, 0, serial);
    w.number(3, 1, 300.25);
    w.number(3, 3, 700.75);
    w.text(3, 4, QStringLiteral("李四物业"));
    w.text(3, 5, QStringLiteral("房租"));
    w.text(4, 0, QStringLiteral("2026-03-06"));
    w.text(4, 2, QStringLiteral("1,000.00"));
    w.number(4, 3, 1700.75);
    w.text(4, 5, QStringLiteral("房租")); // a shared string used twice
    w.number(5, 0, serial + 3);          // a date cell without the date format
    w.number(5, 2, 100000000);
    w.number(5, 3, 100001700.75);
    w.text(6, 0, QStringLiteral("合计"));
    const QByteArray bytes = w.bytes();
    w.setSmallStream(true);
    const QByteArray smallBytes = w.bytes();
    ASSERT_NE(smallBytes, bytes);

    for (const QByteArray &file : {bytes, smallBytes}) {
        const Statement st = readOk(file, QStringLiteral("明细.xls"));
        EXPECT_EQ(st.format, QStringLiteral("xls"));
        EXPECT_EQ(st.account, QStringLiteral("6222 0000 2222"));
        expectLines(st, {{4, QDate(2026, 3, 5), Out, "300.25", "700.75", "", "李四物业", "", "房租"},
                         {5, QDate(2026, 3, 6), In, "1000", "1700.75", "", "", "", "房租"},
                         {6, QDate(2026, 3, 8), In, "100000000", "100001700.75", "", "", "", ""}});
        EXPECT_TRUE(st.balanceBreaks.isEmpty());
        EXPECT_TRUE(st.mappingUsed.contains(QStringLiteral("收入=贷方发生额, 支出=借方发生额"))) << st.mappingUsed.toStdString();
    }

    // Not a workbook: a compound file with nothing in it, and plain bytes.
    QByteArray ole("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    ole.append(QByteArray(504, '\0'));
    EXPECT_TRUE(readError(ole, QStringLiteral("a.xls")).startsWith(QStringLiteral("不是有效的 .xls 工作簿")));
    EXPECT_TRUE(readError(QByteArray(2048, '\x01'), QStringLiteral("a.xls")).startsWith(QStringLiteral("不是有效的 .xls 工作簿")));
    EXPECT_TRUE(readError(bytes.left(bytes.size() - 600), QStringLiteral("a.xls")).startsWith(QStringLiteral("不是有效的 .xls 工作簿")));
}

TEST(StatementReader, ReadsOfxInSgmlAndXml)
{
    const QByteArray sgml = lines({
        "OFXHEADER:100", "DATA:OFXSGML", "VERSION:102", "SECURITY:NONE", "ENCODING:USASCII", "CHARSET:1252",
        "COMPRESSION:NONE", "OLDFILEUID:NONE", "NEWFILEUID:NONE", "",
        "<OFX>",
        "<SIGNONMSGSRSV1><SONRS><STATUS><CODE>0<SEVERITY>INFO</STATUS><DTSERVER>20260310120000<LANGUAGE>ENG</SONRS></SIGNONMSGSRSV1>",
        "<BANKMSGSRSV1><STMTTRNRS><TRNUID>1<STATUS><CODE>0<SEVERITY>INFO</STATUS>",
        "<STMTRS><CURDEF>CNY<BANKACCTFROM><BANKID>102<ACCTID>6222001<ACCTTYPE>CHECKING</BANKACCTFROM>",
        "<BANKTRANLIST><DTSTART>20260301<DTEND>20260310",
        "<STMTTRN><TRNTYPE>CREDIT<DTPOSTED>20260302120000[+8:CST]<TRNAMT>1500.00<FITID>A001<NAME>Client &amp; Co<MEMO>Invoice 7</STMTTRN>",
        "<STMTTRN>",
        "<TRNTYPE>DEBIT",
        "<DTPOSTED>20260305",
        "<TRNAMT>-200.50",
        "<FITID>A002",
        "<PAYEE><NAME>Rent Ltd<CITY>Guangzhou</PAYEE>",
        "<BANKACCTTO><BANKID>9<ACCTID>7788<ACCTTYPE>CHECKING</BANKACCTTO>",
        "</STMTTRN>",
        "</BANKTRANLIST><LEDGERBAL><BALAMT>1299.50<DTASOF>20260310</LEDGERBAL></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>",
    }).toLatin1();
    Statement st = readOk(sgml, QStringLiteral("a.qfx"));
    EXPECT_EQ(st.format, QStringLiteral("ofx"));
    EXPECT_EQ(st.account, QStringLiteral("6222001"));
    expectLines(st, {{1, QDate(2026, 3, 2), In, "1500", nullptr, "A001", "Client & Co", "", "Invoice 7"},
                     {2, QDate(2026, 3, 5), Out, "200.5", nullptr, "A002", "Rent Ltd", "7788", ""}});
    ASSERT_TRUE(st.closingBalance.has_value());
    EXPECT_EQ(*st.closingBalance, money("1299.5"));
    EXPECT_EQ(st.closingDate, QDate(2026, 3, 10));

    const QByteArray xml = lines({
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>",
        "<?OFX OFXHEADER=\"200\" VERSION=\"211\" SECURITY=\"NONE\" OLDFILEUID=\"NONE\" NEWFILEUID=\"NONE\"?>",
        "<OFX><BANKMSGSRSV1><STMTTRNRS><TRNUID>1</TRNUID><STATUS><CODE>0</CODE><SEVERITY>INFO</SEVERITY></STATUS>",
        "<STMTRS><CURDEF>CNY</CURDEF><BANKACCTFROM><BANKID>1</BANKID><ACCTID>999</ACCTID><ACCTTYPE>CHECKING</ACCTTYPE></BANKACCTFROM>",
        "<BANKTRANLIST><DTSTART>20260301</DTSTART><DTEND>20260310</DTEND>",
        "<STMTTRN><TRNTYPE>CREDIT</TRNTYPE><DTPOSTED>20260302</DTPOSTED><TRNAMT>10.00</TRNAMT><FITID>X1</FITID><NAME>张三</NAME><MEMO>货款 &lt;3月&gt;</MEMO></STMTTRN>",
        "<STMTTRN><TRNTYPE>DEBIT</TRNTYPE><DTPOSTED>20260303</DTPOSTED><TRNAMT>-4,25</TRNAMT><FITID>X2</FITID><MEMO/><NAME></NAME></STMTTRN>",
        "</BANKTRANLIST><LEDGERBAL><BALAMT>5.75</BALAMT><DTASOF>20260310</DTASOF></LEDGERBAL></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>",
    }, "\n").toUtf8();
    st = readOk(xml, QStringLiteral("b.ofx"));
    EXPECT_EQ(st.account, QStringLiteral("999"));
    expectLines(st, {{1, QDate(2026, 3, 2), In, "10", nullptr, "X1", "张三", "", "货款 <3月>"},
                     {2, QDate(2026, 3, 3), Out, "4.25", nullptr, "X2", "", "", ""}});
    EXPECT_EQ(st.closingBalance, std::optional<Currency>(money("5.75")));

    // A file cut short gives nothing rather than the lines before the cut.
    for (const QByteArray &whole : {sgml, xml})
        for (const qsizetype cut : {whole.indexOf("</STMTTRN>") + 4, whole.indexOf("</BANKTRANLIST>"), whole.size() - 8})
            EXPECT_FALSE(readError(whole.left(cut), QStringLiteral("c.ofx")).isEmpty()) << cut;
    EXPECT_EQ(readError(xml.left(xml.indexOf("</BANKTRANLIST>")), QStringLiteral("c.ofx")),
              QStringLiteral("文件不完整：缺少 </OFX>。"));
    EXPECT_EQ(readError(xml.left(xml.lastIndexOf("</STMTTRN>")), QStringLiteral("c.ofx")),
              QStringLiteral("文件不完整：第 2 笔交易没有结束。"));
    QByteArray badAmount = xml;
    badAmount.replace("<TRNAMT>10.00", "<TRNAMT>1O.00");
    EXPECT_EQ(readError(badAmount, QStringLiteral("d.ofx")), QStringLiteral("第 1 笔交易（第 6 行）：金额“1O.00”不是数目。"));
}

TEST(StatementReader, ReadsCamt053EntriesAndTheClosingBalance)
{
    const QByteArray camt = R"(<?xml version="1.0" encoding="UTF-8"?>
<Document xmlns="urn:iso:std:iso:20022:tech:xsd:camt.053.001.08">
 <BkToCstmrStmt>
  <GrpHdr><MsgId>M1</MsgId><CreDtTm>2026-03-31T18:00:00</CreDtTm></GrpHdr>
  <Stmt>
   <Id>S1</Id>
   <Acct><Id><IBAN>CN1234567890</IBAN></Id><Ccy>CNY</Ccy></Acct>
   <Bal><Tp><CdOrPrtry><Cd>OPBD</Cd></CdOrPrtry></Tp><Amt Ccy="CNY">1000.00</Amt><CdtDbtInd>CRDT</CdtDbtInd><Dt><Dt>2026-03-01</Dt></Dt></Bal>
   <Bal><Tp><CdOrPrtry><Cd>CLBD</Cd></CdOrPrtry></Tp><Amt Ccy="CNY">1199.50</Amt><CdtDbtInd>CRDT</CdtDbtInd><Dt><Dt>2026-03-31</Dt></Dt></Bal>
   <Ntry>
    <NtryRef>N1</NtryRef><Amt Ccy="CNY">300.00</Amt><CdtDbtInd>CRDT</CdtDbtInd><Sts><Cd>BOOK</Cd></Sts>
    <BookgDt><Dt>2026-03-05</Dt></BookgDt><ValDt><Dt>2026-03-06</Dt></ValDt><AcctSvcrRef>BANK-001</AcctSvcrRef>
    <NtryDtls><TxDtls>
     <RltdPties><Dbtr><Pty><Nm>广州永达 &amp; 有限公司</Nm></Pty></Dbtr><DbtrAcct><Id><Othr><Id>6222000011</Id></Othr></Id></DbtrAcct>
      <Cdtr><Pty><Nm>我们自己</Nm></Pty></Cdtr></RltdPties>
     <RmtInf><Ustrd>发票 7</Ustrd><Ustrd>三月货款</Ustrd></RmtInf>
    </TxDtls></NtryDtls>
   </Ntry>
   <Ntry>
    <NtryRef>N2</NtryRef><Amt Ccy="CNY">100.50</Amt><CdtDbtInd>DBIT</CdtDbtInd>
    <BookgDt><DtTm>2026-03-07T09:30:00+08:00</DtTm></BookgDt>
    <NtryDtls><TxDtls><RltdPties><Dbtr><Nm>我们自己</Nm></Dbtr><Cdtr><Nm>李四物业</Nm></Cdtr>
      <CdtrAcct><Id><IBAN>CN99</IBAN></Id></CdtrAcct></RltdPties></TxDtls></NtryDtls>
    <AddtlNtryInf>房租</AddtlNtryInf>
   </Ntry>
  </Stmt>
 </BkToCstmrStmt>
</Document>
)";
    Statement st = readOk(camt, QStringLiteral("statement.xml"));
    EXPECT_EQ(st.format, QStringLiteral("camt.053"));
    EXPECT_EQ(st.account, QStringLiteral("CN1234567890"));
    expectLines(st, {{1, QDate(2026, 3, 5), In, "300", nullptr, "BANK-001", "广州永达 & 有限公司", "6222000011", "发票 7；三月货款"},
                     {2, QDate(2026, 3, 7), Out, "100.5", nullptr, "N2", "李四物业", "CN99", "房租"}});
    EXPECT_EQ(st.closingBalance, std::optional<Currency>(money("1199.5")));
    EXPECT_EQ(st.closingDate, QDate(2026, 3, 31));

    QByteArray bad = camt;
    bad.replace("<CdtDbtInd>DBIT</CdtDbtInd>", "<CdtDbtInd>DEBT</CdtDbtInd>");
    EXPECT_EQ(readError(bad, QStringLiteral("s.xml")), QStringLiteral("第 2 笔交易（第 19 行）：借贷标记“DEBT”不是 CRDT 或 DBIT。"));
    EXPECT_TRUE(readError(camt.left(camt.size() - 40), QStringLiteral("s.xml")).contains(QStringLiteral("XML 有错")));
}
