#pragma once

#include "ledger/Book.h"
#include "kxjournal/Result.h"

#include <QString>

namespace kx {

class AccContext;
class Sheet;
class LedgerHost;
struct LedgerState;

/// Opening, removing and renumbering rows of the journal grid, and removing
/// the records dated before the accounts begin. Works on the grid only,
/// except the last, which deletes from the database at once.
class RowOperations
{
public:
    /// Works on \a book, reporting to its host.
    explicit RowOperations(Book &book);

    /// Opens as many empty rows as are selected above the selection, never
    /// above the opening row nor among the records of a closed period. Does
    /// not mark the book changed: an empty row stores nothing. False when
    /// nothing was inserted.
    bool insertRows();
    /// Asks, then removes the selected rows (\a row > 0: that row alone),
    /// never the opening row, a record of a closed period or one on a
    /// voucher (see RecordGuard); a summary row goes only alone, which
    /// reopens what it closed. The rows kept are named in one message and
    /// the question counts only the rows that go. Their keys wait for the
    /// next save; balances are recalculated. False when nothing was removed.
    bool deleteRows(int row = 0);
    /// Removes those of rows \a r1 … \a r2 a deletion may take, without
    /// asking: keys collected, last summary row kept true (the rows it closed
    /// unlocked when it went), balances recalculated, the book marked
    /// changed. Returns how many rows went.
    int removeRows(int r1, int r2);
    /// Numbers the selected rows' record numbers on from the row above the
    /// selection, with its prefix and width; summary rows keep theirs, and
    /// records of a closed period or on a voucher keep theirs and the
    /// numbering goes on from them (named in a message). False when nothing
    /// changed.
    bool renumber();
    /// Asks, then deletes from the database, in one transaction, every
    /// record of the grid dated before the accounts' begin date of \a acc
    /// (the opening row, closed periods and records on vouchers stay, named
    /// in the message), and removes those rows. Cannot be undone. Returns
    /// how many went.
    Result<int> deleteHistory(AccContext *acc);


private:
    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
};

} // namespace kx
