#pragma once

#include "ledger/Book.h"
namespace kx {

class Sheet;
class LedgerHost;
struct LedgerState;

/// The check of the open period: every record after the last summary row
/// that carries an amount has a date, and the dates never go backwards.
class BookCheck
{
public:
    /// Works on \a book, reporting to its host.
    explicit BookCheck(Book &book);
    /// True when every examined record passes; else says why in a message
    /// box and puts the cursor on the first offending row.
    bool check();
    /// The first offending row of the last check (0: none).
    int offendingRow() const { return m_offending; }

private:
    Book &m_book;
    Sheet &m_grid;
    const LedgerState &m_state;
    LedgerHost &m_host;
    int m_offending = 0;
};

} // namespace kx
