#include "ledger/RowLook.h"

#include "data/BookState.h"
#include "kxjournal/GridModel.h"

namespace kx {

bool RowLook::isSummary(const GridModel &grid, int row)
{
    return grid.value(row, QStringLiteral("Tag")) < 0;
}

int RowLook::outlineColumn(const GridModel &grid, const BookState &book)
{
    return grid.colIndex(book.outlineKey.isEmpty() ? QStringLiteral("JnlDate") : book.outlineKey);
}

bool RowLook::isBlank(const GridModel &grid, const BookState &book, int row)
{
    return grid.text(row, outlineColumn(grid, book)).isEmpty();
}

void RowLook::setLocked(GridModel &grid, const BookState &book, int row, bool locked)
{
    grid.setText(row, QStringLiteral("Locked"), locked ? QStringLiteral("1") : QStringLiteral("0"));
    grid.setRowForeColor(row, locked ? book.lockedForeColor : QColor());
}

void RowLook::markSummary(GridModel &grid, const BookState &book, int row)
{
    grid.setSubtotal(row, true);
    grid.setOutlineLevel(row, 0);
    grid.setRowHeight(row, book.sumRowHeight);
    grid.setCellBold(row, grid.fixedCols(), row, grid.cols() - 1, true);
}

} // namespace kx
