#include "editing/GridEditCommand.h"

#include "kxjournal/GridModel.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

namespace kx {

GridEditCommand::GridEditCommand(GridModel &grid, LedgerState &state, LedgerHost &host, GridChanges changes,
                                 bool dirtyBefore, int row, int col, const QString &text)
    : QUndoCommand(text), m_grid(grid), m_state(state), m_host(host), m_changes(std::move(changes)),
      m_dirtyBefore(dirtyBefore), m_dirtyAfter(state.dirty), m_row(row), m_col(col)
{
}

void GridEditCommand::flip(bool dirty)
{
    GridChanges back = m_grid.revertChanges(m_changes);
    // A record the grid would not take back is kept, and the step stays where it is.
    if (back.isEmpty() && !m_changes.isEmpty())
        return;
    m_changes = std::move(back);
    m_done = !m_done;
    m_state.dirty = dirty;
    m_host.dirtyRestored(dirty);
    if (m_grid.isDataRow(m_row) && m_grid.isDataCol(m_col))
        m_grid.setCursor(m_row, m_col);
}

void GridEditCommand::undo()
{
    if (m_done)
        flip(m_dirtyBefore);
}

void GridEditCommand::redo()
{
    if (!m_done)
        flip(m_dirtyAfter);
}

} // namespace kx
