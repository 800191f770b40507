#pragma once

#include "kxjournal/GridChanges.h"

#include <QUndoCommand>

namespace kx {

class GridModel;
class LedgerHost;
struct LedgerState;

/// One undoable step of the grid: every change a completed edit made (the
/// cell, what the rules wrote into the row, the balances below, the row
/// added at the bottom, colours and marks) and the dirty flag before and
/// after. Undo puts the grid back and returns the cursor to the cell; redo
/// makes the changes again.
class GridEditCommand : public QUndoCommand
{
public:
    /// The step that made \a changes on \a grid at (\a row, \a col).
    GridEditCommand(GridModel &grid, LedgerState &state, LedgerHost &host, GridChanges changes, bool dirtyBefore,
                    int row, int col, const QString &text);

    void undo() override;
    void redo() override;

private:
    void flip(bool dirty);

    GridModel &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    GridChanges m_changes;
    bool m_dirtyBefore;
    bool m_dirtyAfter;
    int m_row;
    int m_col;
    bool m_done = true;  ///< the changes are in the grid (pushing must not make them twice)
};

} // namespace kx
