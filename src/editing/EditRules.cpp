#include "editing/EditRules.h"

#include "editing/AccountRule.h"
#include "editing/AmountRule.h"
#include "editing/DateRule.h"
#include "editing/EditContext.h"
#include "editing/EditGate.h"
#include "editing/ExplainRule.h"
#include "editing/RateRule.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"

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

Result<bool> EditRules::enter(EditContext &ctx, int row, int col, const QString &typed) const
{
    const JournalColumns::Column column = ctx.columnAt(col);
    if (!EditGate::canEditRow(ctx, row))
        return Error(QStringLiteral("该行不能修改"));
    if (!JournalColumns::inList(ctx.state.fields.editFields, ctx.grid.colKey(col)) ||
        column == JournalColumns::AccDoc)
        return Error(QStringLiteral("该列不能输入"));
    QString text = EditGate::stripControlChars(typed).trimmed();
    const BookRow line(ctx.grid, ctx.columns, row);
    ctx.cellChanged = ctx.grid.text(row, col) != text || (!text.isEmpty() && line.accId() == 0);
    if (!ctx.cellChanged)
        return false;
    EditRule *rule = forColumn(column);
    if (text.isEmpty()) {
        if (column == JournalColumns::ShowName || column == JournalColumns::AccName)
            return Error(QStringLiteral("不能为空"));
    } else if (rule) {
        // The account check writes the id it looked for even when it refuses.
        const QString accId = line.text(JournalColumns::AccID);
        if (!rule->validate(ctx, row, col, text)) {
            line.setText(JournalColumns::AccID, accId);
            return Error(QStringLiteral("不能识别"));
        }
    }
    if (!ctx.cellChanged)
        return false;
    ctx.grid.setText(row, col, text);
    if (rule)
        rule->afterEdit(ctx, row, col);
    line.setChangeMark(BookRow::Modified);
    ctx.grid.setCellForeColor(row, col, ctx.state.looks.modifiedForeColor);
    return true;
}

} // namespace kx
