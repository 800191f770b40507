#pragma once

#include "ledger/Book.h"
namespace kx {

class Sheet;
class LedgerHost;
struct LedgerState;

/// Closing a month: a month-end row (本月结余) with the period's and the
/// year's totals under the last record, the closed records drawn in the
/// locked colour, and the last summary row moved to it. Closing a book
/// whose last record row already is a summary row un-closes it instead.
class MonthClosing
{
public:
    /// Works on \a book, reporting to its host.
    explicit MonthClosing(Book &book);
    /// Closes or un-closes; false when the book has no record or the
    /// un-closing was refused.
    bool closeBook();

private:
    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
};

} // namespace kx
