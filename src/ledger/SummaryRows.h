#pragma once

#include "ledger/Book.h"
#include <QString>

namespace kx {

class Sheet;
class LedgerHost;
struct LedgerState;

/// Summary rows: sub-total rows (小结) that close a run of records with
/// their totals and lock the records above them.
class SummaryRows
{
public:
    /// Works on \a book, reporting to its host.
    explicit SummaryRows(Book &book) : SummaryRows(book, book.host()) {}
    /// Works on \a book, reporting to \a host instead (a load works quietly).
    SummaryRows(Book &book, LedgerHost &host);

    /// Inserts a sub-total row below \a row without asking the host or
    /// recalculating: its date and label come from \a row, it becomes the
    /// last summary row when it lies lower, and every row from it up to the
    /// first data row is locked. Returns the new row's index.
    int insertBelow(int row);
    /// Asks the host, inserts a sub-total row below \a row (0: the current
    /// row) and recalculates from the first data row. False when the host
    /// said no or \a row is the header or the opening row.
    bool insert(int row);
    /// Asks the host and removes summary row \a row (0: the current row): its
    /// key waits for the next save; when it was the last summary row, the
    /// rows above it are unlocked down to the previous summary row, which
    /// becomes the last one. False when refused or not a summary row.
    bool remove(int row);
    /// The three-line count of summary rows (less one), saved records and
    /// rows linked to vouchers.
    QString statistics() const;

private:
    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
};

} // namespace kx
