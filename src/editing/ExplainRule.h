#pragma once

#include "editing/EditRule.h"

namespace kx {

/// The explanation: offers the explanations typed in this session and the
/// book's latest ones as a drop-down list, and remembers each new one typed
/// (not those of a pasted block).
class ExplainRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    void afterEdit(EditContext &ctx, int row, int col) override;
};

} // namespace kx
