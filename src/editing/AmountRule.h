#pragma once

#include "editing/BalanceReach.h"
#include "editing/EditRule.h"
#include "kxjournal/Currency.h"
#include "kxjournal/Result.h"

namespace kx {

/// The amount columns (debit, credit, foreign amount): a number is kept as
/// typed, a figure grouped by commas as spreadsheets show it ("1,234.56")
/// is read as the number, anything else is worked out as a formula and
/// rounded to two places. What is no amount ("公式计算错误。"), an amount
/// the book's engine would not store exactly, and an amount whose balances
/// would not be stored exactly are refused with a message, and the cell
/// keeps what it held. Once stored, debit and credit exclude each other,
/// the rate is carried down from the row above, the foreign amount follows
/// rate and side, and the balances below are worked out again.
class AmountRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    bool validate(EditContext &ctx, int row, int col, QString &text) override;
    void afterEdit(EditContext &ctx, int row, int col) override;

    /// True when \a text is a plain number an amount cell keeps as it is.
    static bool isPlainNumber(const QString &text);
    /// The text an amount cell stores for \a text: empty for a blank text,
    /// the number itself, or the formula's value to \a decimals places; an
    /// error with the message when it is none of these.
    static Result<QString> amountText(const QString &text, int decimals = 2);
    /// Checks \a text for (\a row, \a col) and rewrites it to what the cell
    /// stores: the amount must be one, the engine must store it exactly,
    /// and, unless many cells are entered at once, the balances it leads to
    /// too. Says why through \a ctx (EditContext::refuse()) and gives false when not.
    static bool checkAmount(EditContext &ctx, int row, int col, QString &text, int decimals);
    /// \a rate × \a amount, or invalid when it does not fit.
    static Currency times(Currency rate, Currency amount);

private:
    /// What \a row would add to the balances with \a value in \a col, as
    /// afterEdit() completes the row.
    static BalanceReach::Share shareWith(EditContext &ctx, int row, int col, Currency value);
};

} // namespace kx
