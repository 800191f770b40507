#include "ledger/LedgerStep.h"

#include "grid/GridChanges.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/EditHistory.h"
#include "ledger/GridStepCommand.h"
#include "ledger/LedgerState.h"

namespace kx {

bool LedgerStep::record(Book &book, EditHistory *history, const QString &text, const std::function<bool()> &work)
{
    Sheet &grid = book.sheet();
    // Inside another record (an edit under way) the work belongs to that step.
    if (!history || grid.isRecordingChanges())
        return work();
    const bool fitted = history->fits();
    LedgerMarks before = LedgerMarks::of(book.state());
    const int row = grid.row();
    const int col = grid.col();
    grid.beginChanges();
    const bool ok = work();
    GridChanges changes = grid.endChanges();
    const LedgerMarks after = LedgerMarks::of(book.state());
    if (changes.isEmpty() && after.dirty == before.dirty && after.lastSumRow == before.lastSumRow &&
        after.removedRecords == before.removedRecords) {
        if (fitted)
            history->adopt();
        return ok;
    }
    if (!changes.isComplete()) {
        history->clear();
        return ok;
    }
    history->push(new GridStepCommand(book, std::move(changes), std::move(before), row, col, text), fitted);
    return ok;
}

} // namespace kx
