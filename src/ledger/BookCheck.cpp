#include "ledger/BookCheck.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <QDate>

namespace kx {

BookCheck::BookCheck(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host())
{
}

bool BookCheck::check()
{
    m_offending = 0;
    const int first = m_grid.fixedRows();
    const JournalColumns columns(m_grid);
    const int dateCol = columns[JournalColumns::JnlDate];
    for (int r = std::max(m_state.lastSumRow + 1, first); r < m_grid.rows(); ++r) {
        const BookRow row = BookRow::of(m_grid, columns, r);
        if (row.isSummary() || (row.debit() + row.credit()).isZero())
            continue;
        const QString date = m_grid.text(r, dateCol);
        QString why;
        if (!QDate::fromString(date, Qt::ISODate).isValid())
            why = QStringLiteral("记录中有无日期的行。");
        // Dates are held year first and fixed width, so their texts sort as the days do.
        else if (r > first && date < m_grid.text(r - 1, dateCol))
            why = QStringLiteral("记录中有日期顺序错误。");
        if (why.isEmpty())
            continue;
        m_offending = r;
        m_grid.setCursor(r, m_grid.col());
        m_host.prompt(why, true);
        return false;
    }
    return true;
}

} // namespace kx
