#include "ledger/EditHistory.h"

#include "grid/Sheet.h"

namespace kx {

EditHistory::EditHistory(Sheet &grid) : m_grid(grid) {}

bool EditHistory::fits() const
{
    return m_grid.revision() == m_revision;
}

void EditHistory::push(QUndoCommand *command, bool fitted)
{
    if (!fitted)
        m_stack.clear();
    m_stack.push(command);
    m_revision = m_grid.revision();
}

bool EditHistory::canUndo() const
{
    return fits() && !m_grid.isRecordingChanges() && m_stack.canUndo();
}

bool EditHistory::canRedo() const
{
    return fits() && !m_grid.isRecordingChanges() && m_stack.canRedo();
}

bool EditHistory::apply(bool undo)
{
    // Not in the middle of an edit (its record is still open) nor of
    // another undo (a host's handler of the events it raises).
    if (m_applying || m_grid.isRecordingChanges())
        return false;
    if (!fits())
        clear();
    if (undo ? !m_stack.canUndo() : !m_stack.canRedo())
        return false;
    m_applying = true;
    undo ? m_stack.undo() : m_stack.redo();
    m_applying = false;
    m_revision = m_grid.revision();
    if (m_clearLater) {
        m_clearLater = false;
        clear();
    }
    return true;
}

bool EditHistory::undo()
{
    return apply(true);
}

bool EditHistory::redo()
{
    return apply(false);
}

void EditHistory::adopt()
{
    m_revision = m_grid.revision();
}

void EditHistory::clear()
{
    if (m_applying) {
        m_clearLater = true;
        return;
    }
    m_stack.clear();
    m_revision = m_grid.revision();
}

} // namespace kx
