#pragma once

#include "editing/EditRule.h"

class QString;

namespace kx {

class Sheet;

/// The explanation: offers the explanations typed in this session and the
/// book's latest ones as a drop-down list, and remembers each new one typed
/// (not those of a pasted block). An explanation typed or picked that an
/// earlier record carries fills the row's empty account and amount from the
/// latest such record (unless the host turned it off: QuickFill).
class ExplainRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    void afterEdit(EditContext &ctx, int row, int col) override;

    /// The latest record (lowest row) but \a row whose explanation is the one
    /// in (\a row, \a col); -1 when there is none.
    static int latestWith(const Sheet &grid, const JournalColumns &columns, int row, int col);

private:
    // Fills the account and the amount of \a row, where still empty, from
    // the latest record with the same explanation (one undo step with it).
    static void quickFill(EditContext &ctx, int row, int col);
};

} // namespace kx
