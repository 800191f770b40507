#include "ledger/RowLook.h"

#include "kxjournal/GridModel.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"

namespace kx {

void RowLook::setLocked(GridModel &grid, const JournalColumns &columns, const RowLooks &looks, int row, bool locked)
{
    BookRow(grid, columns, row).setLockedCell(locked);
    grid.setRowForeColor(row, locked ? looks.lockedColor() : QColor());
}

void RowLook::markSummary(GridModel &grid, const RowLooks &looks, int row)
{
    grid.setSubtotal(row, true);
    grid.setOutlineLevel(row, 0);
    grid.setRowHeight(row, looks.sumRowHeight);
    grid.setCellBold(row, grid.fixedCols(), row, grid.cols() - 1, true);
}

} // namespace kx
