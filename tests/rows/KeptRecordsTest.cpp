// Records of a closed month and records booked on a voucher stay where they
// are: deleting, dragging, inserting among them, renumbering and deleting
// history pass them by and name them; reopening the month or removing the
// link frees them.
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"

#include <kxjournal/Database.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>

#include <gtest/gtest.h>

using kxtest::BookBuilder;
using kxtest::EditingBook;
using kxtest::Engine;

namespace {

// The editing book with January closed and two records on vouchers:
//   1 期初余额  2 收到货款  3 付材料款 (voucher)  4 报销差旅费  5 本月结余
//   6 房租  7 销售收入 (voucher)  8 利息  9 (empty)
// January (rows 1–5) is locked once loaded; LastSumRow is 5.
struct ClosedBook : EditingBook {
    explicit ClosedBook(Engine engine) : EditingBook(engine)
    {
        const kx::Database db = this->db->open();
        BookBuilder b(db);
        janVoucher = b.voucher(QStringLiteral("2025-01-10"), QStringLiteral("记"), 4);
        febVoucher = b.voucher(QStringLiteral("2025-02-10"), QStringLiteral("收"), 2);
        auto rec = [&](int row, const char *date, const char *explain, const char *side, const char *amount, int dirId) {
            QVariantMap f{{QStringLiteral("JnlDate"), QString::fromUtf8(date)},
                          {QStringLiteral("Explain"), QString::fromUtf8(explain)},
                          {QString::fromUtf8(side), QString::fromUtf8(amount)},
                          {QStringLiteral("DirID"), dirId}};
            b.record(book, row, f);
        };
        b.record(book, 5,
                 {{QStringLiteral("JnlDate"), QStringLiteral("2025-01-31")},
                  {QStringLiteral("Explain"), QStringLiteral("本月结余")},
                  {QStringLiteral("Tag"), -1}});
        rec(6, "2025-02-03", "房租", "Credit", "100", 0);
        rec(7, "2025-02-10", "销售收入", "Debit", "300", febVoucher);
        rec(8, "2025-02-20", "利息", "Debit", "5", 0);
        linkedAtStart =
            kx::sqlRun(db, {QStringLiteral("Update kxJournalRecs Set DirID=%1 Where DocID=%2 And Row=3").arg(janVoucher).arg(book), {}})
                .ok();
        journal->setAsker([this](const QString &text, const QString &) {
            asked << text;
            return true;
        });
        journal->Load(book);
        grid = kx::Sheet::of(journal->Grid());
    }
    QStringList column(const char *key) const
    {
        QStringList out;
        for (int r = 1; r < grid->rows(); ++r)
            out << text(r, key);
        return out;
    }
    // Every cell's text and every row's colour: what an undo must give back.
    QStringList picture() const
    {
        QStringList out{QString::number(journal->LastSumRow())};
        for (int r = 0; r < grid->rows(); ++r) {
            QString line = grid->rowForeColor(r).name();
            for (int c = 1; c < grid->cols(); ++c)
                line += QLatin1Char('|') + grid->text(r, c);
            out << line;
        }
        return out;
    }
    int stored() const
    {
        return kx::sqlScalar(db->open(), {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=%1").arg(book), {}})
            .value()
            .toInt();
    }
    void drop(int source, int row) const { Q_EMIT journal->gridView()->rowDropped(source, row, 0); }

    int janVoucher = 0, febVoucher = 0;
    bool linkedAtStart = false;
    QStringList asked;
};

const QStringList Loaded{QStringLiteral("期初余额"), QStringLiteral("收到货款"), QStringLiteral("付材料款"),
                         QStringLiteral("报销差旅费"), QStringLiteral("本月结余"), QStringLiteral("房租"),
                         QStringLiteral("销售收入"),  QStringLiteral("利息"),     QString()};

class KeptRecords : public ::testing::TestWithParam<Engine>
{
};

} // namespace

TEST_P(KeptRecords, DeletingEverythingTakesOnlyOpenUnlinkedRecordsAndSurvivesSaveAndReload)
{
    ClosedBook b(GetParam());
    ASSERT_TRUE(b.linkedAtStart);
    ASSERT_EQ(b.column("Explain"), Loaded);
    ASSERT_EQ(b.journal->LastSumRow(), 5);
    kxtest::runMenuItem(*b.journal, "mnuRecalc");  // the stored summary row carries no totals
    const QStringList before = b.picture();

    const int explain = b.col("Explain");
    b.grid->select(1, explain, b.grid->rows() - 1, explain);
    ASSERT_TRUE(b.journal->DeleteRows());
    EXPECT_EQ(b.asked, QStringList{QStringLiteral("是否删除当前 3 行？另有 5 行是已结账或已生成凭证的记录，不能删除。")})
        << "the question counts only the rows that go";
    EXPECT_EQ(b.column("Explain"),
              (QStringList{QStringLiteral("期初余额"), QStringLiteral("收到货款"), QStringLiteral("付材料款"),
                           QStringLiteral("报销差旅费"), QStringLiteral("本月结余"), QStringLiteral("销售收入")}));
    EXPECT_EQ(b.boxes, QStringList{QStringLiteral("第2行、第3行、第4行、第5行、第6行是已结账或已生成凭证的记录，不能删除；"
                                                  "其余的 3 行已删除。")})
        << "one message names the rows kept where they are now";
    EXPECT_EQ(b.journal->LastSumRow(), 5) << "January stays closed";
    EXPECT_EQ(b.grid->amount(6, b.col("Balance")), kx::Currency::fromRaw(15500000)) << "1250 + 300";

    const QStringList partial = b.picture();
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.picture(), before) << "undo gives back exactly what was there";
    ASSERT_TRUE(b.journal->redo());
    EXPECT_EQ(b.picture(), partial);

    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(b.stored(), 6);
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(b.column("Explain"),
              (QStringList{QStringLiteral("期初余额"), QStringLiteral("收到货款"), QStringLiteral("付材料款"),
                           QStringLiteral("报销差旅费"), QStringLiteral("本月结余"), QStringLiteral("销售收入"), QString()}));
    EXPECT_EQ(b.journal->DirID(3), b.janVoucher);
    EXPECT_EQ(b.journal->DirID(6), b.febVoucher);
    EXPECT_EQ(b.journal->LastSumRow(), 5);

    b.asked.clear();
    b.boxes.clear();
    b.grid->select(2, explain, 6, explain);
    EXPECT_FALSE(b.journal->DeleteRows()) << "nothing left that may go";
    EXPECT_TRUE(b.asked.isEmpty()) << "no question when nothing would go";
    EXPECT_EQ(b.boxes, QStringList{QStringLiteral("第2行、第3行、第4行、第5行、第6行是已结账或已生成凭证的记录，不能删除。")});
    EXPECT_EQ(b.stored(), 6);
}

TEST_P(KeptRecords, ReopeningTheMonthOrRemovingTheLinkFreesTheRecords)
{
    ClosedBook b(GetParam());
    // Deleting the month's 本月结余 row alone reopens January.
    ASSERT_TRUE(b.journal->DeleteRows(5));
    EXPECT_EQ(b.journal->LastSumRow(), 0);
    EXPECT_TRUE(b.type(2, "Explain", QStringLiteral("收到货款（改）"))) << "a reopened record takes edits again";
    b.grid->select(2, b.col("Explain"), 4, b.col("Explain"));
    ASSERT_TRUE(b.journal->DeleteRows());
    EXPECT_EQ(b.column("Explain").mid(0, 3),
              (QStringList{QStringLiteral("期初余额"), QStringLiteral("付材料款"), QStringLiteral("房租")}))
        << "the record on a voucher still stays";
    EXPECT_TRUE(b.boxes.last().startsWith(QStringLiteral("第2行是已结账或已生成凭证的记录"))) << qPrintable(b.boxes.last());

    // 删除凭证链接 first, then the record goes.
    b.grid->select(2, b.col("Explain"), 2, b.col("Explain"));
    kxtest::runMenuItem(*b.journal, "mnuRemoveDoc");
    ASSERT_EQ(b.journal->DirID(2), 0);
    ASSERT_TRUE(b.journal->DeleteRows(2));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("房租"));
    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(b.stored(), 4) << "期初余额, 房租, 销售收入, 利息";

    // A month closed and stored reopens through CloseBook after a reload too.
    ASSERT_TRUE(b.journal->CloseBook());
    ASSERT_TRUE(b.journal->Save());
    ASSERT_TRUE(b.journal->Load(b.book));
    const int closing = b.journal->LastSumRow();
    ASSERT_EQ(b.text(closing, "Explain"), QStringLiteral("本月结余"));
    EXPECT_FALSE(b.journal->DeleteRows(2));
    ASSERT_TRUE(b.journal->CloseBook());
    EXPECT_EQ(b.journal->LastSumRow(), 0);
    ASSERT_TRUE(b.journal->DeleteRows(2));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("销售收入"));
}

TEST_P(KeptRecords, OtherWaysOfMovingOrRemovingRecordsPassThemBy)
{
    ClosedBook b(GetParam());
    const int explain = b.col("Explain");

    // Dragging.
    b.drop(3, 2);
    EXPECT_EQ(b.said.last(), QStringLiteral("不能移动已结账月份中的记录。"));
    b.drop(7, 6);
    EXPECT_EQ(b.said.last(), QStringLiteral("不能移动已生成凭证的记录，请先删除凭证链接。"));
    ASSERT_TRUE(b.journal->InsSumRow(6));  // a sub-total closes 房租 in the middle of February
    b.drop(9, 6);
    EXPECT_EQ(b.said.last(), QStringLiteral("不能将当前行拖动到已结账的月份中。"));
    b.drop(9, 8);
    EXPECT_EQ(b.column("Explain").mid(7, 2), (QStringList{QStringLiteral("利息"), QStringLiteral("销售收入")}))
        << "a free record still moves past a linked one";
    ASSERT_TRUE(b.journal->undo());
    ASSERT_TRUE(b.journal->undo());
    ASSERT_EQ(b.column("Explain"), Loaded);

    // Inserting among closed records would move them.
    b.grid->select(3, explain, 3, explain);
    EXPECT_FALSE(b.journal->InsertRows());
    EXPECT_EQ(b.said.last(), QStringLiteral("不能在已结账的记录中插入行。"));
    b.grid->select(5, explain, 5, explain);
    EXPECT_FALSE(b.journal->InsertRows()) << "above the 本月结余 row is inside the month too";
    b.grid->select(6, explain, 6, explain);
    ASSERT_TRUE(b.journal->InsertRows());
    ASSERT_TRUE(b.journal->undo());

    // Renumbering keeps the numbers stored in closed months and on vouchers,
    // and goes on from them.
    const int no = b.col("JnlNo");
    for (const auto &[row, number] : {std::pair{2, "A001"}, {3, "A002"}, {4, "A003"}, {7, "A009"}})
        b.grid->setText(row, no, QString::fromLatin1(number));
    b.grid->select(2, no, 8, no);
    kxtest::runMenuItem(*b.journal, "mnuRenumber");
    EXPECT_EQ(b.column("JnlNo").mid(1, 8),
              (QStringList{QStringLiteral("A001"), QStringLiteral("A002"), QStringLiteral("A003"), QString(),
                           QStringLiteral("A004"), QStringLiteral("A009"), QStringLiteral("A010"), QString()}));
    EXPECT_EQ(b.said.last(), QStringLiteral("第2行、第3行、第4行、第7行是已结账或已生成凭证的记录，单据号没有改动。"));

    // Cutting empties the cells of open records only.
    b.grid->select(2, explain, 8, explain);
    kxtest::runMenuItem(*b.journal, "mnuCut");
    EXPECT_EQ(b.column("Explain"),
              (QStringList{QStringLiteral("期初余额"), QStringLiteral("收到货款"), QStringLiteral("付材料款"),
                           QStringLiteral("报销差旅费"), QStringLiteral("本月结余"), QString(), QStringLiteral("销售收入"),
                           QString(), QString()}));
}

TEST_P(KeptRecords, DeletingHistoryKeepsClosedAndLinkedRecordsInTheDatabase)
{
    ClosedBook b(GetParam());
    b.acc->setBeginDate(QDate(2025, 2, 15));
    kxtest::runMenuItem(*b.journal, "mnuDelHistory");
    EXPECT_EQ(b.stored(), 7) << "only 房租 went";
    EXPECT_EQ(b.column("Explain"),
              (QStringList{QStringLiteral("期初余额"), QStringLiteral("收到货款"), QStringLiteral("付材料款"),
                           QStringLiteral("报销差旅费"), QStringLiteral("本月结余"), QStringLiteral("销售收入"),
                           QStringLiteral("利息"), QString()}));
    EXPECT_EQ(b.boxes.last(), QStringLiteral("删除以前记录共 1 条;第2行、第3行、第4行、第5行、第6行是已结账或已生成凭证的记录，没有删除。"));
    EXPECT_EQ(b.journal->LastSumRow(), 5);
    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_EQ(b.journal->DirID(6), b.febVoucher);
}

TEST(KeptRecordsMany, TheMessageNamesTenRowsAndCountsTheRest)
{
    EditingBook b;
    {
        const kx::Database db = b.db->open();
        BookBuilder builder(db);
        for (int i = 0; i < 12; ++i)
            builder.record(b.book, 5 + i,
                           {{QStringLiteral("JnlDate"), QStringLiteral("2025-01-20")},
                            {QStringLiteral("Explain"), QStringLiteral("零星支出%1").arg(i)},
                            {QStringLiteral("Credit"), 1}});
        builder.record(b.book, 17,
                       {{QStringLiteral("JnlDate"), QStringLiteral("2025-01-31")},
                        {QStringLiteral("Explain"), QStringLiteral("本月结余")},
                        {QStringLiteral("Tag"), -1}});
        builder.record(b.book, 18, {{QStringLiteral("JnlDate"), QStringLiteral("2025-02-01")}, {QStringLiteral("Debit"), 7}});
    }
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    ASSERT_TRUE(b.journal->Load(b.book));
    ASSERT_EQ(b.journal->LastSumRow(), 17);
    b.grid->select(1, b.col("Explain"), 18, b.col("Explain"));
    ASSERT_TRUE(b.journal->DeleteRows());
    EXPECT_EQ(b.boxes.last(), QStringLiteral("第2行、第3行、第4行、第5行、第6行、第7行、第8行、第9行、第10行、第11行……等 16 行"
                                             "是已结账或已生成凭证的记录，不能删除；其余的 1 行已删除。"));
    EXPECT_EQ(b.grid->rows(), 19) << "the header, the opening row, 15 records, the summary row and the empty row";
}

INSTANTIATE_TEST_SUITE_P(Engines, KeptRecords, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
