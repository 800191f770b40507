#include "ledger/ColumnModel.h"

#include "ledger/Book.h"
#include "kxjournal/AccContext.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"

#include <QDate>
#include <QStringList>

namespace kx {

namespace {

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


void defineColumn(Sheet &grid, int pos, JournalColumns::Column which)
{
    const JournalColumns::Layout &column = JournalColumns::layout(which);
    const QString &key = JournalColumns::key(which);
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
    grid.setColAlignment(pos, column.align);
    grid.setColHidden(pos, column.hidden);
    grid.setColFormat(pos, QString::fromUtf8(column.format));
    grid.setColWidth(pos, pixelsOf(column.twips));
}

} // namespace

const QString ColumnModel::BusyTag = QStringLiteral("Card Define");
const QString ColumnModel::DefaultColsFilter = QStringLiteral("|DocID|DirID|RecID|Tag|AccID|AccCode|Flag|JnlDate|Locked|Row|");
const QString ColumnModel::DefaultAmountFormat = QStringLiteral("#,##0.00");
const QString ColumnModel::DefaultEditFields =
    QStringLiteral("|ShowName|JnlNo|AccName|AccDoc|Explain|Debit|Credit|Rate|Forex|Field1|Field2|Field3|Field4|Remark|");

void ColumnModel::define(Book &book)
{
    Sheet &grid = book.sheet();
    LedgerState &state = book.state();
    const QString tag = grid.tag();
    const bool redraw = grid.redraw();
    grid.setTag(BusyTag);
    grid.setRedraw(false);

    for (int pos = 0; pos < JournalColumns::Count; ++pos)
        defineColumn(grid, pos, JournalColumns::Column(pos));
    grid.setCols(JournalColumns::Count);
    applyRowHeights(grid, state.looks);
    grid.setCellAlignment(0, 0, 0, grid.cols() - 1, Qt::AlignCenter);

    // The key lists and the font the host chose stay; the others take the defaults.
    LedgerFields &fields = state.fields;
    const HostChoices &chosen = state.chosen;
    QString colsFilter = DefaultColsFilter;
    const bool showBooks = state.isConsolidated();
    if (!showBooks)
        colsFilter += JournalColumns::key(JournalColumns::AssistName) + QLatin1Char('|');
    grid.setColHidden(grid.colIndex(JournalColumns::key(JournalColumns::AssistName)), !showBooks);
    fields.colsFilter = chosen.colsFilter.value_or(colsFilter);
    fields.numericFields = chosen.numericFields.value_or(QStringLiteral("|Rate|Price|"));
    fields.dateFields = chosen.dateFields.value_or(JournalColumns::key(JournalColumns::JnlDate));
    fields.listFields = chosen.listFields.value_or(
        JournalColumns::keyList({JournalColumns::Field1, JournalColumns::Field2, JournalColumns::Field3,
                                 JournalColumns::Field4, JournalColumns::Flag}));
    fields.editFields = chosen.editFields.value_or(DefaultEditFields);

    QFont font(QStringLiteral("宋体"), 9);
    font.setBold(false);
    font.setItalic(false);
    font.setUnderline(false);
    font.setStrikeOut(false);
    grid.setFont(chosen.font.value_or(font));
    setColumnFonts(grid, QString(), QString());
    applyChoices(book);

    grid.setTag(tag);
    grid.setRedraw(redraw);
}

void ColumnModel::applyFormats(Book &book)
{
    Sheet &grid = book.sheet();
    const LedgerState &state = book.state();
    setColumnFonts(grid, QString(), QString());
    const JournalColumns columns(grid);
    // Stored values stay exact; only what is shown is rounded to cents.
    const QString amounts = state.fields.accountFormat.isEmpty() ? DefaultAmountFormat : state.fields.accountFormat;
    for (JournalColumns::Column c : {JournalColumns::Debit, JournalColumns::Credit, JournalColumns::Forex,
                                     JournalColumns::Balance, JournalColumns::fxBalance})
        grid.setColFormat(columns[c], amounts);
    grid.setColFormat(columns[JournalColumns::Rate], state.fields.rateFormat);
}

bool ColumnModel::isForeignCurrency(const QString &currency)
{
    const QString c = currency.trimmed().toUpper();
    return !c.isEmpty() && c != QLatin1String("CNY") && c != QLatin1String("RMB") && c != QStringLiteral("人民币") &&
           c != QStringLiteral("本位币");
}

void ColumnModel::showForeignColumns(Book &book)
{
    Sheet &grid = book.sheet();
    const LedgerState &state = book.state();
    for (JournalColumns::Column column : {JournalColumns::Rate, JournalColumns::Forex, JournalColumns::fxBalance}) {
        const QString &key = JournalColumns::key(column);
        const int c = grid.colIndex(key);
        if (c >= grid.fixedCols() && !state.columns.shown.contains(key) &&
            !JournalColumns::inList(state.fields.colsFilter, key))
            grid.setColHidden(c, false);
    }
}

void ColumnModel::applyChoices(Book &book)
{
    Sheet &grid = book.sheet();
    const LedgerState &state = book.state();
    for (auto it = state.columns.shown.cbegin(); it != state.columns.shown.cend(); ++it) {
        const int c = grid.colIndex(it.key());
        if (c >= grid.fixedCols() && !JournalColumns::inList(state.fields.colsFilter, it.key()))
            grid.setColHidden(c, !it.value());
    }
    for (auto it = state.columns.widths.cbegin(); it != state.columns.widths.cend(); ++it) {
        const int c = grid.colIndex(it.key());
        if (c >= grid.fixedCols() && it.value() > 0)
            grid.setColWidth(c, it.value());
    }
}

void ColumnModel::applyRowHeights(Sheet &grid, const RowLooks &looks)
{
    grid.setDefaultRowHeight(looks.rowHeight);
    grid.setRowHeight(0, looks.headerRowHeight);
    for (int r = grid.fixedRows(); r < grid.rows(); ++r)
        if (grid.isSubtotal(r))
            grid.setRowHeight(r, looks.sumRowHeight);
}

bool ColumnModel::isNumericColumn(const Sheet &grid, int col)
{
    const Sheet::DataType t = grid.colDataType(col);
    return t == Sheet::TypeLong || t == Sheet::TypeDouble || t == Sheet::TypeCurrency;
}

void ColumnModel::setColumnFonts(Sheet &grid, QString keys, QString fontName)
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

void ColumnModel::applyExplainTemplate(Book &book, int row, QString templ)
{
    Sheet &grid = book.sheet();
    const LedgerState &state = book.state();
    AccContext *acc = book.context();
    if (!state.mayModify() || !grid.isDataRow(row))
        return;
    const JournalColumns columns(grid);
    const BookRow line(grid, columns, row);
    const QDate date = line.date();
    if (templ.contains(QStringLiteral("[日期]"))) {
        const QString fmt = state.fields.dateFormat.isEmpty() ? QStringLiteral("yyyy-MM-dd") : state.fields.dateFormat;
        templ = replaceFirst(templ, QStringLiteral("[日期]"), date.toString(fmt));
    }
    if (templ.contains(QStringLiteral("[月份]")))
        templ = replaceFirst(templ, QStringLiteral("[月份]"), date.toString(QStringLiteral("yyyy年MM月")));
    if (templ.contains(QStringLiteral("[科目名称]"))) {
        const QString name = acc ? acc->GetAccName(line.accId(), 0) : QString();
        templ = replaceFirst(templ, QStringLiteral("[科目名称]"), name);
    }
    const QString present = line.text(JournalColumns::Explain).trimmed();
    templ = replaceFirst(templ, QStringLiteral("[]"), present);
    line.setText(JournalColumns::Explain, templ);
}

} // namespace kx
