#include "editing/AmountRule.h"

#include "editing/EditContext.h"
#include "editing/FormulaEvaluator.h"
#include "kxjournal/GridModel.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"

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

QString AmountRule::amountText(EditContext &ctx, const QString &text, int decimals)
{
    // An emptied amount cell stays empty.
    if (isPlainNumber(text) || text.trimmed().isEmpty())
        return text.trimmed().isEmpty() ? QString() : text;
    const Result<Currency> value = FormulaEvaluator::evaluate(text, decimals);
    if (!value.ok()) {
        ctx.host.prompt(value.error(), true);
        return QStringLiteral("0");
    }
    return value.value().toString();
}

bool AmountRule::validate(EditContext &ctx, int, int, QString &text)
{
    text = amountText(ctx, text);
    return true;
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
        BalanceCalculator(ctx.grid, ctx.state).calculate(row);
}

} // namespace kx
