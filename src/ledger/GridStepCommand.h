#pragma once

#include "grid/GridChanges.h"

#include <QList>
#include <QUndoCommand>

namespace kx {

class Book;
class Sheet;
class LedgerHost;
struct LedgerState;

/// What the ledger keeps beside the cells that a step may change: the
/// dirty flag, the last summary row and the keys waiting to be deleted.
struct LedgerMarks {
    bool dirty = false;
    int lastSumRow = 0;
    QList<int> removedRecords;
    /// The marks \a state holds now.
    static LedgerMarks of(const LedgerState &state);
    /// Puts the marks back into \a state.
    void applyTo(LedgerState &state) const;
};

/// One undoable step of the grid: every change it made (cells, looks, row
/// marks, rows inserted, removed and moved) and the ledger marks before and
/// after. Balances are not among them: undo and redo put the changes back
/// and work the balances out again. Undo returns the cursor to the cell.
class GridStepCommand : public QUndoCommand
{
public:
    /// The step that made \a changes on \a book at (\a row, \a col), the
    /// marks being \a before before it and as the book's state holds them now.
    GridStepCommand(Book &book, GridChanges changes, LedgerMarks before, int row, int col, const QString &text);
    void undo() override;
    void redo() override;

private:
    void flip(const LedgerMarks &marks);
    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    GridChanges m_changes;
    LedgerMarks m_before;
    LedgerMarks m_after;
    int m_row;
    int m_col;
    bool m_done = true;  ///< the changes are in the grid (pushing must not make them twice)
};

} // namespace kx
