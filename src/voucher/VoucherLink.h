#pragma once

#include "ledger/Book.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Result.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>

namespace kx {

class BookRow;
class Sheet;
class LedgerHost;
class LedgerState;

/// Links between journal records and vouchers: the DirID of a record and
/// the short voucher label in its AccDoc cell.
///
/// A link is written to the record in the database at once, apart from a
/// save; the control's memory of what the database holds follows it, so
/// the next save neither rewrites the record nor takes the link for
/// somebody else's change. A record somebody else linked or deleted since
/// it was read is not overwritten: the user is told to read the book again.
class VoucherLink
{
public:
    /// Works on \a book, writing through its context's connection.
    explicit VoucherLink(Book &book)
        : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host()), m_acc(book.context())
    {
    }

    /// The voucher row \a row is linked to (0: none); -1 for a summary row
    /// or a row not yet stored.
    int dirId(int row) const;
    /// True when \a row may take a voucher: a dated record (no summary row,
    /// not the opening balance), not linked yet, with an account of its own
    /// or the book's relative account.
    static bool isCandidate(const BookRow &row, int relativeAccId);
    /// Links \a row to voucher \a voucherId, or says why it cannot be linked;
    /// true when it was linked.
    bool link(int row, int voucherId);
    /// Links every row of the selected block, each judged alone (an unfit
    /// row says why and the others are linked); how many were linked.
    int linkSelection(int voucherId);
    /// Asks, then takes the voucher links off every selected row but the
    /// summary rows; true when they were removed.
    bool removeLinks();

private:
    // Writes \a voucherId as the link of each of \a rows (grid and database);
    // how many were written.
    int write(const QList<int> &rows, int voucherId);
    // Writes the stored ones among \a rows in one transaction; the rows
    // written come back in \a done.
    Result<void> writeStored(const QList<int> &rows, int voucherId, QList<int> &done, QStringList &refused);
    // True when the record of \a row may change; otherwise says so.
    bool mayChange(int row) const;

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    QPointer<AccContext> m_acc;  ///< the host may delete it inside any call to the host
};

} // namespace kx
