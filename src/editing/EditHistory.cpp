#include "editing/EditHistory.h"

#include "kxjournal/GridModel.h"

namespace kx {

EditHistory::EditHistory(GridModel &grid) : m_grid(grid) {}

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
    return fits() && m_stack.canUndo();
}

bool EditHistory::canRedo() const
{
    return fits() && m_stack.canRedo();
}

bool EditHistory::undo()
{
    if (!fits())
        clear();
    if (!m_stack.canUndo())
        return false;
    m_stack.undo();
    m_revision = m_grid.revision();
    return true;
}

bool EditHistory::redo()
{
    if (!fits())
        clear();
    if (!m_stack.canRedo())
        return false;
    m_stack.redo();
    m_revision = m_grid.revision();
    return true;
}

void EditHistory::adopt()
{
    m_revision = m_grid.revision();
}

void EditHistory::clear()
{
    m_stack.clear();
    m_revision = m_grid.revision();
}

} // namespace kx
