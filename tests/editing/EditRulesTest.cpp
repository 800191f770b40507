// What typing into each column does: the checks with their messages, and
// what the row becomes after the change is stored.
#include "QtPrinters.h"
#include "editing/EditingBook.h"

#include <kxjournal/Currency.h>
#include <kxjournal/Database.h>
#include <kxjournal/EditCycle.h>

#include <QSignalSpy>
#include <gtest/gtest.h>
#include <vector>

using kxtest::EditingBook;

TEST(EditRules, AmountsTakeNumbersAndFormulasAndExcludeEachOther)
{
    EditingBook b;
    EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("12*3+4")));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("40"));
    EXPECT_EQ(b.text(3, "Balance"), QStringLiteral("1460")) << "balances follow at once";
    EXPECT_EQ(b.text(4, "Balance"), QStringLiteral("1410"));
    EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("10/3")));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("3.33"));
    EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("1.005")));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("1.005")) << "a number is kept as typed";
    EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("0.1+0.2")));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("0.3"));
    EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("12a*3"))) << "letters never reach the cell";
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("36"));

    EXPECT_TRUE(b.type(3, "Debit", QStringLiteral("0")));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("36")) << "a 0 leaves the other side alone";
    EXPECT_TRUE(b.type(3, "Debit", QStringLiteral("100")));
    EXPECT_EQ(b.text(3, "Credit"), QString());
    EXPECT_EQ(b.text(3, "Balance"), QStringLiteral("1600"));

}

TEST(EditRules, RateAndForeignAmountFollowTheSide)
{
    EditingBook b;
    ASSERT_TRUE(b.type(2, "Rate", QStringLiteral("6.8")));
    EXPECT_EQ(b.text(2, "Forex"), QStringLiteral("3400")) << "rate × debit";
    EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("10")));
    EXPECT_EQ(b.text(3, "Rate"), QStringLiteral("6.8")) << "carried down from the row above";
    EXPECT_EQ(b.text(3, "Forex"), QStringLiteral("-68"));

    ASSERT_TRUE(b.type(4, "Forex", QStringLiteral("30")));
    ASSERT_TRUE(b.type(4, "Credit", QStringLiteral("60")));
    EXPECT_EQ(b.text(4, "Forex"), QStringLiteral("-30")) << "a foreign amount typed first takes the credit's sign";

    ASSERT_TRUE(b.type(3, "Rate", QStringLiteral("1/8")));
    EXPECT_EQ(b.text(3, "Rate"), QStringLiteral("0.125")) << "a rate keeps four places";

    ASSERT_TRUE(b.type(2, "Forex", QStringLiteral("7")));
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("5")));
    ASSERT_TRUE(b.type(2, "Rate", QStringLiteral("2")));
    EXPECT_EQ(b.text(2, "Forex"), QStringLiteral("10")) << "a new rate works the foreign amount out again";
}

TEST(EditRules, DatesAreReadInShortFormsAndHeldToTheOpenMonths)
{
    EditingBook b;
    EXPECT_TRUE(b.type(3, "ShowName", QStringLiteral("0112")));
    EXPECT_EQ(b.text(3, "JnlDate"), QStringLiteral("2025-01-12"));
    EXPECT_EQ(b.text(3, "ShowName"), QStringLiteral("2025年01月12日"));
    EXPECT_TRUE(b.type(3, "ShowName", QStringLiteral("20")));
    EXPECT_EQ(b.text(3, "JnlDate"), QStringLiteral("2025-01-20"));

    b.said.clear();
    EXPECT_FALSE(b.type(3, "ShowName", QStringLiteral("2026-03-01")));
    EXPECT_EQ(b.said, QStringList{QStringLiteral("输入的日期错误；")});
    EXPECT_FALSE(b.type(3, "ShowName", QStringLiteral("日期")));
    EXPECT_EQ(b.said.size(), 2);
    EXPECT_EQ(b.said.last(), QStringLiteral("输入的日期错误；")) << "text that is no date is refused as a paste refuses it";
    EXPECT_EQ(b.text(3, "JnlDate"), QStringLiteral("2025-01-20"));

    EXPECT_FALSE(b.type(1, "ShowName", QStringLiteral("2024-12-30"))) << "the opening row is closed";

    // Below a month's summary row only later months may be typed.
    ASSERT_TRUE(b.journal->InsSumRow(4));
    const int below = b.grid->rows() - 1;
    EXPECT_FALSE(b.type(below, "ShowName", QStringLiteral("2025-01-31")));
}

TEST(EditRules, AccountsAreFoundByCodeNameEntryCodePathAndInitials)
{
    EditingBook b;
    EXPECT_EQ(b.journal->FindAccID(QStringLiteral("1122")), b.receivable) << "a code wins over a name";
    EXPECT_EQ(b.journal->FindAccID(QStringLiteral("管理费用")), b.expenses);
    EXPECT_EQ(b.journal->FindAccID(QStringLiteral("yszk")), b.receivable);
    EXPECT_EQ(b.journal->FindAccID(QStringLiteral("没有的科目")), 0);
    EXPECT_EQ(b.journal->FindAccID(QStringLiteral("x' Or '1'='1")), 0);
    EXPECT_EQ(b.journal->findAccountByPath(QStringLiteral("应付账款/工商银行")), b.payableIcbc);
    EXPECT_EQ(b.journal->findAccountByPath(QStringLiteral("银行存款\\工商银行")), b.icbc);
    EXPECT_EQ(b.journal->findAccountByPath(QStringLiteral("银行存款_工商银行")), b.icbc);

    QSignalSpy changed(b.journal.get(), &kx::Journal::CommandExecute);
    EXPECT_TRUE(b.type(2, "AccName", QStringLiteral("yhck"))) << "pinyin initials, no entry code in the chart";
    EXPECT_EQ(b.journal->AccID(2), b.bank);
    EXPECT_EQ(b.text(2, "AccName"), QStringLiteral("银行存款"));
    EXPECT_EQ(b.text(2, "AccCode"), QStringLiteral("1002"));
    ASSERT_FALSE(changed.isEmpty());
    EXPECT_EQ(changed.last().at(0).toString(), QStringLiteral("AccNameChanged"));
    EXPECT_TRUE(b.type(2, "AccName", QStringLiteral("jsyh")));
    EXPECT_EQ(b.journal->AccID(2), b.ccb);

    EXPECT_FALSE(b.type(2, "AccName", QStringLiteral("qqqq")));
    EXPECT_EQ(b.journal->AccID(2), b.ccb) << "a refused account leaves the row's account as it was";
    EXPECT_EQ(b.text(2, "AccName"), QStringLiteral("建设银行"));
}

TEST(EditRules, AccountsAreFoundOnPostgresAsOnSqlite)
{
    EditingBook b(kxtest::Engine::Postgres);
    EXPECT_EQ(b.journal->FindAccID(QStringLiteral("1122")), b.receivable);
    EXPECT_EQ(b.journal->findAccountByPath(QStringLiteral("应付账款.工商银行")), b.payableIcbc);
    EXPECT_TRUE(b.type(2, "AccName", QStringLiteral("yh")));
    EXPECT_EQ(b.journal->AccID(2), b.bank);
    EXPECT_TRUE(b.type(2, "Debit", QStringLiteral("(1+2)*3")));
    EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("9"));
}

TEST(EditRules, ExplanationsAreRememberedOnceAndOffered)
{
    EditingBook b;
    EXPECT_TRUE(b.type(2, "Explain", QStringLiteral("收\t到\r\n货款\u0007（补）")));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收 到 货款（补）"))
        << "a tab or a line break becomes a blank; other control characters go";
    EXPECT_TRUE(b.type(3, "Explain", QStringLiteral("收 到 货款（补）")));
    EXPECT_TRUE(b.type(4, "Explain", QStringLiteral("货款")));
    EXPECT_EQ(b.journal->ExplainHistory(), QStringLiteral("收 到 货款（补）|")) << "kept once; a part of one is not added";
    ASSERT_TRUE(b.journal->Save());
    b.journal->InsSumRow(4);
    ASSERT_TRUE(b.journal->Save());
    ASSERT_TRUE(b.journal->Load(b.book));
    const QString list = b.journal->GetExplainList();
    EXPECT_TRUE(list.startsWith(QStringLiteral("|收 到 货款（补）|"))) << list.toStdString();
    EXPECT_FALSE(list.contains(QStringLiteral("小结")));
    EXPECT_FALSE(list.contains(QStringLiteral("期初余额")));
}

TEST(EditRules, CommonStepsMarkColourAppendAndRaiseDataChangedTwice)
{
    EditingBook b;
    b.journal->setModifiedForeColor(QColor(200, 0, 0));
    const int rows = b.grid->rows();
    QSignalSpy data(b.journal.get(), &kx::Journal::DataChanged);
    ASSERT_TRUE(b.type(rows - 1, "Explain", QStringLiteral("新记录")));
    EXPECT_EQ(b.grid->rows(), rows + 1) << "exactly one empty row waits at the bottom";
    EXPECT_EQ(data.count(), 2);
    EXPECT_EQ(b.grid->rowData(rows - 1).toInt(), 2);
    EXPECT_EQ(b.grid->cellForeColor(rows - 1, b.col("Explain")), QColor(200, 0, 0));
    EXPECT_TRUE(b.journal->IsDirty());

    data.clear();
    EXPECT_TRUE(b.type(2, "Explain", QStringLiteral("收到货款")));
    EXPECT_EQ(data.count(), 0) << "re-typing what a row with an account holds changes nothing";
    EXPECT_FALSE(b.grid->cellForeColor(2, b.col("Explain")) == QColor(200, 0, 0));
}

TEST(EditRules, CellsOpenOnlyWhereRecordsMayChange)
{
    EditingBook b;
    kx::EditCycle *cycle = b.grid->editCycle();
    ASSERT_TRUE(cycle->begin(2, b.col("AccName")));
    EXPECT_EQ(cycle->comboList(), QStringLiteral("|..."));
    cycle->cancel();
    ASSERT_TRUE(cycle->begin(2, b.col("Explain")));
    EXPECT_TRUE(cycle->comboList().contains(QStringLiteral("|付材料款")));
    cycle->cancel();
    EXPECT_FALSE(cycle->begin(2, b.col("Balance"))) << "not an edit field";

    b.grid->setText(3, b.col("DirID"), QStringLiteral("7"));
    EXPECT_FALSE(b.type(3, "Explain", QStringLiteral("改"))) << "linked to a voucher";
    ASSERT_TRUE(cycle->begin(3, b.col("AccDoc")));
    EXPECT_EQ(cycle->comboList(), QStringLiteral("|...")) << "the voucher picker still opens";
    EXPECT_FALSE(cycle->validate(QStringLiteral("x"))) << "but nothing typed is taken" ;
    cycle->cancel();

    b.journal->setAllowModify(false);
    EXPECT_FALSE(b.type(2, "Explain", QStringLiteral("改")));
    b.journal->setAllowModify(true);
    ASSERT_TRUE(b.journal->InsSumRow(3));
    EXPECT_FALSE(b.type(2, "Explain", QStringLiteral("改"))) << "above a summary row";
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收到货款"));
}

namespace {

class AmountEntry : public ::testing::TestWithParam<kxtest::Engine>
{
};


// Amounts, balances and foreign figures of the four records (an emptied
// amount is stored as 0).
std::vector<std::int64_t> figures(const EditingBook &b)
{
    std::vector<std::int64_t> out;
    for (int r = 1; r <= 4; ++r)
        for (const char *key : {"Debit", "Credit", "Forex", "Balance", "fxBalance"}) {
            EXPECT_TRUE(b.grid->holdsAmount(r, b.col(key))) << r << key;
            out.push_back(b.grid->amount(r, b.col(key)).raw());
        }
    return out;
}

} // namespace

TEST_P(AmountEntry, ARefusedAmountKeepsWhatTheCellHeldAndSaveStoresThat)
{
    EditingBook b(GetParam());
    b.boxes.clear();
    EXPECT_FALSE(b.type(2, "Debit", QStringLiteral("1/(2-2)")));
    EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
    EXPECT_FALSE(b.type(3, "Credit", QStringLiteral("(5")));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("200"));
    EXPECT_FALSE(b.type(4, "Forex", QStringLiteral("5-")));
    EXPECT_EQ(b.text(4, "Forex"), QString());
    EXPECT_FALSE(b.type(4, "Rate", QStringLiteral("1/0")));
    EXPECT_EQ(b.boxes, QStringList(4, QStringLiteral("公式计算错误。")));
    EXPECT_EQ(b.grid->rowData(2).toInt(), 0) << "a refused edit leaves the row unchanged";
    EXPECT_FALSE(b.journal->IsDirty());

    // A figure as spreadsheets show it, in an open editor (a paste into it).
    kx::EditCycle *cycle = b.grid->editCycle();
    ASSERT_TRUE(cycle->begin(4, b.col("Credit")));
    ASSERT_TRUE(cycle->validate(QStringLiteral("1,234.56")));
    cycle->store();
    cycle->finish();
    EXPECT_EQ(b.text(4, "Credit"), QStringLiteral("1234.56"));
    ASSERT_TRUE(cycle->begin(3, b.col("Credit")));
    EXPECT_FALSE(cycle->validate(QStringLiteral("1,23,4")));
    cycle->cancel();
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("200"));

    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(kxtest::storedAmount(b, 2, "Debit"), kx::Currency::fromUnits(500));
    EXPECT_EQ(kxtest::storedAmount(b, 3, "Credit"), kx::Currency::fromUnits(200));
    EXPECT_EQ(kxtest::storedAmount(b, 4, "Credit"), kx::Currency::fromRaw(12345600));
}

TEST_P(AmountEntry, AmountsAndBalancesTheEngineCannotHoldExactlyAreRefused)
{
    EditingBook b(GetParam());
    const bool sqlite = GetParam() == kxtest::Engine::Sqlite;
    b.boxes.clear();
    // 18 significant digits: past what SQLite keeps, well inside what the server keeps.
    EXPECT_EQ(b.type(2, "Debit", QStringLiteral("98765432109876.5432")), !sqlite);
    if (sqlite) {
        EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
        ASSERT_EQ(b.boxes.size(), 1);
        EXPECT_EQ(b.boxes.last(), QStringLiteral("“98765432109876.5432”超出了账簿能准确保存的位数（最多15位有效数字）。"));
        // Within 15 digits itself, but the balances below would not be.
        EXPECT_FALSE(b.type(2, "Debit", QStringLiteral("99999999999.9999")));
        EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
        EXPECT_EQ(b.boxes.last(), QStringLiteral("这样输入后，第2行的余额超出了账簿能准确保存的位数（最多15位有效数字）。"));
        EXPECT_TRUE(b.type(2, "Debit", QStringLiteral("8656897004324.62")));
        EXPECT_EQ(b.text(4, "Balance"), QStringLiteral("8656897005074.62"));
        EXPECT_FALSE(b.type(3, "Credit", QStringLiteral("0.0001"))) << "8656897005324.6199 has 17 digits";
        EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("0.01")));
        // A row without a day counts towards no balance until it gets one.
        const int blank = b.grid->rows() - 1;
        EXPECT_TRUE(b.type(blank, "Debit", QStringLiteral("99999999999.9999")));
        EXPECT_FALSE(b.type(blank, "ShowName", QStringLiteral("2025-01-20")));
        EXPECT_EQ(b.boxes.last(), QStringLiteral("这样输入后，第5行的余额超出了账簿能准确保存的位数（最多15位有效数字）。"));
        EXPECT_TRUE(b.text(blank, "JnlDate").isEmpty());
        EXPECT_TRUE(b.type(blank, "Debit", QString()));
    } else {
        EXPECT_EQ(b.text(4, "Balance"), QStringLiteral("98765432110626.5432"));
        // The balance would pass the largest amount a book holds.
        EXPECT_FALSE(b.type(3, "Debit", QStringLiteral("100000000000000")));
        EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("200"));
        EXPECT_EQ(b.boxes.last(), QStringLiteral("这样输入后，第3行的余额超出了金额的范围。"));
        EXPECT_FALSE(b.type(3, "Credit", QStringLiteral("115292150460684.6976")));
        EXPECT_EQ(b.boxes.last(), QStringLiteral("“115292150460684.6976”超出了金额的范围。"));
        EXPECT_TRUE(b.type(3, "Credit", QStringLiteral("115292150460684.6975"))) << "the largest amount itself";
    }
    EXPECT_EQ(b.type(4, "Forex", QStringLiteral("12345678901234.56")), !sqlite) << "16 digits";
    EXPECT_TRUE(b.type(4, "Forex", QStringLiteral("1234567890123.45")));
    EXPECT_EQ(b.text(4, "Forex"), QStringLiteral("1234567890123.45"));
    const std::vector<std::int64_t> shown = figures(b);

    ASSERT_TRUE(b.journal->Save());
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(figures(b), shown) << "what was accepted reloads exactly";
    EXPECT_TRUE(b.type(2, "Explain", QStringLiteral("改"))) << "and stays open to changes";
    EXPECT_TRUE(b.type(3, "Explain", QStringLiteral("改")));
}

INSTANTIATE_TEST_SUITE_P(Engines, AmountEntry, ::testing::Values(kxtest::Engine::Sqlite, kxtest::Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

// The largest balance is remembered from the last pass over the book; an
// amount a host writes into the grid itself must still count, with or
// without a pass of its own.
TEST(EditRules, BalancesAHostWroteCountWhenAnAmountIsChecked)
{
    EditingBook b;
    b.boxes.clear();
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("600"))) << "a pass notes the small balances";
    b.journal->Grid()->setText(4, b.col("Debit"), QStringLiteral("99999999999.9999"));
    b.journal->Grid()->setText(4, b.col("Credit"), QString());
    EXPECT_FALSE(b.type(2, "Debit", QStringLiteral("700")));
    EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("600"));
    ASSERT_FALSE(b.boxes.isEmpty());
    EXPECT_EQ(b.boxes.last(), QStringLiteral("这样输入后，第4行的余额超出了账簿能准确保存的位数（最多15位有效数字）。"));

    // Which column makes a row a record is the host's too: an undated row
    // with a large amount becomes a record when the explanation decides.
    b.journal->Grid()->setText(4, b.col("Debit"), QStringLiteral("1"));
    ASSERT_TRUE(b.type(2, "Debit", QStringLiteral("650"))) << "a pass notes the small balances again";
    const int blank = b.grid->rows() - 1;
    ASSERT_TRUE(b.type(blank, "Explain", QStringLiteral("预存")));
    ASSERT_TRUE(b.type(blank, "Debit", QStringLiteral("99999999999.9999"))) << "undated: no balance yet";
    b.journal->setOutlineKey(QStringLiteral("Explain"));
    EXPECT_FALSE(b.type(2, "Debit", QStringLiteral("700")));
    EXPECT_EQ(b.boxes.last(), QStringLiteral("这样输入后，第%1行的余额超出了账簿能准确保存的位数（最多15位有效数字）。").arg(blank));
}

// A row whose amount is typed before its date becomes a record when the date
// comes: its balance, and those of the records below, follow at once.
TEST(EditRules, ARowDatedAfterItsAmountGetsItsBalance)
{
    EditingBook b;
    kxtest::runMenuItem(*b.journal, "mnuRecalc");
    const int last = b.grid->rows() - 1;
    const kx::Currency before = b.grid->amount(last - 1, b.col("Balance"));
    ASSERT_TRUE(b.type(last, "Debit", QStringLiteral("100")));
    EXPECT_TRUE(b.text(last, "Balance").isEmpty()) << "an undated row has no balance";
    ASSERT_TRUE(b.type(last, "ShowName", QStringLiteral("0131")));
    ASSERT_EQ(b.text(last, "JnlDate"), QStringLiteral("2025-01-31"));
    const int sign = b.journal->Direction() == QStringLiteral("贷") ? -1 : 1;
    EXPECT_EQ(b.grid->amount(last, b.col("Balance")),
              kx::Currency::fromRaw(before.raw() + sign * kx::Currency::fromUnits(100).raw()))
        << b.text(last, "Balance").toStdString();
}
