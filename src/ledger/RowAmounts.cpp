#include "ledger/RowAmounts.h"

#include "grid/CellStore.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"

#include <iterator>

namespace kx {

RowAmounts::RowAmounts(const Sheet &grid, const LedgerState &state) : m_grid(grid), m_store(grid.cellStore())
{
    const JournalColumns columns(grid);
    debitCol = columns[JournalColumns::Debit];
    creditCol = columns[JournalColumns::Credit];
    forexCol = columns[JournalColumns::Forex];
    tagCol = columns[JournalColumns::Tag];
    outlineCol = state.outlineColumn(grid);
    for (int col : {outlineCol, tagCol, debitCol, creditCol, forexCol})
        readAhead(col);
}

void RowAmounts::readAhead(int col)
{
    if (col >= 0 && m_aheadCount < int(std::size(m_ahead)))
        m_ahead[m_aheadCount++] = col;
}

void RowAmounts::fetchAhead(int row) const
{
#if defined(__GNUC__)
    if (row >= m_store.rows())
        return;
    const Cell *cells = m_store.rowCells(row);
    for (int i = 0; i < m_aheadCount; ++i)
        __builtin_prefetch(cells + m_ahead[i]);
#else
    Q_UNUSED(row);
#endif
}

Currency RowAmounts::textAmount(int row, int col) const
{
    return m_grid.amount(row, col);
}

RowAmounts::Kind RowAmounts::read(int row)
{
    fetchAhead(row + Ahead);
    m_cells = m_store.rowCells(row);
    if (cell(outlineCol).kind() == Cell::Empty)
        return Blank;
    const Cell tag = cell(tagCol);
    const bool summary = tag.kind() == Cell::Number ? tag.payload() < 0
                                                    : tag.kind() != Cell::Empty && BookRow::isSummaryCell(m_grid, row, tagCol);
    if (summary)
        return Summary;
    debit = amountAt(cell(debitCol), row, debitCol);
    credit = amountAt(cell(creditCol), row, creditCol);
    forex = amountAt(cell(forexCol), row, forexCol);
    return Record;
}

} // namespace kx
