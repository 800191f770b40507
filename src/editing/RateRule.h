#pragma once

#include "editing/EditRule.h"

namespace kx {

/// The exchange rate: a number or a formula (kept to four places); once stored, the foreign
/// amount becomes rate × the row's amount (negative on the credit side) and
/// the balances below are worked out again.
class RateRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    bool validate(EditContext &ctx, int row, int col, QString &text) override;
    void afterEdit(EditContext &ctx, int row, int col) override;
};

} // namespace kx
