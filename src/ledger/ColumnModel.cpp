#include "ledger/ColumnModel.h"

#include "data/BookState.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/GridModel.h"

#include <QDate>
#include <QStringList>

namespace kx {

struct ColumnSpec {
    const char *key;
    const char *header;
    GridModel::DataType type;
    int align;  // 0 general, 1 left, 2 centre, 3 right
    bool hidden;
    const char *format;
    int twips;
};

namespace {

const ColumnSpec Columns[] = {
    {"SeqNo", "", GridModel::TypeLong, 1, false, "", 255},
    {"ShowName", "日期", GridModel::TypeString, 1, false, "", 1545},
    {"JnlDate", "日期", GridModel::TypeString, 1, true, "yyyy年MM月dd日", 1545},
    {"JnlNo", "单据号", GridModel::TypeString, 1, false, "", 655},
    {"AccName", "对方科目", GridModel::TypeString, 1, false, "", 900},
    {"AccDoc", "记账凭证", GridModel::TypeString, 1, false, "", 900},
    {"Explain", "摘要", GridModel::TypeString, 1, false, "", 2500},
    {"Debit", "借方金额", GridModel::TypeCurrency, 3, false, "", 1200},
    {"Credit", "贷方金额", GridModel::TypeCurrency, 3, false, "", 1200},
    {"Rate", "汇率", GridModel::TypeCurrency, 3, true, "", 675},
    {"Forex", "外币", GridModel::TypeCurrency, 3, true, "", 975},
    {"Dir", "", GridModel::TypeString, 2, false, "", 300},
    {"Balance", "余额", GridModel::TypeCurrency, 3, false, "", 1200},
    {"fxBalance", "外币余额", GridModel::TypeCurrency, 3, true, "", 1200},
    {"Field1", "字段一", GridModel::TypeString, 1, true, "", 1000},
    {"Field2", "字段二", GridModel::TypeString, 1, true, "", 1000},
    {"Field3", "字段一", GridModel::TypeString, 1, true, "", 1000},
    {"Field4", "字段二", GridModel::TypeString, 1, true, "", 1000},
    {"Remark", "备注", GridModel::TypeString, 1, true, "", 1000},
    {"AssistName", "日记账", GridModel::TypeString, 1, false, "", 1000},
    {"AccCode", "AccCode", GridModel::TypeString, 0, true, "", 10},
    {"AccID", "AccID", GridModel::TypeLong, 0, true, "", 10},
    {"DirID", "DirID", GridModel::TypeLong, 0, true, "", 10},
    {"RecID", "RecID", GridModel::TypeLong, 0, true, "", 10},
    {"DocID", "DocID", GridModel::TypeLong, 0, true, "", 10},
    {"Flag", "Flag", GridModel::TypeString, 1, true, "", 2000},
    {"Tag", "Tag", GridModel::TypeLong, 0, true, "", 10},
    {"Locked", "Locked", GridModel::TypeLong, 0, true, "", 10},
    {"Row", "Row", GridModel::TypeLong, 0, true, "", 10},
};
constexpr int ColumnCount = int(sizeof(Columns) / sizeof(Columns[0]));

Qt::Alignment alignmentOf(int code)
{
    switch (code) {
    case 1: return Qt::AlignLeft | Qt::AlignVCenter;
    case 2: return Qt::AlignCenter;
    case 3: return Qt::AlignRight | Qt::AlignVCenter;
    default: return {};
    }
}

// Widths are kept in twips as the layout was designed. The CJK fonts of a
// Linux desktop run wider than the ones those widths were drawn for, so a
// pixel counts 12 twips rather than the 15 of 96 dpi: the columns stay readable.
int pixelsOf(int twips)
{
    return (twips + 6) / 12;
}

QString replaceFirst(QString text, const QString &placeholder, const QString &value)
{
    const int at = int(text.indexOf(placeholder));
    if (at >= 0)
        text.replace(at, placeholder.size(), value);
    return text;
}

} // namespace

const QString ColumnModel::BusyTag = QStringLiteral("Card Define");
const QString ColumnModel::DefaultColsFilter = QStringLiteral("|DocID|DirID|RecID|Tag|AccID|AccCode|Flag|JnlDate|Locked|Row|");
const QString ColumnModel::DefaultEditFields =
    QStringLiteral("|ShowName|JnlNo|AccName|AccDoc|Explain|Debit|Credit|Rate|Forex|Field1|Field2|Field3|Field4|Remark|");
const QString ColumnModel::AmountColumns = QStringLiteral("|Debit|Credit|Rate|Forex|Dir|Balance|fxBalance|");

void ColumnModel::defineColumn(GridModel &grid, int pos, const ColumnSpec &column)
{
    const QString key = QString::fromUtf8(column.key);
    int at = grid.colIndex(key);
    if (pos < grid.fixedCols()) {
        at = pos;
    } else if (at < 0 || at < grid.fixedCols()) {
        grid.setCols(grid.cols() + 1);
        at = grid.cols() - 1;
    }
    if (at != pos && at >= grid.fixedCols() && pos < grid.cols())
        grid.moveColTo(at, pos);
    grid.setColKey(pos, key);
    grid.setText(0, pos, QString::fromUtf8(column.header));
    grid.setColDataType(pos, column.type);
    grid.setColAlignment(pos, alignmentOf(column.align));
    grid.setColHidden(pos, column.hidden);
    grid.setColFormat(pos, QString::fromUtf8(column.format));
    grid.setColWidth(pos, pixelsOf(column.twips));
}

void ColumnModel::define(GridModel &grid, BookState &book)
{
    const QString tag = grid.tag();
    const bool redraw = grid.redraw();
    grid.setTag(BusyTag);
    grid.setRedraw(false);

    book.amountColumns = AmountColumns;
    for (int pos = 0; pos < ColumnCount; ++pos)
        defineColumn(grid, pos, Columns[pos]);
    grid.setCols(ColumnCount);
    applyRowHeights(grid, book);
    grid.setCellAlignment(0, 0, 0, grid.cols() - 1, Qt::AlignCenter);

    book.colsFilter = DefaultColsFilter;
    const bool showBooks = book.isConsolidated();
    if (!showBooks)
        book.colsFilter += QStringLiteral("AssistName|");
    grid.setColHidden(grid.colIndex(QStringLiteral("AssistName")), !showBooks);
    book.numericFields = QStringLiteral("|Rate|Price|");
    book.dateFields = QStringLiteral("JnlDate");
    book.listFields = QStringLiteral("|Field1|Field2|Field3|Field4|Flag|");
    book.editFields = DefaultEditFields;

    QFont font(QStringLiteral("宋体"), 9);
    font.setBold(false);
    font.setItalic(false);
    font.setUnderline(false);
    font.setStrikeOut(false);
    grid.setFont(font);
    setColumnFonts(grid, QString(), QString());

    grid.setTag(tag);
    grid.setRedraw(redraw);
}

void ColumnModel::applyFormats(GridModel &grid, const BookState &book)
{
    setColumnFonts(grid, QString(), QString());
    for (const char *key : {"Debit", "Credit", "Forex", "Balance", "fxBalance"})
        grid.setColFormat(grid.colIndex(QLatin1String(key)), book.accountFormat);
    grid.setColFormat(grid.colIndex(QStringLiteral("Rate")), book.rateFormat);
}

void ColumnModel::applyRowHeights(GridModel &grid, const BookState &book)
{
    grid.setDefaultRowHeight(book.rowHeight);
    grid.setRowHeight(0, book.headerRowHeight);
    for (int r = grid.fixedRows(); r < grid.rows(); ++r)
        if (grid.isSubtotal(r))
            grid.setRowHeight(r, book.sumRowHeight);
}

bool ColumnModel::isNumericColumn(const GridModel &grid, int col)
{
    const GridModel::DataType t = grid.colDataType(col);
    return t == GridModel::TypeLong || t == GridModel::TypeDouble || t == GridModel::TypeCurrency;
}

void ColumnModel::setColumnFonts(GridModel &grid, QString keys, QString fontName)
{
    if (fontName.isEmpty())
        fontName = QStringLiteral("Arial");
    if (keys.isEmpty()) {
        for (int c = grid.fixedCols(); c < grid.cols(); ++c)
            if (isNumericColumn(grid, c))
                keys += QLatin1Char('|') + grid.colKey(c);
    }
    for (const QString &key : keys.split(QLatin1Char('|'), Qt::SkipEmptyParts)) {
        const int c = grid.colIndex(key);
        if (c >= grid.fixedCols())
            grid.setColDataFont(c, fontName);
    }
}

void ColumnModel::applyExplainTemplate(GridModel &grid, const BookState &book, int row, QString templ)
{
    if (!book.allowModify || !grid.isDataRow(row))
        return;
    const QDate date = QDate::fromString(grid.text(row, QStringLiteral("JnlDate")), Qt::ISODate);
    if (templ.contains(QStringLiteral("[日期]"))) {
        const QString fmt = book.dateFormat.isEmpty() ? QStringLiteral("yyyy-MM-dd") : book.dateFormat;
        templ = replaceFirst(templ, QStringLiteral("[日期]"), date.toString(fmt));
    }
    if (templ.contains(QStringLiteral("[月份]")))
        templ = replaceFirst(templ, QStringLiteral("[月份]"), date.toString(QStringLiteral("yyyy年MM月")));
    if (templ.contains(QStringLiteral("[科目名称]"))) {
        const int accId = int(grid.value(row, QStringLiteral("AccID")));
        const QString name = book.acc ? book.acc->GetAccName(accId, 0) : QString();
        templ = replaceFirst(templ, QStringLiteral("[科目名称]"), name);
    }
    const QString present = grid.text(row, QStringLiteral("Explain")).trimmed();
    templ = replaceFirst(templ, QStringLiteral("[]"), present);
    grid.setText(row, QStringLiteral("Explain"), templ);
}

} // namespace kx
