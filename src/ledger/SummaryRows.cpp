#include "ledger/SummaryRows.h"

#include "data/BookState.h"
#include "kxjournal/GridModel.h"
#include "ledger/RowLook.h"

namespace kx {

SummaryRows::SummaryRows(GridModel &grid, BookState &book) : m_grid(grid), m_book(book) {}

int SummaryRows::insertBelow(int row)
{
    const int at = row + 1;
    m_grid.insertRowAt(at);
    const QString shown = m_grid.text(row, QStringLiteral("ShowName"));
    m_grid.setText(at, QStringLiteral("ShowName"), shown);
    m_grid.setText(at, QStringLiteral("Explain"), shown + QStringLiteral("小结"));
    // Dates in cells are always yyyy-MM-dd; the shown label stays as the row above has it.
    m_grid.setText(at, QStringLiteral("JnlDate"), m_grid.text(row, QStringLiteral("JnlDate")));
    m_grid.setText(at, QStringLiteral("Tag"), QStringLiteral("-1"));
    RowLook::markSummary(m_grid, m_book, at);
    if (m_book.lastSumRow < at)
        m_book.lastSumRow = at;
    for (int r = at; r >= m_grid.fixedRows(); --r)
        RowLook::setLocked(m_grid, m_book, r, true);
    return at;
}

} // namespace kx
