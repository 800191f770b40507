#include "ledger/GridStepCommand.h"

#include "ledger/Book.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

namespace kx {

LedgerMarks LedgerMarks::of(const LedgerState &state)
{
    return {state.dirty, state.lastSumRow, state.removedRecords};
}

void LedgerMarks::applyTo(LedgerState &state) const
{
    state.dirty = dirty;
    state.lastSumRow = lastSumRow;
    state.removedRecords = removedRecords;
}

GridStepCommand::GridStepCommand(Book &book, GridChanges changes, LedgerMarks before, int row, int col,
                                 const QString &text)
    : QUndoCommand(text), m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host()),
      m_changes(std::move(changes)), m_before(std::move(before)), m_after(LedgerMarks::of(m_state)), m_row(row),
      m_col(col)
{
}

void GridStepCommand::flip(const LedgerMarks &marks)
{
    GridChanges back = m_grid.revertChanges(m_changes);
    // A record the grid would not take back is kept, and the step stays where it is.
    if (back.isEmpty() && !m_changes.isEmpty())
        return;
    m_changes = std::move(back);
    m_done = !m_done;
    marks.applyTo(m_state);
    // The step kept what the user did; balances follow from it again.
    BalanceCalculator(m_book).rederive();
    m_host.dirtyRestored(marks.dirty);
    if (m_grid.isDataRow(m_row) && m_grid.isDataCol(m_col))
        m_grid.setCursor(m_row, m_col);
}

void GridStepCommand::undo()
{
    if (m_done)
        flip(m_before);
}

void GridStepCommand::redo()
{
    if (!m_done)
        flip(m_after);
}

} // namespace kx
