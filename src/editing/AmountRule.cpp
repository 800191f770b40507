#include "editing/AmountRule.h"

#include "editing/EditContext.h"
#include "editing/FormulaEvaluator.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <QRegularExpression>

namespace kx {

bool AmountRule::handles(JournalColumns::Column column) const
{
    return column == JournalColumns::Debit || column == JournalColumns::Credit || column == JournalColumns::Forex;
}

QString AmountRule::comboList(EditContext &ctx, int, int col) const
{
    // The calculator belongs to the two local amounts.
    const JournalColumns::Column c = ctx.columnAt(col);
    return c == JournalColumns::Forex ? QString() : QStringLiteral("|...");
}

bool AmountRule::isPlainNumber(const QString &text)
{
    static const QRegularExpression plain(QStringLiteral("^[+-]?(\\d+\\.?\\d*|\\.\\d+)$"));
    return plain.match(text).hasMatch() && Currency::fromStoredText(text).ok();
}

Result<QString> AmountRule::amountText(const QString &typed, int decimals)
{
    const QString trimmed = typed.trimmed();
    // An emptied amount cell stays empty.
    if (trimmed.isEmpty())
        return QString();
    // A figure as spreadsheets show it: the digits in groups of three.
    static const QRegularExpression grouped(QStringLiteral("^[+-]?\\d{1,3}(,\\d{3})+(\\.\\d*)?$"));
    const QString text = grouped.match(trimmed).hasMatch() ? QString(trimmed).remove(QLatin1Char(',')) : typed;
    if (isPlainNumber(text))
        return text;
    const Result<Currency> value = FormulaEvaluator::evaluate(text, decimals);
    if (!value.ok())
        return Error(value.error());
    return value.value().toString();
}

BalanceReach::Share AmountRule::shareWith(EditContext &ctx, int row, int col, Currency value)
{
    const BookRow line(ctx.grid, ctx.columns, row);
    Currency debit = line.debit(), credit = line.credit(), forex = line.forex();
    Currency rate = line.amount(JournalColumns::Rate);
    switch (ctx.columnAt(col)) {
    case JournalColumns::Debit:
        debit = value;
        credit = value.isZero() ? credit : Currency();
        break;
    case JournalColumns::Credit:
        credit = value;
        debit = value.isZero() ? debit : Currency();
        break;
    case JournalColumns::Forex:
        return {debit - credit, value};
    case JournalColumns::Rate:
        rate = value;
        forex = times(rate, debit.isZero() ? -credit : debit);
        return {debit - credit, forex.isValid() ? forex : Currency()};
    default:
        break;
    }
    // As afterEdit() completes the row: the rate from above, the foreign
    // amount from the rate, on the side of the amount.
    if (rate.isZero() && row > ctx.grid.fixedRows())
        rate = BookRow::of(ctx.grid, ctx.columns, row - 1).amount(JournalColumns::Rate);
    if (forex.isZero() && rate.sign() > 0) {
        const Currency derived = times(rate, debit.isZero() ? -credit : debit);
        forex = derived.isValid() ? derived : Currency();
    } else if ((forex.sign() > 0 && !credit.isZero()) || (forex.sign() < 0 && !debit.isZero())) {
        forex = -forex;
    }
    return {debit - credit, forex};
}

bool AmountRule::checkAmount(EditContext &ctx, int row, int col, QString &text, int decimals)
{
    const Result<QString> amount = amountText(text, decimals);
    if (!amount.ok()) {
        ctx.refuse(amount.error(), true);
        return false;
    }
    const Currency value = Currency::fromText(amount.value()).valueOr(Currency::invalid());
    QString why = BalanceReach::refusal(ctx, value);
    // A paste checks the balances once per row, as it goes.
    if (why.isEmpty() && !ctx.batch && ctx.grid.isDataRow(row)) {
        const BalanceReach reach(ctx);
        const BalanceReach::Share before = reach.share(row);
        // A row without a day does not count towards the balances yet.
        if (!ctx.grid.isEmpty(row, ctx.state.outlineColumn(ctx.grid)) && !BookRow::of(ctx.grid, ctx.columns, row).isSummary()) {
            const BalanceReach::Share after = shareWith(ctx, row, col, value);
            why = reach.check(row, {after.local - before.local, after.foreign - before.foreign});
        }
    }
    if (!why.isEmpty()) {
        ctx.refuse(why, true);
        return false;
    }
    text = amount.value();
    return true;
}

bool AmountRule::validate(EditContext &ctx, int row, int col, QString &text)
{
    return checkAmount(ctx, row, col, text, 2);
}

Currency AmountRule::times(Currency rate, Currency amount)
{
    const Result<Currency> product = Currency::multiply(rate, amount);
    return product.ok() ? product.value() : Currency::invalid();
}

void AmountRule::afterEdit(EditContext &ctx, int row, int col)
{
    const JournalColumns::Column edited = ctx.columnAt(col);
    const BookRow line(ctx.grid, ctx.columns, row);
    if (edited != JournalColumns::Forex) {
        // A side with an amount empties the other; a 0 leaves it alone.
        if (!line.amount(edited).isZero())
            line.setText(edited == JournalColumns::Debit ? JournalColumns::Credit : JournalColumns::Debit, QString());
        if (row > ctx.grid.fixedRows() && line.amount(JournalColumns::Rate).isZero()) {
            const Currency above = BookRow::of(ctx.grid, ctx.columns, row - 1).amount(JournalColumns::Rate);
            if (!above.isZero())
                ctx.grid.setAmount(row, ctx.columns[JournalColumns::Rate], above);
        }
        const Currency rate = line.amount(JournalColumns::Rate);
        const Currency debit = line.debit();
        const Currency credit = line.credit();
        const Currency forex = line.forex();
        const int forexCol = ctx.columns[JournalColumns::Forex];
        if (forex.isZero() && rate.sign() > 0) {
            const Currency value = times(rate, debit.isZero() ? -credit : debit);
            if (value.isValid() && !value.isZero())
                ctx.grid.setAmount(row, forexCol, value);
        } else if (!forex.isZero()) {
            // The foreign amount takes the sign of the side the amount is on.
            if ((forex.sign() > 0 && !credit.isZero()) || (forex.sign() < 0 && !debit.isZero()))
                ctx.grid.setAmount(row, forexCol, -forex);
        }
    }
    if (!ctx.batch)
        BalanceCalculator(ctx.book).calculate(row);
}

} // namespace kx
