#pragma once

#include "ledger/Book.h"
#include "ledger/JournalColumns.h"

#include <QList>
#include <QString>

namespace kx {

class Sheet;
struct LedgerState;

/// Which records stay where they are. A record of a closed period (above the
/// last summary row, or locked) and a record booked on a voucher (DirID) is
/// never deleted or moved, nothing is put among closed records, and their
/// record numbers stay; reopening the period (removing its summary row) or
/// removing the link frees them. Row operations, the drag and the menu all
/// ask here, so they agree.
class RecordGuard
{
public:
    /// Judges the rows of \a grid for the book in \a state.
    explicit RecordGuard(const Book &book);

    /// True when \a row, not a summary row, lies in a closed period: above
    /// the last summary row, or locked (the opening row, locked against
    /// typing, and a record locked only because the control cannot read its
    /// stored values are not closed by their lock).
    bool isClosed(int row) const;
    /// True when \a row, not a summary row, is booked on a voucher.
    bool isLinked(int row) const;
    /// True when the record on \a row stays where it is: closed or linked.
    bool keeps(int row) const { return isClosed(row) || isLinked(row); }
    /// True when a row put at \a row (the rows from there down moving one
    /// lower) would land among closed records.
    bool closesAt(int row) const;
    /// True when a deletion of rows \a r1 … \a r2 takes \a row: never the
    /// opening row nor a kept record; a summary row only when it is the
    /// one row chosen (deleting it alone reopens what it closed).
    bool deletes(int row, int r1, int r2) const;
    /// The rows of \a r1 … \a r2 a deletion takes (\a going) and leaves
    /// (\a kept; the opening row is in neither).
    void sortForDeletion(int r1, int r2, QList<int> &going, QList<int> &kept) const;

    /// "第2行、第3行" — the first ten rows of \a rows, then how many in all.
    static QString rowList(const QList<int> &rows);
    /// What the rows a message names are: "是已结账或已生成凭证的记录".
    static QString keptReason();
    /// Where the rows \a kept are once the rows \a gone (both ascending)
    /// were removed: the numbers the user finds them under afterwards.
    static QList<int> afterRemoval(const QList<int> &kept, const QList<int> &gone);

private:
    const Sheet &m_grid;
    const LedgerState &m_state;
    const JournalColumns m_columns;
};

} // namespace kx
