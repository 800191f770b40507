#pragma once

#include "ledger/Book.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Result.h"
#include "kxjournal/Voucher.h"
#include "voucher/VoucherPlan.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>

namespace kx {

class Sheet;
class LedgerHost;
class LedgerState;

/// Makes vouchers of the selected journal records and writes each as a
/// voucher exchange file for the host's voucher module.
///
/// Each record that may take a voucher becomes a counter line (its account,
/// its amounts on the account's side); one line for the book's own account
/// balances each voucher. Records are never merged. The selection makes one
/// voucher, one per record, or one of receipts and one of payments
/// (VoucherPlan); vouchers made together take consecutive numbers of their
/// type. Nothing in the book or the database changes: the host makes the
/// vouchers from the files and links the records afterwards.
class VoucherMaker
{
public:
    /// Works on the selected block of \a book, asking its context for
    /// accounts, people, the period and the voucher types.
    explicit VoucherMaker(Book &book)
        : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host()), m_acc(book.context())
    {
    }

    /// The vouchers of grid rows \a first to \a last grouped by \a grouping,
    /// numbered from the next free number of each type up; none when no row
    /// may take a voucher. Fails as a whole when one voucher cannot be made.
    Result<QList<Voucher>> build(int first, int last, VoucherGrouping grouping = VoucherGrouping::All) const;
    /// Asks the host ("MakeAccDoc"), builds the vouchers of the selected
    /// block and writes each into \a folder as a new file with a lower-case
    /// name ending ".kxe", in code page \a codec, in voucher order. Every
    /// voucher is built and encoded before the first file is written, and a
    /// failed write takes the files already written away again. The paths
    /// written; none when the host vetoed, nothing qualified (the user is
    /// told), or the book is shown consolidated.
    Result<QStringList> make(const QString &folder, const QString &codec, VoucherGrouping grouping) const;
    /// make() of one voucher of the whole block: its path, or empty.
    Result<QString> make(const QString &folder, const QString &codec) const;

private:
    // A voucher with the grid rows of its counter lines.
    struct Made {
        Voucher voucher;
        QList<int> rows;
    };
    Result<QList<Made>> plan(int first, int last, VoucherGrouping grouping) const;
    // Adds the counter lines of \a rows and the balancing line to \a v.
    Result<void> addLines(Voucher &v, const QList<int> &rows, bool creditBook) const;
    // Whether the book keeps its balance on the credit side.
    bool isCreditBook() const;
    // The first text of the voucher a code page cannot hold, named for the user.
    QString unencodable(const Voucher &voucher, const QList<int> &rows, const QString &codec) const;

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    QPointer<AccContext> m_acc;  ///< the host may delete it inside any call to the host
};

} // namespace kx
