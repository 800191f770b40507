#include "editing/EditGate.h"

#include "editing/EditContext.h"
#include "kxjournal/EditCycle.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"

namespace kx {

bool EditGate::canEditRow(const EditContext &ctx, int row)
{
    if (ctx.state.isConsolidated() || !ctx.state.mayModify() || !ctx.grid.isDataRow(row))
        return false;
    const BookRow line = BookRow::of(ctx.grid, ctx.columns, row);
    if (line.isSummary() || line.isLocked() || line.dirId() > 0)
        return false;
    // Above the last summary row lies a closed period, whether or not its
    // rows were marked locked yet (closing a month only colours them).
    if (ctx.state.lastSumRow > ctx.grid.fixedRows() && row < ctx.state.lastSumRow)
        return false;
    return !ctx.state.unwritable.contains(line.recId());
}

bool EditGate::mayOpen(const EditContext &ctx, int row, int col, QString &comboList)
{
    if (ctx.state.isConsolidated())
        return false;
    const JournalColumns::Column column = ctx.columnAt(col);
    if (canEditRow(ctx, row))
        return JournalColumns::inList(ctx.state.fields.editFields, ctx.grid.colKey(col));
    // A record that may not change still lets its voucher and account be looked at.
    const bool picker = column == JournalColumns::AccDoc || column == JournalColumns::AccName;
    if (!picker || BookRow::of(ctx.grid, ctx.columns, row).recId() <= 0)
        return false;
    comboList = QStringLiteral("|...");
    return true;
}

bool EditGate::isNumericColumn(const EditContext &ctx, int col)
{
    const QString key = ctx.grid.colKey(col);
    if (JournalColumns::inList(ctx.state.fields.numericFields, key))
        return true;
    const JournalColumns::Column c = JournalColumns::fromKey(key);
    return c == JournalColumns::Debit || c == JournalColumns::Credit || c == JournalColumns::Forex;
}

int EditGate::filterKey(const EditContext &ctx, int col, int key)
{
    switch (key) {
    case EditCycle::KeyTab:
    case EditCycle::KeyEnter:
    case EditCycle::KeyBackspace:
    case EditCycle::KeyEscape:
        return key;
    default:
        break;
    }
    // The voucher cell shows a link; it changes only through the voucher picker.
    if (ctx.columnAt(col) == JournalColumns::AccDoc)
        return 0;
    if (!isNumericColumn(ctx, col))
        return key;
    static const QString allowed = QStringLiteral("0123456789./*-+()×÷−");
    return key > 0 && key < 0x10000 && allowed.contains(QChar(char16_t(key))) ? key : 0;
}

QString EditGate::stripControlChars(const QString &text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t ch = text.at(i).unicode();
        if (ch >= 32)
            out += QChar(ch);
        else if (ch == u'\t' || ch == u'\n' || (ch == u'\r' && (i + 1 == text.size() || text.at(i + 1) != u'\n')))
            out += QLatin1Char(' ');  // a line break (CR LF once) or a tab parts words
    }
    return out;
}

} // namespace kx
