#include "editing/EditRules.h"

#include "editing/AccountRule.h"
#include "editing/AmountRule.h"
#include "editing/DateRule.h"
#include "editing/ExplainRule.h"
#include "editing/RateRule.h"

namespace kx {

EditRules::EditRules()
{
    m_rules.push_back(std::make_unique<DateRule>());
    m_rules.push_back(std::make_unique<AccountRule>());
    m_rules.push_back(std::make_unique<AmountRule>());
    m_rules.push_back(std::make_unique<RateRule>());
    m_rules.push_back(std::make_unique<ExplainRule>());
}

EditRules::~EditRules() = default;

EditRule *EditRules::forColumn(JournalColumns::Column column) const
{
    for (const auto &rule : m_rules)
        if (rule->handles(column))
            return rule.get();
    return nullptr;
}

} // namespace kx
