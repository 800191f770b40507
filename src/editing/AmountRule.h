#pragma once

#include "editing/EditRule.h"
#include "kxjournal/Currency.h"

namespace kx {

/// The amount columns (debit, credit, foreign amount): a number is kept as
/// typed, anything else is worked out as a formula and rounded to two
/// places ("公式计算错误。" and 0 when it cannot be). Once stored, debit and
/// credit exclude each other, the rate is carried down from the row above,
/// the foreign amount follows rate and side, and the balances below are
/// worked out again.
class AmountRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    bool validate(EditContext &ctx, int row, int col, QString &text) override;
    void afterEdit(EditContext &ctx, int row, int col) override;

    /// True when \a text is a plain number an amount cell keeps as it is.
    static bool isPlainNumber(const QString &text);
    /// The text an amount cell stores for \a text: the number itself, or the
    /// formula's value to \a decimals places (0, after saying so through
    /// \a ctx, when it fails).
    static QString amountText(EditContext &ctx, const QString &text, int decimals = 2);
    /// \a rate × \a amount, or invalid when it does not fit.
    static Currency times(Currency rate, Currency amount);
};

} // namespace kx
