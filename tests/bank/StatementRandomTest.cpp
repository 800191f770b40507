#include "bank/StatementReader.h"
#include "QtPrinters.h"
#include "bank/BiffWriter.h"

#include <QFile>
#include <QTemporaryDir>

#include <QRandomGenerator>
#include <QStringEncoder>
#include <gtest/gtest.h>
#include <iostream>
#include <xlsxwriter.h>

using kx::Currency;
using kx::Statement;
using kx::StatementLine;
using kx::StatementReader;
using kx::StatementSide;

namespace {

quint32 seedFromEnvironment(const char *test)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::global()->generate();
    std::cout << test << " seed " << seed << " (KX_SEED repeats it)\n";
    return seed;
}

// Texts a bank puts in a memo or a name, with what a delimited file must
// quote: the delimiter, quotes, line breaks. No blanks at either end (cells
// are trimmed) and nothing a totals row starts with.
QString randomText(QRandomGenerator &rng, bool allowBreaks)
{
    static const QString pieces[] = {QStringLiteral("货款"), QStringLiteral("房租"), QStringLiteral("工资"),
                                     QStringLiteral("A-7"), QStringLiteral("李四"), QStringLiteral(","),
                                     QStringLiteral("\""), QStringLiteral("；"), QStringLiteral(" "),
                                     QStringLiteral("\t"), QStringLiteral("（代付）"), QStringLiteral("￥"),
                                     QStringLiteral("\n"), QStringLiteral("广州")};
    QString s;
    const int n = int(rng.bounded(5));
    for (int i = 0; i < n; ++i) {
        const QString &p = pieces[rng.bounded(int(std::size(pieces)))];
        if (p == QLatin1String("\n") && !allowBreaks)
            continue;
        s += p;
    }
    return s.trimmed();
}

QString amountText(QRandomGenerator &rng, Currency v)
{
    switch (rng.bounded(4)) {
    case 0: return v.toString();
    case 1: return v.format(QStringLiteral("#,##0.00"));
    case 2: return v.format(QStringLiteral("￥#,##0.00")); // the full-width sign GBK has
    default: return v.format(QStringLiteral("0.00"));
    }
}

struct Layout
{
    QStringList header;
    enum Kind { TwoColumns, BankColumns, SignedAmount, FlaggedAmount } kind;
};

} // namespace

// Random statements written as a bank would (header block, quoting where
// needed or not, GBK or UTF-8, CRLF or LF, totals below) read back equal.
TEST(StatementRandom, WrittenStatementsReadBackEqual)
{
    const quint32 seed = seedFromEnvironment("WrittenStatementsReadBackEqual");
    QRandomGenerator rng(seed);
    const Layout layouts[] = {
        {{QStringLiteral("交易日期"), QStringLiteral("收入金额"), QStringLiteral("支出金额"), QStringLiteral("余额"),
          QStringLiteral("交易流水号"), QStringLiteral("对方户名"), QStringLiteral("对方账号"), QStringLiteral("摘要")},
         Layout::TwoColumns},
        {{QStringLiteral("记账日期"), QStringLiteral("借方发生额"), QStringLiteral("贷方发生额"), QStringLiteral("余额"),
          QStringLiteral("凭证号"), QStringLiteral("对方名称"), QStringLiteral("对方账户"), QStringLiteral("用途")},
         Layout::BankColumns},
        {{QStringLiteral("交易时间"), QStringLiteral("交易金额"), QString(), QStringLiteral("账户余额"),
          QStringLiteral("流水号"), QStringLiteral("收(付)款人名称"), QStringLiteral("收(付)款人账号"), QStringLiteral("附言")},
         Layout::SignedAmount},
        {{QStringLiteral("日期"), QStringLiteral("发生额"), QStringLiteral("借贷方向"), QStringLiteral("当前余额"),
          QStringLiteral("交易参考号"), QStringLiteral("对方账户名"), QStringLiteral("对方账号"), QStringLiteral("备注")},
         Layout::FlaggedAmount},
    };
    for (int round = 0; round < 60; ++round) {
        const Layout &layout = layouts[rng.bounded(int(std::size(layouts)))];
        const bool useGbk = rng.bounded(2);
        const QString eol = rng.bounded(2) ? QStringLiteral("\r\n") : QStringLiteral("\n");
        const bool quoteAll = rng.bounded(3) == 0;
        int line = 1;
        QString text;
        auto quoted = [&](const QString &cell) {
            const bool needs = cell.contains(QLatin1Char(',')) || cell.contains(QLatin1Char('"'))
                               || cell.contains(QLatin1Char('\n'));
            if (!needs && !quoteAll)
                return cell;
            QString q = cell;
            q.replace(QLatin1String("\""), QLatin1String("\"\""));
            return QLatin1Char('"') + q + QLatin1Char('"');
        };
        auto writeRow = [&](const QStringList &cells) {
            QStringList out;
            for (const QString &c : cells) {
                out << quoted(c);
                line += int(c.count(QLatin1Char('\n')));
            }
            text += out.join(QLatin1Char(',')) + eol;
            ++line;
        };
        const QString account = QString::number(rng.bounded(100000000, 999999999));
        writeRow({QStringLiteral("账户明细查询")});
        writeRow({QStringLiteral("账号"), account});
        writeRow({QStringLiteral("户名：") + randomText(rng, false)});
        if (rng.bounded(2))
            writeRow({});
        writeRow(layout.header);

        QList<StatementLine> want;
        const int count = int(rng.bounded(0, 40));
        QDate date(2026, 1, 1);
        Currency balance = Currency::fromUnits(rng.bounded(100000));
        for (int i = 0; i < count; ++i) {
            StatementLine l;
            l.sourceLine = line;
            date = date.addDays(rng.bounded(3));
            l.date = date;
            l.side = rng.bounded(2) ? StatementSide::Receipt : StatementSide::Payment;
            l.amount = Currency::fromRaw(qint64(rng.bounded(1, 100000000)) * 100);
            balance += l.side == StatementSide::Receipt ? l.amount : -l.amount;
            if (rng.bounded(5))
                l.balance = balance;
            l.reference = QStringLiteral("T%1").arg(i);
            l.counterparty = randomText(rng, false);
            l.counterpartyAccount = rng.bounded(2) ? QString::number(rng.bounded(1000000)) : QString();
            l.memo = randomText(rng, true);
            QString dateText;
            switch (rng.bounded(4)) {
            case 0: dateText = date.toString(QStringLiteral("yyyy-MM-dd")); break;
            case 1: dateText = date.toString(QStringLiteral("yyyyMMdd")); break;
            case 2: dateText = date.toString(QStringLiteral("yyyy/M/d")) + QStringLiteral(" 10:22:01"); break;
            default: dateText = date.toString(QStringLiteral("yyyy年M月d日")); break;
            }
            const QString a = amountText(rng, l.amount);
            const bool in = l.side == StatementSide::Receipt;
            QStringList cells{dateText};
            switch (layout.kind) {
            case Layout::TwoColumns: cells << (in ? a : QString()) << (in ? QString() : a); break;
            case Layout::BankColumns: cells << (in ? QString() : a) << (in ? a : QString()); break;
            case Layout::SignedAmount: cells << (in ? a : QStringLiteral("-") + a) << QString(); break;
            case Layout::FlaggedAmount:
                cells << a << (in ? QStringLiteral("贷") : QStringLiteral("借"));
                break;
            }
            cells << (l.balance ? amountText(rng, *l.balance) : QString()) << l.reference << l.counterparty
                  << l.counterpartyAccount << l.memo;
            writeRow(cells);
            want << l;
        }
        if (rng.bounded(2))
            writeRow({QStringLiteral("合计"), QString(), QStringLiteral("笔数：%1").arg(count)});

        QByteArray bytes;
        if (useGbk) {
            QStringEncoder enc("GBK");
            bytes = enc.encode(text);
            ASSERT_FALSE(enc.hasError());
        } else {
            bytes = (rng.bounded(2) ? QByteArray("\xEF\xBB\xBF") : QByteArray()) + text.toUtf8();
        }
        kx::Result<Statement> r = StatementReader::read(bytes, QStringLiteral("random.csv"));
        ASSERT_TRUE(r.ok()) << r.error().toStdString() << " round " << round << " seed " << seed;
        const Statement &st = r.value();
        EXPECT_EQ(st.account, account) << "seed " << seed;
        ASSERT_EQ(st.lines.size(), want.size()) << "round " << round << " seed " << seed;
        for (qsizetype i = 0; i < want.size(); ++i) {
            const StatementLine &g = st.lines.at(i);
            const StatementLine &w = want.at(i);
            SCOPED_TRACE(testing::Message() << "round " << round << " line " << i << " seed " << seed);
            EXPECT_EQ(g.sourceLine, w.sourceLine);
            EXPECT_EQ(g.date, w.date);
            EXPECT_EQ(g.side, w.side);
            EXPECT_EQ(g.amount, w.amount);
            EXPECT_EQ(g.balance, w.balance);
            EXPECT_EQ(g.reference, w.reference);
            EXPECT_EQ(g.counterparty, w.counterparty);
            EXPECT_EQ(g.counterpartyAccount, w.counterpartyAccount);
            EXPECT_EQ(g.memo, w.memo);
        }
        EXPECT_TRUE(st.balanceBreaks.isEmpty()) << "seed " << seed;
    }
}

// Damaged files of every kind: each read ends with lines or a message,
// never a crash; lines that come back are whole.
TEST(StatementRandom, DamagedFilesGiveLinesOrAMessage)
{
    const quint32 seed = seedFromEnvironment("DamagedFilesGiveLinesOrAMessage");
    QRandomGenerator rng(seed);
    QStringEncoder enc("GBK");
    const QByteArray csv = enc.encode(QStringLiteral(
        "账号：6222\r\n交易日期,摘要,收入金额,支出金额,余额,对方户名\r\n"
        "2026-03-02,\"货款,三月\",\"￥1,234.56\",,1234.56,永达\r\n20260303,房租,,300,934.56,李四\r\n"
        "合计,,1234.56,300,,\r\n"));
    const QByteArray ofx =
        "OFXHEADER:100\nDATA:OFXSGML\n\n<OFX><BANKMSGSRSV1><STMTTRNRS><STMTRS><BANKACCTFROM><ACCTID>1</BANKACCTFROM>"
        "<BANKTRANLIST><STMTTRN><DTPOSTED>20260302<TRNAMT>-1.50<FITID>F1<NAME>A &amp; B</STMTTRN>"
        "</BANKTRANLIST><LEDGERBAL><BALAMT>3<DTASOF>20260303</LEDGERBAL></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>\n";
    const QByteArray camt =
        "<Document xmlns=\"urn:iso:std:iso:20022:tech:xsd:camt.053.001.02\"><BkToCstmrStmt><Stmt>"
        "<Acct><Id><IBAN>CN1</IBAN></Id></Acct><Ntry><Amt Ccy=\"CNY\">5.00</Amt><CdtDbtInd>CRDT</CdtDbtInd>"
        "<BookgDt><Dt>2026-03-05</Dt></BookgDt><AcctSvcrRef>R</AcctSvcrRef></Ntry></Stmt></BkToCstmrStmt></Document>";
    kxtest::BiffWriter xls;
    xls.text(0, 0, QStringLiteral("交易日期"));
    xls.text(0, 1, QStringLiteral("金额"));
    xls.text(0, 2, QStringLiteral("摘要"));
    xls.date(1, 0, 46086);
    xls.number(1, 1, -12.5);
    xls.text(1, 2, QStringLiteral("货款"));
    kxtest::BiffWriter smallXls = xls;
    smallXls.setSmallStream(true);
    QTemporaryDir dir;
    const QByteArray xlsxPath = QFile::encodeName(dir.filePath(QStringLiteral("a.xlsx")));
    lxw_workbook *wb = workbook_new(xlsxPath.constData());
    lxw_worksheet *ws = workbook_add_worksheet(wb, nullptr);
    worksheet_write_string(ws, 0, 0, "交易日期", nullptr);
    worksheet_write_string(ws, 0, 1, "金额", nullptr);
    worksheet_write_number(ws, 1, 0, 46086, nullptr);
    worksheet_write_number(ws, 1, 1, 12.5, nullptr);
    ASSERT_EQ(workbook_close(wb), LXW_NO_ERROR);
    QFile xlsxFile(QFile::decodeName(xlsxPath));
    ASSERT_TRUE(xlsxFile.open(QIODevice::ReadOnly));
    const struct { QByteArray bytes; const char *name; } originals[] = {
        {csv, "a.csv"}, {ofx, "a.ofx"}, {camt, "a.xml"}, {xls.bytes(), "a.xls"}, {smallXls.bytes(), "a.xls"},
        {xlsxFile.readAll(), "a.xlsx"}};
    for (const auto &original : originals) {
        ASSERT_TRUE(StatementReader::read(original.bytes, QLatin1String(original.name)).ok()) << original.name;
        for (int round = 0; round < 400; ++round) {
            QByteArray b = original.bytes;
            const int edits = 1 + int(rng.bounded(4));
            for (int e = 0; e < edits && !b.isEmpty(); ++e) {
                const qsizetype at = rng.bounded(int(b.size()));
                switch (rng.bounded(4)) {
                case 0: b[at] = char(rng.bounded(256)); break;
                case 1: b.remove(at, 1 + rng.bounded(8)); break;
                case 2: b.insert(at, b.mid(rng.bounded(int(b.size())), rng.bounded(12))); break;
                default: b.truncate(at); break;
                }
            }
            kx::Result<Statement> r = StatementReader::read(b, QLatin1String(original.name));
            if (!r.ok()) {
                EXPECT_FALSE(r.error().isEmpty());
                continue;
            }
            for (const StatementLine &l : r.value().lines) {
                EXPECT_TRUE(l.date.isValid()) << original.name << " seed " << seed << " round " << round;
                EXPECT_GT(l.amount, Currency()) << original.name << " seed " << seed << " round " << round;
            }
        }
    }
}
