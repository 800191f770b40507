#pragma once

#include "ledger/Book.h"
#include <QString>

namespace kx {

class Sheet;
class LedgerHost;
struct LedgerState;

/// Moving a record within its month by dragging its row: the silent drop
/// test that decides, and the drop that explains a refusal, moves the row,
/// marks the stored rows below it for rewriting and recalculates.
class RowMover
{
public:
    /// Works on \a book, reporting to its host.
    explicit RowMover(Book &book);
    /// True when row \a source may not be dropped on grid row \a row over
    /// grid column \a col (0: the row header): above the rows, off the row
    /// header, onto a summary row, into another month, among the records of
    /// a closed period, or onto an empty row that does not follow a dated
    /// one; and always when \a source is a record of a closed period or on
    /// a voucher (see RecordGuard).
    bool isBadDropRow(int source, int row, int col) const;
    /// Drops row \a source on (\a row, \a col). Says why a closed or linked
    /// record does not move, and why a drop upward onto a summary row, into
    /// another month or into a closed period is refused; true when the row
    /// moved (a drop on itself counts: its rows are marked and recalculated).
    bool drop(int source, int row, int col);

private:
    QString monthOf(int row) const;
    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
};

} // namespace kx
