#pragma once

#include "ledger/JournalColumns.h"

#include <memory>
#include <vector>

namespace kx {

class EditRule;

/// The journal's edit rules, one per kind of column. EditPipeline runs them.
class EditRules
{
public:
    /// Every rule the journal has.
    EditRules();
    ~EditRules();
    /// The rule that looks after \a column, or nullptr.
    EditRule *forColumn(JournalColumns::Column column) const;

private:
    std::vector<std::unique_ptr<EditRule>> m_rules;
};

} // namespace kx
