#include <kxjournal/VoucherFile.h>

#include <QRandomGenerator>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

using kx::Currency;
using kx::Voucher;
using kx::VoucherFile;

namespace {

Currency money(const char *text) { return Currency::fromText(QString::fromUtf8(text)).value(); }

// A voucher whose texts hold everything a record may: markup, Chinese,
// blanks, a closing tag of its own element, negative amounts.
Voucher sample()
{
    Voucher v;
    v.docDate = QDate(2025, 1, 31);
    v.docType = QStringLiteral("记");
    v.docNo = 32767;
    v.addQty = 5;
    v.inputor = QStringLiteral("张三");
    v.director = QStringLiteral("王会计");
    Voucher::Line a;
    a.explain = QStringLiteral("收到 <华南> & 公司</Explain>货款");
    a.accName = QStringLiteral("应收账款");
    a.accCode = QStringLiteral("1122");
    a.credit = money("1250.5");
    a.rate = money("6.8975");
    a.forex = money("-40");
    a.field1 = QStringLiteral("合同 A-7");
    a.accId = QStringLiteral("12");
    a.row = 1;
    Voucher::Line own;
    own.accName = QStringLiteral("工商银行");
    own.accCode = QStringLiteral("100201");
    own.debit = money("1250.5");
    own.forex = money("1250.5");
    own.accId = QStringLiteral("3");
    own.row = 1;
    v.lines << a << own;
    return v;
}

QByteArray encoded(const Voucher &v = sample())
{
    const kx::Result<QByteArray> bytes = VoucherFile::encode(v);
    EXPECT_TRUE(bytes.ok()) << qPrintable(bytes.ok() ? QString() : bytes.error());
    return bytes.valueOr(QByteArray());
}

QStringList gbkLines(const QByteArray &bytes)
{
    QStringDecoder gbk("GBK");
    QString text = gbk.decode(bytes);
    EXPECT_TRUE(text.endsWith(QLatin1String("\r\n")));
    text.chop(2);
    return text.split(QStringLiteral("\r\n"));
}

} // namespace

TEST(VoucherFile, WritesOneElementALineInTheFixedOrder)
{
    const QByteArray bytes = encoded();
    EXPECT_EQ(bytes.count('\n'), bytes.count("\r\n")) << "every line ends with CR LF";
    const QStringList lines = gbkLines(bytes);
    const QStringList head{"<Voucher>",           "<DocDate>2025-01-31</DocDate>", "<DocType>记</DocType>",
                           "<DocNo>32767</DocNo>", "<AddQty>5</AddQty>",           "<Inputor>张三</Inputor>",
                           "<InputDate>0</InputDate>", "<Audit></Audit>",          "<AuditDate>0</AuditDate>",
                           "<Director>王会计</Director>", "<Cashier></Cashier>",   "<Payee></Payee>", "<Row>"};
    ASSERT_GE(lines.size(), head.size());
    EXPECT_EQ(lines.mid(0, head.size()), head);
    const QStringList names{"Explain", "AccName",  "AccCode",  "Debit",    "Credit",    "Rate",    "Forex",  "Price",
                            "Quantity", "Branch",  "Organization", "Field1", "Field2",  "Field3",  "Field4", "brID",
                            "pjID",    "AccID",    "RecID",    "DocID",    "Row",       "BookFmt", "Fld1Name",
                            "Fld2Name", "Fld3Name", "Fld4Name", "ForexName", "Measure", "DocLvl",  "tRecID"};
    const QStringList firstRow = lines.mid(head.size(), 30);
    for (int i = 0; i < names.size(); ++i)
        EXPECT_TRUE(firstRow.value(i).startsWith(QLatin1Char('<') + names.at(i) + QLatin1Char('>'))) << i;
    EXPECT_EQ(firstRow.at(0), QStringLiteral("<Explain>收到 <华南> & 公司</Explain>货款</Explain>")) << "no escaping";
    EXPECT_EQ(firstRow.at(3), QStringLiteral("<Debit>0</Debit>"));
    EXPECT_EQ(firstRow.at(4), QStringLiteral("<Credit>1250.5</Credit>"));
    EXPECT_EQ(firstRow.at(6), QStringLiteral("<Forex>-40</Forex>"));
    EXPECT_EQ(lines.at(head.size() + 30), QStringLiteral("</Row>"));
    EXPECT_EQ(lines.last(), QStringLiteral("</Voucher>"));
    EXPECT_EQ(lines.size(), head.size() + 31 + 32 + 1);
}

TEST(VoucherFile, ReadsBackWhatItWrote)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("v.kxe"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(encoded());
    file.close();
    const kx::Result<Voucher> back = VoucherFile::read(path);
    ASSERT_TRUE(back.ok()) << qPrintable(back.error());
    EXPECT_TRUE(back.value() == sample());
    EXPECT_EQ(back.value().lines.at(0).explain, sample().lines.at(0).explain);
    EXPECT_EQ(back.value().debitTotal(), back.value().creditTotal());

    // Another code page is a choice of the host; the file reads back in it.
    const kx::Result<QByteArray> utf8 = VoucherFile::encode(sample(), QStringLiteral("UTF-8"));
    ASSERT_TRUE(utf8.ok());
    EXPECT_TRUE(VoucherFile::decode(utf8.value(), QStringLiteral("UTF-8")).value() == sample());
    EXPECT_TRUE(VoucherFile::decode("\xEF\xBB\xBF" + utf8.value(), QStringLiteral("UTF-8")).ok()) << "an editor's mark";
    EXPECT_FALSE(VoucherFile::encode(sample(), QStringLiteral("no-such-codec")).ok());
    EXPECT_FALSE(VoucherFile::read(dir.filePath(QStringLiteral("missing.kxe"))).ok());
}

// Only a regular file of a size a voucher can have is read: a device, a
// pipe or a huge file is refused at once, saying why, without reading it.
TEST(VoucherFile, ReadsOnlyARegularFileOfAVouchersSize)
{
    const kx::Result<Voucher> zero = VoucherFile::read(QStringLiteral("/dev/zero"));
    ASSERT_FALSE(zero.ok());
    EXPECT_TRUE(zero.error().contains(QStringLiteral("不是普通文件"))) << qPrintable(zero.error());

    QTemporaryDir dir;
    const QString fifo = dir.filePath(QStringLiteral("pipe.kxe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    const kx::Result<Voucher> pipe = VoucherFile::read(fifo);  // would wait for a writer forever if opened
    ASSERT_FALSE(pipe.ok());
    EXPECT_TRUE(pipe.error().contains(QStringLiteral("不是普通文件"))) << qPrintable(pipe.error());

    const kx::Result<Voucher> folder = VoucherFile::read(dir.path());
    ASSERT_FALSE(folder.ok());
    EXPECT_TRUE(folder.error().contains(QStringLiteral("不是普通文件"))) << qPrintable(folder.error());

    // One byte beyond the limit (a sparse file: nothing is written to disk).
    const QString huge = dir.filePath(QStringLiteral("huge.kxe"));
    QFile file(huge);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(encoded());
    ASSERT_TRUE(file.resize(VoucherFile::MaxFileBytes + 1));
    file.close();
    const kx::Result<Voucher> big = VoucherFile::read(huge);
    ASSERT_FALSE(big.ok());
    EXPECT_TRUE(big.error().contains(QStringLiteral("64 MB"))) << qPrintable(big.error());

    // A link to a voucher file is read like the file.
    const QString real = dir.filePath(QStringLiteral("real.kxe"));
    QFile good(real);
    ASSERT_TRUE(good.open(QIODevice::WriteOnly));
    good.write(encoded());
    good.close();
    const QString link = dir.filePath(QStringLiteral("link.kxe"));
    ASSERT_TRUE(QFile::link(real, link));
    EXPECT_TRUE(VoucherFile::read(link).ok());
}

TEST(VoucherFile, RefusesWhatTheCodePageCannotHoldAndKeepsLinesWhole)
{
    Voucher v = sample();
    v.lines[0].field2 = QStringLiteral("备注😀");
    const kx::Result<QByteArray> bytes = VoucherFile::encode(v);
    ASSERT_FALSE(bytes.ok());
    EXPECT_TRUE(bytes.error().contains(QStringLiteral("Field2"))) << qPrintable(bytes.error());
    EXPECT_TRUE(bytes.error().contains(QStringLiteral("😀")));
    EXPECT_EQ(VoucherFile::unencodable(QStringLiteral("a😀b𠮷"), QStringLiteral("GBK")), QStringLiteral("😀"));
    EXPECT_EQ(VoucherFile::unencodable(QStringLiteral("收款€"), QStringLiteral("GBK")), QString());
    // Half a surrogate pair is no character in any code page.
    v.lines[0].field2 = QStringLiteral("备注") + QChar(0xD83D);
    EXPECT_FALSE(VoucherFile::encode(v).ok());
    EXPECT_FALSE(VoucherFile::encode(v, QStringLiteral("UTF-8")).ok());

    v = sample();
    v.lines[0].explain = QStringLiteral("第一行\r\n第二行\n第三行");
    const Voucher back = VoucherFile::decode(encoded(v)).value();
    EXPECT_EQ(back.lines.at(0).explain, QStringLiteral("第一行 第二行 第三行"));
}

TEST(VoucherFile, NamesTheLineOfAMalformedFile)
{
    const QStringList good = gbkLines(encoded());
    struct Case {
        const char *what;
        std::function<QStringList(QStringList)> change;
        int line;
    };
    const Case cases[] = {
        {"empty", [](QStringList) { return QStringList{QString()}; }, 1},
        {"no voucher tag", [](QStringList l) { l[0] = QStringLiteral("<Voucher"); return l; }, 1},
        {"bad date", [](QStringList l) { l[1] = QStringLiteral("<DocDate>2025/01/31</DocDate>"); return l; }, 2},
        {"number past 16 bits", [](QStringList l) { l[3] = QStringLiteral("<DocNo>32768</DocNo>"); return l; }, 4},
        {"element out of order", [](QStringList l) { l.swapItemsAt(5, 6); return l; }, 6},
        {"closing tag of another name", [](QStringList l) { l[13] = QStringLiteral("<Explain>x</Explan>"); return l; }, 14},
        {"amount with five decimals", [](QStringList l) { l[16] = QStringLiteral("<Debit>1.23456</Debit>"); return l; }, 17},
        {"amount with a separator", [](QStringList l) { l[17] = QStringLiteral("<Credit>1,250.5</Credit>"); return l; }, 18},
        {"row not closed", [](QStringList l) { l.removeAt(43); return l; }, 44},
        {"cut short", [](QStringList l) { return l.mid(0, 20); }, 21},
        {"text after the end", [](QStringList l) { l << QStringLiteral("<Voucher>"); return l; }, 78},
    };
    for (const Case &c : cases) {
        const QStringList lines = c.change(good);
        QStringEncoder gbk("GBK");
        const QByteArray bytes = gbk.encode(lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
        const kx::Result<Voucher> read = VoucherFile::decode(bytes);
        ASSERT_FALSE(read.ok()) << c.what;
        EXPECT_TRUE(read.error().startsWith(QStringLiteral("第%1行：").arg(c.line))) << c.what << ": " << qPrintable(read.error());
    }
    QByteArray badBytes = encoded();
    badBytes.insert(badBytes.indexOf("<Inputor>") + 9, "\x81\x20");
    const kx::Result<Voucher> undecodable = VoucherFile::decode(badBytes);
    ASSERT_FALSE(undecodable.ok());
    EXPECT_TRUE(undecodable.error().startsWith(QStringLiteral("第6行："))) << qPrintable(undecodable.error());
    // Bare line feeds are read as well as CR LF.
    QByteArray unix = encoded();
    unix.replace("\r\n", "\n");
    EXPECT_TRUE(VoucherFile::decode(unix).ok());
}

// Any bytes at all: a verdict, never a crash. Four runs of their own (ctest
// runs them side by side); the seed is printed, and KX_SEED repeats a run.
class VoucherFileFuzz : public ::testing::TestWithParam<int>
{
};

TEST_P(VoucherFileFuzz, TakesAnyInputWithoutCrashing)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::system()->generate();
    std::printf("voucher file fuzz seed %u\n", seed);
    QRandomGenerator rng(seed);
    const QByteArray good = encoded();
    const QList<QByteArray> pieces{"<", ">", "</", "\r\n", "\n", "Row", "Voucher", "-", ".", "99999", "\xb5", "\xff", "\x80\x30"};
    const int rounds = qEnvironmentVariableIsSet("KX_FUZZ_ROUNDS") ? qEnvironmentVariableIntValue("KX_FUZZ_ROUNDS") : 75000;
    int accepted = 0;
    for (int i = 0; i < rounds; ++i) {
        QByteArray bytes = good;
        const int edits = 1 + int(rng.bounded(4));
        for (int e = 0; e < edits && !bytes.isEmpty(); ++e) {
            const int at = int(rng.bounded(bytes.size()));
            switch (rng.bounded(5)) {
            case 0: bytes[at] = char(rng.bounded(256)); break;
            case 1: bytes.remove(at, 1 + int(rng.bounded(8))); break;
            case 2: bytes.insert(at, pieces.at(int(rng.bounded(pieces.size())))); break;
            case 3: bytes.truncate(at); break;
            default: {
                const int from = int(rng.bounded(bytes.size()));
                bytes.insert(at, bytes.mid(from, 1 + int(rng.bounded(40))));
            }
            }
        }
        const kx::Result<Voucher> read = VoucherFile::decode(bytes);
        if (read.ok()) {
            ++accepted;
            // Whatever is accepted writes back to a file that reads the same.
            const kx::Result<QByteArray> again = VoucherFile::encode(read.value());
            ASSERT_TRUE(again.ok()) << "seed " << seed << " round " << i;
            ASSERT_TRUE(VoucherFile::decode(again.value()).value() == read.value()) << "seed " << seed << " round " << i;
        } else {
            ASSERT_TRUE(read.error().startsWith(QStringLiteral("第"))) << qPrintable(read.error());
        }
    }
    EXPECT_GT(accepted, 0);
}

INSTANTIATE_TEST_SUITE_P(Runs, VoucherFileFuzz, ::testing::Range(0, 4));
