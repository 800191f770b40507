#pragma once

#include "bank/StatementMatcher.h"
#include "kxjournal/Result.h"

#include <QDate>
#include <QList>
#include <QString>

namespace kx {

class Book;
class Database;

/// The balance reconciliation of a bank book on a day (银行存款余额调节表):
/// the journal's balance plus what the bank received and the journal has
/// not (银收企未收) minus what the bank paid and the journal has not
/// (银付企未付), beside the bank's balance plus what the journal received
/// and the bank has not (企收银未收) minus what the journal paid and the
/// bank has not (企付银未付). Both adjusted balances agree when every open
/// item is listed; otherwise the difference shows.
struct Reconciliation {
    /// An open item: a statement line or a journal record.
    struct Item {
        int key = 0;  ///< the line's or the record's key
        QDate date;
        QString text;  ///< the explanation, or the bank's memo and counterparty
        QString reference;  ///< the 单据号, or the bank's reference
        Currency amount;
    };
    enum Part { BankReceived, BankPaid, BookReceived, BookPaid };

    QDate to;
    QString bookName;
    Currency bookBalance;  ///< the journal's balance after the day (money in the bank positive)
    Currency bankBalance;  ///< the statement's balance after the day
    QList<Item> items[4];  ///< by Part, each by date

    /// The sum of the items of \a part.
    Currency total(Part part) const;
    /// The journal's balance adjusted by what only the bank has.
    Currency adjustedBook() const { return bookBalance + total(BankReceived) - total(BankPaid); }
    /// The bank's balance adjusted by what only the journal has.
    Currency adjustedBank() const { return bankBalance + total(BookReceived) - total(BookPaid); }
    /// adjustedBook() − adjustedBank(): zero when the two agree.
    Currency difference() const { return adjustedBook() - adjustedBank(); }
    /// The heading of \a part ("银收企未收").
    static QString partName(Part part);

    /// The reconciliation of \a book (loaded) on \a to, against the statement
    /// lines and matches stored in \a db. Records dated before the month the
    /// first statement line falls in are taken as in the bank's balance
    /// before it, and are never open items. Fails when no statement is stored
    /// for the book, or none of it says what the bank's balance was by then.
    static Result<Reconciliation> of(const Book &book, Database &db, const QDate &to);
    /// The same from what was read: \a records of the book whose balance
    /// after \a to is \a bookBalance, \a lines of its statement, \a matches
    /// (line key → record key) and \a closings (closing balances the files gave).
    static Result<Reconciliation> of(const QList<BankRecord> &records, Currency bookBalance,
                                     const QList<StoredLine> &lines, const QMultiHash<int, int> &matches,
                                     const QList<QPair<QDate, Currency>> &closings, const QDate &to);
    /// The balance of \a book after day \a to, money in the bank positive.
    static Currency balanceOf(const Book &book, const QDate &to);
};

} // namespace kx
