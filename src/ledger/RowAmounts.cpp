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
    takeColumns();
}

void RowAmounts::takeColumns()
{
    // A pass writes totals into amount columns, and a handler it wakes may
    // change the grid: the columns are taken again whenever they may have moved.
    m_layout = m_store.layout();
    m_debit = m_store.column(debitCol);
    m_credit = m_store.column(creditCol);
    m_forex = m_store.column(forexCol);
    m_tag = m_store.column(tagCol);
    m_outline = m_store.column(outlineCol);
}

Currency RowAmounts::textAmount(int row, int col) const
{
    return m_grid.amount(row, col);
}

RowAmounts::Kind RowAmounts::read(int row)
{
    if (m_store.layout() != m_layout)
        takeColumns();
    m_row = row;
    if (row < 0 || row >= m_store.rows())
        return Blank;
    if (at(m_outline, row).kind() == Cell::Empty)
        return Blank;
    const Cell tag = at(m_tag, row);
    const bool summary = tag.kind() == Cell::Number ? tag.payload() < 0
                                                    : tag.kind() != Cell::Empty && BookRow::isSummaryCell(m_grid, row, tagCol);
    if (summary)
        return Summary;
    debit = amountAt(at(m_debit, row), row, debitCol);
    credit = amountAt(at(m_credit, row), row, creditCol);
    forex = amountAt(at(m_forex, row), row, forexCol);
    return Record;
}

} // namespace kx
