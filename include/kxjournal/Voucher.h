#pragma once

#include "kxjournal/Currency.h"
#include "kxjournal/kxjournal_export.h"

#include <QDate>
#include <QList>
#include <QString>

namespace kx {

/// An accounting voucher as the voucher exchange file carries it: a head
/// (date, type, number, who made it) and its lines, one account each.
///
/// Amounts are fixed point; the texts are kept as written, so a voucher read
/// back from a file equals the one that was written.
struct KXJOURNAL_EXPORT Voucher {
    /// One line of a voucher: an account with its amounts and the record's
    /// own fields. The members follow the file's elements in their order.
    struct Line {
        QString explain;       ///< the record's explanation
        QString accName;       ///< the account's name
        QString accCode;       ///< the account's code
        Currency debit;        ///< the account's debit
        Currency credit;       ///< the account's credit
        Currency rate;         ///< exchange rate
        Currency forex;        ///< foreign-currency amount (the own-account line: the net amount)
        Currency price;        ///< unit price (always 0 from the journal)
        Currency quantity;     ///< quantity (always 0 from the journal)
        QString branch;        ///< department (empty from the journal)
        QString organization;  ///< unit (empty from the journal)
        QString field1;        ///< the record's first free field
        QString field2;        ///< the record's second free field
        QString field3;        ///< the record's third free field
        QString field4;        ///< the record's fourth free field
        int brId = 0;          ///< department id
        int pjId = 0;          ///< project id
        QString accId;         ///< the account id as the record's cell held it (it may be empty)
        int recId = 0;         ///< record key (0 from the journal)
        int docId = 0;         ///< voucher key (0 from the journal)
        int row = 0;           ///< line number; the own-account line repeats the last one
        QString bookFmt;       ///< the remaining elements, empty from the journal
        QString fld1Name;      ///< caption of the first free field (empty from the journal)
        QString fld2Name;      ///< caption of the second free field (empty from the journal)
        QString fld3Name;      ///< caption of the third free field (empty from the journal)
        QString fld4Name;      ///< caption of the fourth free field (empty from the journal)
        QString forexName;     ///< foreign currency name (empty from the journal)
        QString measure;       ///< unit of measure (empty from the journal)
        QString docLvl;        ///< the DocLvl element, kept as read (empty from the journal)
        QString tRecId;        ///< the tRecID element, kept as read (empty from the journal)

        /// True when every element is equal.
        bool operator==(const Line &other) const;
        /// True when some element differs.
        bool operator!=(const Line &other) const { return !(*this == other); }
    };

    QDate docDate;                           ///< voucher date
    QString docType;                         ///< voucher type word ("记"; may be empty)
    int docNo = 0;                           ///< voucher number, 1 to 32767
    int addQty = 0;                          ///< how many journal rows were selected
    QString inputor;                         ///< who made it
    QString inputDate = QStringLiteral("0"); ///< when it was entered ("0": not yet)
    QString audit;                           ///< who audited it
    QString auditDate = QStringLiteral("0"); ///< when it was audited ("0": not yet)
    QString director;                        ///< the accounting director
    QString cashier;                         ///< the cashier
    QString payee;                           ///< the payee
    QList<Line> lines;                       ///< counter lines, then the own-account line

    /// Sum of the lines' debits.
    Currency debitTotal() const;
    /// Sum of the lines' credits.
    Currency creditTotal() const;
    /// True when every element is equal.
    bool operator==(const Voucher &other) const;
    /// True when some element differs.
    bool operator!=(const Voucher &other) const { return !(*this == other); }
};

} // namespace kx
