#include "QtPrinters.h"

#include "ledger/Book.h"
#include "ledger/LedgerState.h"
#include "ledger/ColumnModel.h"

#include <kxjournal/AccContext.h>
#include <kxjournal/Database.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>

#include <QHeaderView>
#include <QSignalSpy>
#include <gtest/gtest.h>

using kx::ColumnModel;
using kx::Sheet;

TEST(ColumnModel, LaysDownItsThirtyColumns)
{
    kx::Book book;
    Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
    ColumnModel::define(book);
    ASSERT_EQ(grid.cols(), 30);
    const char *keys[] = {"SeqNo", "ShowName", "JnlDate", "JnlNo", "AccName", "AccDoc", "Explain", "Debit", "Credit",
                          "Rate", "Forex", "Dir", "Balance", "fxBalance", "Field1", "Field2", "Field3", "Field4",
                          "Remark", "AssistName", "AccCode", "AccID", "DirID", "RecID", "DocID", "Flag", "Tag",
                          "Locked", "Row", "Reconciled"};
    for (int c = 0; c < 30; ++c)
        EXPECT_EQ(grid.colKey(c), QString::fromLatin1(keys[c])) << c;
    // Each column has a name of its own: no two user fields alike, and the direction is named.
    EXPECT_EQ(grid.text(0, grid.colIndex(QStringLiteral("Field3"))), QStringLiteral("字段三"));
    EXPECT_EQ(grid.text(0, grid.colIndex(QStringLiteral("Field4"))), QStringLiteral("字段四"));
    EXPECT_EQ(grid.text(0, grid.colIndex(QStringLiteral("Dir"))), QStringLiteral("方向"));
    EXPECT_EQ(grid.text(0, grid.colIndex(QStringLiteral("AccDoc"))), QStringLiteral("记账凭证"));
    for (const char *hidden : {"JnlDate", "Rate", "Forex", "fxBalance", "Field1", "Remark", "RecID", "Row", "AssistName",
                               "Reconciled"})
        EXPECT_TRUE(grid.isColHidden(grid.colIndex(QString::fromLatin1(hidden)))) << hidden;
    for (const char *shown : {"ShowName", "Explain", "Debit", "Credit", "Dir", "Balance"})
        EXPECT_FALSE(grid.isColHidden(grid.colIndex(QString::fromLatin1(shown)))) << shown;
    EXPECT_EQ(grid.colDataType(grid.colIndex(QStringLiteral("Debit"))), Sheet::TypeCurrency);
    EXPECT_EQ(grid.colAlignment(grid.colIndex(QStringLiteral("Dir"))), Qt::AlignCenter);
    EXPECT_EQ(state.fields.colsFilter, ColumnModel::DefaultColsFilter + QStringLiteral("AssistName|"));
    EXPECT_EQ(state.fields.editFields, ColumnModel::DefaultEditFields);
    EXPECT_EQ(state.fields.dateFields, QStringLiteral("JnlDate"));
    EXPECT_EQ(grid.tag(), QString());

    // A consolidated journal shows which book each record is from.
    state.isPacked = true;
    state.book.isBottomClass = false;
    ColumnModel::define(book);
    EXPECT_FALSE(grid.isColHidden(grid.colIndex(QStringLiteral("AssistName"))));
    EXPECT_EQ(state.fields.colsFilter, ColumnModel::DefaultColsFilter);
}

TEST(ColumnModel, DefaultFormatPutsMovedColumnsBackAndKeepsEveryValue)
{
    kx::Journal j;
    Sheet *g = kx::Sheet::of(j.Grid());
    g->setRows(4);
    for (int r = 1; r < 4; ++r)
        for (int c = 1; c < g->cols(); ++c)
            g->setText(r, c, g->colKey(c) + QString::number(r));
    // A person drags 摘要 to the front, then a column goes missing altogether.
    j.gridView()->horizontalHeader()->moveSection(g->colIndex(QStringLiteral("Explain")) - 1, 0);
    ASSERT_EQ(g->colIndex(QStringLiteral("Explain")), 1);
    g->moveColTo(g->colIndex(QStringLiteral("Remark")), g->cols() - 1);
    g->setCols(g->cols() - 1);
    ASSERT_EQ(g->colIndex(QStringLiteral("Remark")), -1);
    g->setColWidth(g->colIndex(QStringLiteral("Debit")), 5);

    j.SetDefaultFormat();
    ASSERT_EQ(g->cols(), 30);
    EXPECT_EQ(g->colIndex(QStringLiteral("Explain")), 6);
    EXPECT_EQ(g->colIndex(QStringLiteral("Remark")), 18);
    EXPECT_EQ(g->colIndex(QStringLiteral("Row")), 28);
    for (int r = 1; r < 4; ++r) {
        for (int c = 1; c < g->cols(); ++c) {
            const QString key = g->colKey(c);
            EXPECT_EQ(g->text(r, c), key == QLatin1String("Remark") ? QString() : key + QString::number(r)) << key.toStdString();
        }
    }
    EXPECT_GT(g->colWidth(g->colIndex(QStringLiteral("Debit"))), 5);
    EXPECT_EQ(g->cellFontName(1, g->colIndex(QStringLiteral("Balance"))), QStringLiteral("Arial"));
    EXPECT_NE(g->cellFontName(1, g->colIndex(QStringLiteral("Explain"))), QStringLiteral("Arial"));
    EXPECT_NE(g->cellFontName(0, g->colIndex(QStringLiteral("Balance"))), QStringLiteral("Arial")) << "headers keep the grid font";
}

namespace {

class NamesOnly : public kx::AccContext
{
public:
    kx::Database &Connection() override { return m_db; }
    QString UserName() override { return {}; }
    QString DirectorName() override { return {}; }
    QString CurPeriod() override { return {}; }
    QDate PeriodStart() override { return {}; }
    QDate PeriodEnd() override { return {}; }
    QDate BeginDate() override { return {}; }
    QString DocTypes() override { return {}; }
    QString GetAccName(int accId, int) override { return accId == 1002 ? QStringLiteral("银行存款") : QString(); }
    QString GetAccCode(int) override { return {}; }
    QString LookupAccID(const QString &) override { return QStringLiteral("0"); }
    QDate GetPeriodDate(const QDate &d) override { return d; }
    bool GetAccInfo(int, kx::AccInfo &) override { return false; }
    void SaveNotice(const QString &) override {}

private:
    kx::Database m_db;
};

} // namespace

TEST(ColumnModel, ExplanationTemplatesFillTheirPlaceholdersOnce)
{
    kx::Book book;
    Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
    NamesOnly acc;
    book.setContext([&acc] { return &acc; });
    ColumnModel::define(book);
    grid.setRows(2);
    grid.setText(1, QStringLiteral("JnlDate"), QStringLiteral("2026-03-09"));
    grid.setText(1, QStringLiteral("AccID"), QStringLiteral("1002"));
    grid.setText(1, QStringLiteral("Explain"), QStringLiteral("  旧摘要 "));
    auto apply = [&](const char *t) {
        ColumnModel::applyExplainTemplate(book, 1, QString::fromUtf8(t));
        return grid.text(1, QStringLiteral("Explain"));
    };
    state.allowModify = false;
    state.book.docId = 3;
    EXPECT_EQ(apply("新摘要"), QStringLiteral("  旧摘要 ")) << "nothing while changes are not allowed";
    state.allowModify = true;
    EXPECT_EQ(apply("[]（补）"), QStringLiteral("旧摘要（补）"));
    EXPECT_EQ(apply("[]"), QStringLiteral("旧摘要（补）"));
    state.fields.dateFormat = QStringLiteral("MM/dd");
    EXPECT_EQ(apply("[日期]至[日期]"), QStringLiteral("03/09至[日期]"));
    EXPECT_EQ(apply("[月份]转[科目名称]"), QStringLiteral("2026年03月转银行存款"));
    EXPECT_EQ(apply("无占位"), QStringLiteral("无占位"));
}
