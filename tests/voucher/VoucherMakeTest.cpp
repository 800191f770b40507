// Making a voucher exchange file of selected records, read back by the
// file's own reader.
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>
#include <kxjournal/VoucherFile.h>

#include <QDir>
#include <QSignalSpy>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kx::Currency;
using kx::Voucher;
using kxtest::BookBuilder;
using kxtest::EditingBook;
using kxtest::Engine;

namespace {

// The bank book kept for the ICBC account, in January 2025, beside vouchers
// of January (记 5 and 9, 收 40) and February (记 30).
struct MakingBook : EditingBook {
    explicit MakingBook(Engine engine) : EditingBook(engine)
    {
        const kx::Database db = this->db->open();
        EXPECT_TRUE(kx::sqlRun(db, {QStringLiteral("Update kxJournal Set Address=? Where asID=%1").arg(book),
                            {QStringLiteral("银行|%1").arg(icbc)}})
                        .ok());
        BookBuilder v(db);
        v.voucher(QStringLiteral("2025-01-08"), QStringLiteral("记"), 5);
        v.voucher(QStringLiteral("2025-01-20"), QStringLiteral("记"), 9);
        v.voucher(QStringLiteral("2025-01-10"), QStringLiteral("收"), 40);
        v.voucher(QStringLiteral("2025-02-03"), QStringLiteral("记"), 30);
        acc->setCurPeriod(QStringLiteral("202501"));
        acc->setDocTypes(QStringLiteral("记|收|付|转"));
        acc->setUserName(QStringLiteral("张三"));
        acc->setDirectorName(QStringLiteral("王会计"));
        journal->Load(book);
        journal->setVoucherFolder(folder.path());
        QObject::connect(journal.get(), &kx::Journal::AfterMaked, [this](const QString &p) { made << p; });
    }
    void selectRows(int first, int last) const { grid->select(first, col("Explain"), last, col("Explain")); }
    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files); }
    Voucher readBack() const
    {
        const kx::Result<Voucher> v = kx::VoucherFile::read(made.value(0));
        EXPECT_TRUE(v.ok()) << qPrintable(v.ok() ? QString() : v.error());
        return v.valueOr(Voucher());
    }

    QTemporaryDir folder;
    QStringList made;  ///< every AfterMaked path
};

class VoucherMaking : public ::testing::TestWithParam<Engine>
{
};

Currency money(int units) { return Currency::fromUnits(units); }

} // namespace

TEST_P(VoucherMaking, TheFileCarriesEverySelectedRecordAndBalances)
{
    MakingBook b(GetParam());
    b.selectRows(1, 5);  // the opening row and the empty row count, but make no line
    ASSERT_TRUE(b.journal->Make()) << qPrintable(b.said.join(QLatin1Char('\n')));
    ASSERT_EQ(b.made.size(), 1);
    const QFileInfo file(b.made.first());
    EXPECT_EQ(file.absolutePath(), QDir(b.folder.path()).absolutePath());
    EXPECT_EQ(file.fileName(), file.fileName().toLower());
    EXPECT_TRUE(file.fileName().endsWith(QLatin1String(".kxe")));

    QFile raw(b.made.first());
    ASSERT_TRUE(raw.open(QIODevice::ReadOnly));
    QStringDecoder gbk("GBK");
    const QString text = gbk.decode(raw.readAll());
    EXPECT_TRUE(text.contains(QStringLiteral("<AccName>应收账款</AccName>\r\n")));
    EXPECT_TRUE(text.contains(QStringLiteral("<Inputor>张三</Inputor>\r\n")));

    const Voucher v = b.readBack();
    EXPECT_EQ(v.docNo, 10) << "one above the period's highest 记";
    EXPECT_EQ(v.docType, QStringLiteral("记"));
    EXPECT_TRUE(QList<QDate>({QDate(2025, 1, 8), QDate(2025, 1, 20), QDate(2025, 1, 10)}).contains(v.docDate))
        << qPrintable(v.docDate.toString(Qt::ISODate));
    EXPECT_EQ(v.addQty, 5);
    EXPECT_EQ(v.director, QStringLiteral("王会计"));
    ASSERT_EQ(v.lines.size(), 4);
    // A debit book: each counter account takes the record's amount on the other side.
    EXPECT_EQ(v.lines.at(0).accCode, QStringLiteral("1122"));
    EXPECT_EQ(v.lines.at(0).credit, money(500));
    EXPECT_EQ(v.lines.at(1).debit, money(200));
    EXPECT_EQ(v.lines.at(2).debit, money(50));
    EXPECT_EQ(v.lines.at(2).explain, QStringLiteral("报销差旅费"));
    EXPECT_EQ((QList<int>{v.lines.at(0).row, v.lines.at(1).row, v.lines.at(2).row, v.lines.at(3).row}),
              (QList<int>{1, 2, 3, 3}));
    const Voucher::Line &own = v.lines.last();
    EXPECT_EQ(own.accCode, QStringLiteral("100201"));
    EXPECT_EQ(own.accId, QString::number(b.icbc));
    EXPECT_EQ(own.debit, money(250));
    EXPECT_EQ(own.credit, money(0));
    EXPECT_EQ(own.forex, money(250));
    // The voucher's sums are the selected records' sums, and equal.
    EXPECT_EQ(v.debitTotal(), v.creditTotal());
    EXPECT_EQ(v.debitTotal(), money(500));
    EXPECT_FALSE(b.journal->IsDirty()) << "making a voucher changes no record";
}

TEST_P(VoucherMaking, ACreditBookKeepsTheRecordsSides)
{
    MakingBook b(GetParam());
    ASSERT_TRUE(
        kx::sqlRun(b.db->open(), {QStringLiteral("Update kxJournal Set ZipCode=? Where asID=%1").arg(b.book), {QStringLiteral("贷")}}).ok());
    ASSERT_TRUE(b.journal->Load());
    b.selectRows(3, 3);
    ASSERT_TRUE(b.journal->Make());
    const Voucher v = b.readBack();
    ASSERT_EQ(v.lines.size(), 2);
    EXPECT_EQ(v.lines.at(0).debit, money(0));
    EXPECT_EQ(v.lines.at(0).credit, money(200));
    EXPECT_EQ(v.lines.at(1).debit, money(200));
    EXPECT_EQ(v.lines.at(1).credit, money(0));
    EXPECT_EQ(v.lines.at(1).forex, money(-200));

    // Without voucher types the number counts over every type of the period.
    b.acc->setDocTypes(QString());
    b.made.clear();
    ASSERT_TRUE(b.journal->Make());
    const Voucher untyped = b.readBack();
    EXPECT_EQ(untyped.docType, QString());
    EXPECT_EQ(untyped.docNo, 41);
}

TEST_P(VoucherMaking, NothingIsWrittenWhenTheVoucherCannotBeMade)
{
    MakingBook b(GetParam());
    QString veto;
    QObject::connect(b.journal.get(), &kx::Journal::CommandExecute, [&](const QString &c, bool &cancel) {
        cancel = c == veto;
    });
    b.selectRows(2, 4);

    veto = QStringLiteral("MakeAccDoc");
    EXPECT_FALSE(b.journal->Make());
    veto.clear();

    // The opening balance and the empty row are no records, whatever the relative account.
    b.journal->setRelativeAccID(b.bank);
    for (int row : {1, 5}) {
        b.said.clear();
        b.selectRows(row, row);
        EXPECT_FALSE(b.journal->Make());
        EXPECT_EQ(b.said, QStringList{QStringLiteral("未找到生成凭证的记录，未能生成记账凭证。")}) << row;
    }
    b.journal->setRelativeAccID(0);

    // Without a period there is no voucher date or number to give.
    const QDate end = b.acc->PeriodEnd();
    b.acc->setPeriodEnd(QDate());
    b.said.clear();
    b.selectRows(2, 4);
    EXPECT_FALSE(b.journal->Make());
    EXPECT_EQ(b.said, QStringList{QStringLiteral("没有设定当前会计期间，未能生成记账凭证。")});
    b.acc->setPeriodEnd(end);

    b.grid->setText(3, b.col("Explain"), QStringLiteral("付材料款😀"));
    b.selectRows(2, 4);
    b.said.clear();
    EXPECT_FALSE(b.journal->Make());
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said.first().startsWith(QStringLiteral("第3行记录的摘要“付材料款😀”"))) << qPrintable(b.said.first());
    EXPECT_TRUE(b.said.first().contains(QStringLiteral("GBK")));
    b.grid->setText(3, b.col("Explain"), QStringLiteral("付材料款"));

    BookBuilder(b.db->open()).voucher(QStringLiteral("2025-01-31"), QStringLiteral("记"), 32767);
    b.said.clear();
    EXPECT_FALSE(b.journal->Make());
    ASSERT_EQ(b.said.size(), 1);
    EXPECT_TRUE(b.said.first().contains(QStringLiteral("32767"))) << qPrintable(b.said.first());

    EXPECT_TRUE(b.files().isEmpty()) << qPrintable(b.files().join(QLatin1Char(' ')));
    EXPECT_TRUE(b.made.isEmpty());

    // Another code page is the host's choice; a name nobody knows is refused.
    b.journal->setVoucherCodec(QStringLiteral("no-such-codec"));
    EXPECT_EQ(b.journal->voucherCodec(), QStringLiteral("GBK"));
    b.journal->setVoucherCodec(QStringLiteral("UTF-8"));
    b.acc->setDocTypes(QStringLiteral("收"));
    ASSERT_TRUE(b.journal->Make());
    EXPECT_EQ(kx::VoucherFile::read(b.made.first(), QStringLiteral("UTF-8")).value().docNo, 41);
}

TEST_P(VoucherMaking, TheVoucherItemMakesOneForARowWithoutALink)
{
    MakingBook b(GetParam());
    b.selectRows(2, 2);
    kxtest::runMenuItem(*b.journal, "mnuAccDoc");
    ASSERT_EQ(b.made.size(), 1);
    EXPECT_EQ(b.readBack().lines.size(), 2);
    kxtest::runMenuItem(*b.journal, "mnuMakeDoc");
    EXPECT_EQ(b.made.size(), 2);
    EXPECT_NE(b.made.at(0), b.made.at(1)) << "each voucher gets a file of its own";
}

INSTANTIATE_TEST_SUITE_P(Engines, VoucherMaking, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
