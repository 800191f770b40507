#pragma once

#include "ledger/Book.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Result.h"
#include "kxjournal/Voucher.h"

#include <QPointer>
#include <QString>

namespace kx {

class Sheet;
class LedgerHost;
class LedgerState;

/// Makes one voucher of the selected journal records and writes it as a
/// voucher exchange file for the host's voucher module.
///
/// Each record that may take a voucher becomes a counter line (its account,
/// its amounts on the account's side); one line for the book's own account
/// balances them. Records are never merged. Nothing in the book or the
/// database changes: the host makes the voucher from the file and links the
/// records afterwards.
class VoucherMaker
{
public:
    /// Works on the selected block of \a book, asking its context for
    /// accounts, people, the period and the voucher types.
    explicit VoucherMaker(Book &book)
        : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host()), m_acc(book.context())
    {
    }

    /// The voucher of grid rows \a first to \a last; no lines when none of
    /// them may take a voucher.
    Result<Voucher> build(int first, int last) const;
    /// Asks the host ("MakeAccDoc"), builds the voucher of the selected
    /// block and writes it into \a folder as a new file with a lower-case
    /// name ending ".kxe", in code page \a codec. The path written; empty
    /// when the host vetoed, nothing qualified (the user is told), or the
    /// book is shown consolidated.
    Result<QString> make(const QString &folder, const QString &codec) const;

private:
    // Whether the book keeps its balance on the credit side.
    bool isCreditBook() const;
    // The first text of the voucher a code page cannot hold, named for the user.
    QString unencodable(const Voucher &voucher, int first, const QString &codec) const;

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    QPointer<AccContext> m_acc;  ///< the host may delete it inside any call to the host
};

} // namespace kx
