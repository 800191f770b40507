#include "ledger/RowLook.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"

namespace kx {

void RowLook::setLocked(Sheet &grid, const JournalColumns &columns, const RowLooks &looks, int row, bool locked)
{
    BookRow(grid, columns, row).setLockedCell(locked);
    grid.setRowForeColor(row, locked ? looks.lockedColor() : QColor());
}

void RowLook::markSummary(Sheet &grid, const RowLooks &looks, int row)
{
    grid.setSubtotal(row, true);
    grid.setOutlineLevel(row, 0);
    grid.setRowHeight(row, looks.sumRowHeight);
    grid.setCellBold(row, grid.fixedCols(), row, grid.cols() - 1, true);
}

} // namespace kx
