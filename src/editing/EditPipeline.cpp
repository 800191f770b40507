#include "editing/EditPipeline.h"

#include "editing/EditContext.h"
#include "editing/EditGate.h"
#include "editing/EditRule.h"
#include "editing/EditRules.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <QScopedValueRollback>

namespace kx {

namespace {

// The context's flags for one entry from \a origin, put back afterwards.
class OriginScope
{
public:
    OriginScope(EditContext &ctx, EditOrigin origin)
        : m_picked(ctx.fromPicker, origin == EditOrigin::Picker), m_batch(ctx.batch, origin == EditOrigin::Paste)
    {
    }

private:
    QScopedValueRollback<bool> m_picked;
    QScopedValueRollback<bool> m_batch;
};

// What a refused text of \a column is told when its rule said nothing.
QString plainRefusal(JournalColumns::Column column)
{
    switch (column) {
    case JournalColumns::ShowName:
        return QStringLiteral("输入的日期错误；");
    case JournalColumns::AccName:
        return QStringLiteral("找不到这个科目；");
    default:
        return QStringLiteral("不能识别；");
    }
}

} // namespace

EditPipeline::EditPipeline(EditContext &ctx, const EditRules &rules) : m_ctx(ctx), m_rules(rules) {}

bool EditPipeline::takesText(int col) const
{
    return JournalColumns::inList(m_ctx.state.fields.editFields, m_ctx.grid.colKey(col)) &&
           m_ctx.columnAt(col) != JournalColumns::AccDoc;
}

Result<QString> EditPipeline::check(int row, int col, const QString &typed, EditOrigin origin)
{
    const OriginScope scope(m_ctx, origin);
    m_box = false;
    m_ctx.refusal.clear();
    m_ctx.refusalBox = false;
    const JournalColumns::Column column = m_ctx.columnAt(col);
    const QString held = m_ctx.grid.text(row, col);
    // Tabs and line breaks part words; blanks at either end are never meant.
    const QString text = EditGate::stripControlChars(typed).trimmed();
    if (column == JournalColumns::AccDoc) {
        // The voucher cell shows a link, which only the voucher picker makes.
        m_ctx.cellChanged = false;
        if (text != held)
            return Error(QStringLiteral("该列不能输入；"));
        return held;
    }
    const BookRow line(m_ctx.grid, m_ctx.columns, row);
    // A row without an account takes even the text it holds: it is new.
    m_ctx.cellChanged = held != text || (!text.isEmpty() && line.accId() == 0);
    if (!m_ctx.cellChanged)
        return text;
    if (!EditGate::canEditRow(m_ctx, row))
        return Error(QStringLiteral("该行不能修改；"));
    if (!takesText(col))
        return Error(QStringLiteral("该列不能输入；"));
    // A record needs its day and its account: neither is emptied.
    if (text.isEmpty() && column == JournalColumns::ShowName)
        return Error(QStringLiteral("日期不能为空；"));
    if (text.isEmpty() && column == JournalColumns::AccName)
        return Error(QStringLiteral("科目不能为空；"));
    QString checked = text;
    if (EditRule *rule = m_rules.forColumn(column)) {
        // The account check writes the id it looked for, found or not.
        const QString accId = line.text(JournalColumns::AccID);
        if (!rule->validate(m_ctx, row, col, checked)) {
            line.setText(JournalColumns::AccID, accId);
            m_box = m_ctx.refusalBox;
            return Error(m_ctx.refusal.isEmpty() ? plainRefusal(column) : m_ctx.refusal);
        }
    }
    return checked;
}

void EditPipeline::complete(int row, int col, EditOrigin origin)
{
    const OriginScope scope(m_ctx, origin);
    if (EditRule *rule = m_rules.forColumn(m_ctx.columnAt(col)))
        rule->afterEdit(m_ctx, row, col);
    BookRow(m_ctx.grid, m_ctx.columns, row).setChangeMark(BookRow::Modified);
    m_ctx.grid.setCellForeColor(row, col, m_ctx.state.looks.modifiedForeColor);
}

void EditPipeline::markBook()
{
    m_ctx.keepBlankRow();
    m_ctx.host.markDirty();
    m_ctx.state.dirty = true;
    m_ctx.host.markDirty();
}

Result<bool> EditPipeline::enter(int row, int col, const QString &text, EditOrigin origin)
{
    const Result<QString> checked = check(row, col, text, origin);
    if (!checked.ok())
        return Error(checked.error());
    if (!m_ctx.cellChanged)
        return false;
    m_ctx.grid.setText(row, col, checked.value());
    complete(row, col, origin);
    return true;
}

} // namespace kx
