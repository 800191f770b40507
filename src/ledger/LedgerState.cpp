#include "ledger/LedgerState.h"

#include <algorithm>

#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"

namespace kx {

int LedgerState::outlineColumn(const Sheet &grid) const
{
    return grid.colIndex(fields.outlineKey.isEmpty() ? JournalColumns::key(JournalColumns::JnlDate)
                                                     : fields.outlineKey);
}

void LedgerState::rowsInserted(int at, int count)
{
    if (lastSumRow > 0 && lastSumRow >= at)
        lastSumRow += count;
}

void LedgerState::rowsRemoved(const Sheet &grid, int at, int count)
{
    if (lastSumRow <= 0 || lastSumRow < at)
        return;
    if (lastSumRow >= at + count) {
        lastSumRow -= count;
        return;
    }
    const int first = grid.fixedRows();
    const int tag = grid.colIndex(JournalColumns::key(JournalColumns::Tag));
    int walk = std::min(at - 1, grid.rows() - 1);
    while (walk > first && !BookRow::isSummaryCell(grid, walk, tag))
        --walk;
    lastSumRow = walk > first ? walk : 0;
}

void LedgerState::rowMoved(int from, int to)
{
    if (lastSumRow <= 0 || from == to)
        return;
    if (lastSumRow == from)
        lastSumRow = to;
    else if (from < lastSumRow && lastSumRow <= to)
        --lastSumRow;
    else if (to <= lastSumRow && lastSumRow < from)
        ++lastSumRow;
}

} // namespace kx
