#pragma once

#include <QUndoStack>

namespace kx {

class Sheet;

/// The undo history of a grid: a QUndoStack whose steps fit the grid only
/// as long as nothing else changed it. A change made outside the history
/// (a load, a save writing keys back, a summary row, a host writing cells)
/// ends the history: undo then does nothing and the steps are dropped,
/// so no step is ever put back onto rows it was not made on.
class EditHistory
{
public:
    /// The history of \a grid.
    explicit EditHistory(Sheet &grid);

    /// Adds a step whose changes are already in the grid; \a fitted tells
    /// whether the history fitted the grid when the step began (when not,
    /// the earlier steps are dropped).
    void push(QUndoCommand *command, bool fitted);
    /// True when a step can be undone.
    bool canUndo() const;
    /// True when an undone step can be made again.
    bool canRedo() const;
    /// Undoes the latest step; false when there is none.
    bool undo();
    /// Makes the latest undone step again; false when there is none.
    bool redo();
    /// Drops every step (after the undo or redo under way, when one is).
    void clear();
    /// True while the steps fit the grid (nothing else changed it since).
    bool fits() const;
    /// Takes the grid as it is now as fitting the steps: for a caller that
    /// put back every change it made since the history last fitted.
    void adopt();
    /// The stack (for its signals and texts).
    QUndoStack &stack() { return m_stack; }

private:
    bool apply(bool undo);
    Sheet &m_grid;
    QUndoStack m_stack;
    quint64 m_revision = 0;
    bool m_applying = false;      ///< an undo or redo runs (its step must outlive it)
    bool m_clearLater = false;
};

} // namespace kx
