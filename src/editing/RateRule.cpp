#include "editing/RateRule.h"

#include "editing/AmountRule.h"
#include "editing/EditContext.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"

namespace kx {

bool RateRule::handles(JournalColumns::Column column) const
{
    return column == JournalColumns::Rate;
}

bool RateRule::validate(EditContext &ctx, int row, int col, QString &text)
{
    // A rate keeps every place a value can hold: "1/7.1" is 0.1408, not 0.14.
    return AmountRule::checkAmount(ctx, row, col, text, 4);
}

void RateRule::afterEdit(EditContext &ctx, int row, int)
{
    const BookRow line(ctx.grid, ctx.columns, row);
    const Currency debit = line.debit();
    const Currency value = AmountRule::times(line.amount(JournalColumns::Rate), debit.isZero() ? -line.credit() : debit);
    if (value.isValid())
        ctx.grid.setAmount(row, ctx.columns[JournalColumns::Forex], value);
    if (!ctx.batch)
        BalanceCalculator(ctx.book).calculate(row);
}

} // namespace kx
