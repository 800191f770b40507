#pragma once

#include "kxjournal/Result.h"
#include "ledger/JournalColumns.h"

#include <memory>
#include <vector>

namespace kx {

class EditRule;
struct EditContext;

/// The journal's edit rules, one per kind of column, and the entry of a
/// text into a cell through them without an editor (what a paste does).
class EditRules
{
public:
    /// Every rule the journal has.
    EditRules();
    ~EditRules();
    /// The rule that looks after \a column, or nullptr.
    EditRule *forColumn(JournalColumns::Column column) const;
    /// Enters \a text into (\a row, \a col) as typing it would: the row and
    /// the column must be open to changes, the rule checks and completes
    /// it, and the row gets its change mark and the cell the changed
    /// colour. An empty text empties the cell (not a date or an account).
    /// The book is not marked dirty here. True when the cell changed; a
    /// refusal gives the reason (the rule's message when it said one).
    Result<bool> enter(EditContext &ctx, int row, int col, const QString &text) const;

private:
    std::vector<std::unique_ptr<EditRule>> m_rules;
};

} // namespace kx
