#include "ledger/RowAmounts.h"

#include "ledger/Book.h"
#include "grid/CellStore.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"


namespace kx {

RowAmounts::RowAmounts(const Book &book) : RowAmounts(book.sheet(), book.state(), book.columns()) {}

RowAmounts::RowAmounts(const Sheet &grid, const LedgerState &state, const JournalColumns &columns)
    : debitCol(columns[JournalColumns::Debit]), creditCol(columns[JournalColumns::Credit]),
      forexCol(columns[JournalColumns::Forex]), tagCol(columns[JournalColumns::Tag]),
      outlineCol(state.outlineColumn(grid)), m_grid(grid), m_store(grid.cellStore()), m_debit(m_store, debitCol),
      m_credit(m_store, creditCol), m_forex(m_store, forexCol), m_tag(m_store, tagCol), m_outline(m_store, outlineCol)
{
}

Currency RowAmounts::textAmount(int row, int col) const
{
    return m_grid.amount(row, col);
}

RowAmounts::Kind RowAmounts::read(int row)
{
    if (row < 0 || row >= m_store.rows())
        return Blank;
    if (m_outline.stale())
        for (ColumnReader *column : {&m_outline, &m_tag, &m_debit, &m_credit, &m_forex})
            column->take();
    if (m_outline.atAsTaken(row).kind() == Cell::Empty)
        return Blank;
    const Cell tag = m_tag.atAsTaken(row);
    const bool summary = tag.kind() == Cell::Number ? tag.payload() < 0
                                                    : tag.kind() != Cell::Empty && BookRow::isSummaryCell(m_grid, row, tagCol);
    if (summary)
        return Summary;
    debit = amountAt(m_debit.atAsTaken(row), row, debitCol);
    credit = amountAt(m_credit.atAsTaken(row), row, creditCol);
    forex = amountAt(m_forex.atAsTaken(row), row, forexCol);
    return Record;
}

} // namespace kx
