#include "editing/EditSession.h"

#include "editing/EditGate.h"
#include "editing/EditRule.h"
#include "ledger/GridStepCommand.h"
#include "kxjournal/EditCycle.h"
#include "grid/GridChanges.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <QScopedValueRollback>

namespace kx {

EditSession::EditSession(EditContext ctx, QObject *parent)
    : QObject(parent), m_ctx(std::move(ctx)), m_history(m_ctx.grid)
{
    EditCycle *cycle = m_ctx.grid.editCycle();
    connect(cycle, &EditCycle::beforeEdit, this, &EditSession::onBeforeEdit);
    connect(cycle, &EditCycle::keyPressEdit, this, &EditSession::onKeyPress);
    connect(cycle, &EditCycle::validateEdit, this, &EditSession::onValidate);
    connect(cycle, &EditCycle::afterEdit, this, &EditSession::onAfterEdit);
    connect(cycle, &EditCycle::editEnded, this, &EditSession::onEnded);
    connect(cycle, &EditCycle::cellButtonClick, this,
            [this](int row, int col) { Q_EMIT pickerRequested(row, col, m_ctx.grid.colKey(col)); });
}

EditSession::~EditSession()
{
    if (m_recording)
        m_ctx.grid.endChanges();
}

EditRule *EditSession::ruleFor(int col) const
{
    return m_rules.forColumn(m_ctx.columnAt(col));
}

void EditSession::keepBlankRow()
{
    m_ctx.keepBlankRow();
}

void EditSession::clearHistory()
{
    m_history.clear();
    if (m_recording)
        m_dropStep = true;
}

void EditSession::onBeforeEdit(int row, int col, bool &cancel)
{
    m_ctx.cellChanged = false;
    m_ctx.columns = JournalColumns(m_ctx.grid);
    if (cancel)
        return;
    QString list;
    if (!EditGate::mayOpen(m_ctx, row, col, list)) {
        cancel = true;
        return;
    }
    QStringList hints;
    if (list.isEmpty()) {
        const JournalColumns::Column column = m_ctx.columnAt(col);
        if (column == JournalColumns::AccDoc) {
            list = BookRow::of(m_ctx.grid, m_ctx.columns, row).recId() > 0 ? QStringLiteral("|...") : QString();
        } else if (EditRule *rule = ruleFor(col)) {
            list = rule->comboList(m_ctx, row, col);
            hints = rule->comboHints(m_ctx, row, col, list);
        }
    }
    m_ctx.grid.editCycle()->setComboList(list);
    m_ctx.grid.editCycle()->setComboHints(hints);
    if (!m_recording) {
        m_recording = true;
        m_dropStep = false;
        m_before = LedgerMarks::of(m_ctx.state);
        m_historyFit = m_history.fits();
        m_ctx.grid.beginChanges();
    }
}

void EditSession::onKeyPress(int, int col, int &key)
{
    key = EditGate::filterKey(m_ctx, col, key);
}

void EditSession::onValidate(int row, int col, bool &cancel)
{
    EditCycle *cycle = m_ctx.grid.editCycle();
    const Result<QString> checked = m_pipeline.check(row, col, cycle->editText(), origin());
    if (!checked.ok()) {
        cancel = true;
        m_ctx.host.prompt(checked.error(), m_pipeline.refusalBox());
        return;
    }
    cycle->setEditText(checked.value());
}

void EditSession::onAfterEdit(int row, int col)
{
    if (!m_ctx.cellChanged || !m_ctx.grid.isDataRow(row) || !m_ctx.grid.isDataCol(col))
        return;
    m_pipeline.complete(row, col, origin());
    m_pipeline.markBook();
}

void EditSession::onEnded(int row, int col, bool stored)
{
    if (!m_recording)
        return;
    m_recording = false;
    GridChanges changes = m_ctx.grid.endChanges();
    if (m_dropStep || changes.isEmpty())
        return;
    if (!stored) {
        // A refused or abandoned edit leaves nothing behind: whatever the
        // edit wrote on its way is put back.
        if (!changes.isComplete()) {
            m_history.clear();
            return;
        }
        m_ctx.grid.revertChanges(changes);
        if (m_historyFit)
            m_history.adopt();
        return;
    }
    if (!changes.isComplete()) {
        m_history.clear();
        return;
    }
    m_history.push(new GridStepCommand(m_ctx.book, std::move(changes), m_before, row, col, QStringLiteral("输入")),
                   m_historyFit);
}

bool EditSession::applyChosen(int row, int col, const QString &text)
{
    EditCycle *cycle = m_ctx.grid.editCycle();
    QScopedValueRollback<bool> picked(m_ctx.fromPicker, true);
    if (cycle->isEditing() && (cycle->editRow() != row || cycle->editCol() != col))
        cycle->cancel();
    if (!cycle->isEditing())
        return cycle->editCell(row, col, text);
    if (!cycle->validate(text))
        return false;
    cycle->store();
    cycle->finish();
    return true;
}

} // namespace kx
