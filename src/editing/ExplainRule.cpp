#include "editing/ExplainRule.h"

#include "data/ExplainMemo.h"
#include "editing/AccountLookup.h"
#include "editing/EditContext.h"
#include "grid/ColumnReader.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"

namespace kx {

bool ExplainRule::handles(JournalColumns::Column column) const
{
    return column == JournalColumns::Explain;
}

namespace {

QStringList offered(EditContext &ctx)
{
    const int book = ctx.state.savedDocId();
    if (ctx.explainListBook != book) {
        ctx.explainList.clear();
        ctx.explainMemo.clear();
        if (const Database *db = ctx.db()) {
            ctx.explainList = AccountLookup(*db).bookExplains(book);
            ctx.explainMemo = ExplainMemo::load(*db, book).valueOr(QStringList());
        }
        ctx.explainListBook = book;
    }
    // What the cashier keeps comes first, then what was typed lately; each
    // text once.
    QStringList items;
    for (const QString &t : ctx.explainMemo)
        if (!items.contains(t))
            items << t;
    for (const QString &t : ctx.explainHistory.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        if (!items.contains(t))
            items << t;
    for (const QString &t : ctx.explainList.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        if (!items.contains(t))
            items << t;
    return items;
}

} // namespace

QString ExplainRule::texts(EditContext &ctx)
{
    const QStringList items = offered(ctx);
    return items.isEmpty() ? QString() : QLatin1Char('|') + items.join(QLatin1Char('|'));
}

QString ExplainRule::comboList(EditContext &ctx, int, int) const
{
    return texts(ctx);
}

QStringList ExplainRule::comboHints(EditContext &ctx, int, int, const QString &list) const
{
    return hints(ctx, list.split(QLatin1Char('|'), Qt::SkipEmptyParts));
}

QStringList ExplainRule::hints(const EditContext &ctx, const QStringList &texts)
{
    QStringList out(texts.size());
    const Sheet &grid = ctx.grid;
    const int col = ctx.columns[JournalColumns::Explain];
    if (col < 0 || texts.isEmpty())
        return out;
    // The texts as the cells that hold them: equal texts are one pooled
    // cell, so the column is read from the bottom up without a text made.
    QHash<quint64, int> wanted;
    for (int i = 0; i < texts.size(); ++i) {
        bool held = false;
        const Cell cell = grid.cellStore().cellOf(texts.at(i), held);
        if (held && cell.kind() != Cell::Empty)
            wanted.insert(cell.bits(), i);
    }
    ColumnReader cells(grid.cellStore(), col);
    for (int r = grid.rows() - 1; r >= grid.fixedRows() && !wanted.isEmpty(); --r) {
        const auto it = wanted.constFind(cells.at(r).bits());
        if (it == wanted.constEnd())
            continue;
        const BookRow record = BookRow::of(grid, ctx.columns, r);
        if (record.isSummary() || !record.isDated() || record.isOpening())
            continue;
        const Currency debit = record.debit(), credit = record.credit();
        QString note = record.text(JournalColumns::AccName);
        if (!debit.isZero() || !credit.isZero()) {
            const bool inSide = !debit.isZero();
            note += (note.isEmpty() ? QString() : QStringLiteral("  ")) + (inSide ? QStringLiteral("借 ") : QStringLiteral("贷 ")) +
                    (inSide ? debit : credit).format(QStringLiteral("#,##0.00"));
        }
        out[it.value()] = note;
        wanted.erase(it);
    }
    return out;
}

void ExplainRule::afterEdit(EditContext &ctx, int row, int col)
{
    // The list remembers what was typed. A pasted block is not typing: its
    // explanations, often every one different, would bury the typed ones
    // and make each further line search a longer list.
    if (ctx.batch)
        return;
    const QString text = ctx.grid.text(row, col);
    if (!text.contains(QLatin1Char('|')) && !ctx.explainHistory.contains(text))
        ctx.explainHistory = text + QLatin1Char('|') + ctx.explainHistory;
    if (ctx.state.quickFill && !text.isEmpty())
        quickFill(ctx, row, col);
}

int ExplainRule::latestWith(const Sheet &grid, const JournalColumns &columns, int row, int col)
{
    // Equal texts are one pooled text: the column is searched by its cells,
    // from the bottom (the latest records) up, with no text made.
    const Cell wanted = grid.cellStore().cell(row, col);
    if (wanted.kind() != Cell::Text)
        return -1;
    ColumnReader cells(grid.cellStore(), col);
    for (int r = grid.rows() - 1; r >= grid.fixedRows(); --r) {
        if (r == row || cells.at(r) != wanted)
            continue;
        const BookRow record = BookRow::of(grid, columns, r);
        if (!record.isSummary() && record.isDated())
            return r;
    }
    return -1;
}

void ExplainRule::quickFill(EditContext &ctx, int row, int col)
{
    Sheet &grid = ctx.grid;
    const JournalColumns &columns = ctx.columns;
    const BookRow here(grid, columns, row);
    if (here.isSummary() || here.isOpening())
        return;
    const int from = latestWith(grid, columns, row, col);
    if (from < 0)
        return;
    const BookRow source = BookRow::of(grid, columns, from);
    bool amount = false;
    // Only what is still empty is filled: the cashier's own entries stand.
    if (here.text(JournalColumns::AccName).isEmpty() && here.number(JournalColumns::AccID) == 0 &&
        !source.text(JournalColumns::AccName).isEmpty()) {
        here.setText(JournalColumns::AccName, source.text(JournalColumns::AccName));
        here.setText(JournalColumns::AccID, source.text(JournalColumns::AccID));
    }
    if (here.text(JournalColumns::Debit).isEmpty() && here.text(JournalColumns::Credit).isEmpty()) {
        for (JournalColumns::Column side : {JournalColumns::Debit, JournalColumns::Credit}) {
            const Currency value = source.amount(side);
            if (value.isValid() && !value.isZero()) {
                grid.setAmount(row, columns[side], value);
                // A record in a foreign currency brings its rate and foreign amount.
                for (JournalColumns::Column fx : {JournalColumns::Rate, JournalColumns::Forex})
                    if (columns[fx] >= 0 && here.text(fx).isEmpty() && !source.text(fx).isEmpty())
                        here.setText(fx, source.text(fx));
                amount = true;
                break;
            }
        }
    }
    if (amount && here.isDated())
        BalanceCalculator(ctx.book).calculate(row);
}

} // namespace kx
