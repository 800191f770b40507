#pragma once

#include "ledger/JournalColumns.h"

#include <QString>

namespace kx {

struct EditContext;

/// One column's part of the edit cycle: the editor it offers, the check of
/// what was typed, and what it does to the row once the cell is stored.
/// A rule knows the columns it looks after; the session asks the first rule
/// that handles the edited column. Adding a rule is adding one class.
class EditRule
{
public:
    virtual ~EditRule();

    /// True when the rule looks after \a column.
    virtual bool handles(JournalColumns::Column column) const = 0;
    /// The editor for (\a row, \a col) on a row that may be changed: "|..." a text
    /// box with an ellipsis button, "a|b" a drop-down list, empty a text box.
    virtual QString comboList(EditContext &ctx, int row, int col) const;
    /// What the drop-down list \a list shows beside each of its items (see
    /// EditCycle::comboHints()); none by default.
    virtual QStringList comboHints(EditContext &ctx, int row, int col, const QString &list) const;
    /// Checks and may rewrite \a text, the changed text for (row, col);
    /// false refuses it, saying why through EditContext::refuse() when the
    /// edit pipeline's plain word for the column would not do.
    virtual bool validate(EditContext &ctx, int row, int col, QString &text);
    /// Completes the row after the stored change of (row, col).
    virtual void afterEdit(EditContext &ctx, int row, int col);
};

} // namespace kx
