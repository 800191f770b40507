#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace kx {

class Sheet;

/// How one making splits the selected records into vouchers.
enum class VoucherGrouping {
    All,     ///< one voucher of every record
    Record,  ///< one voucher per record
    Type,    ///< one 收款 voucher of the records that bring money in, one 付款 voucher of those that take it out
};

/// Which records go into which voucher, and of which type, when a block of
/// the book is made into vouchers.
///
/// Only records that may take a voucher are planned (no summary row, no
/// record already linked, none without an account); each voucher keeps
/// them in grid order. A record brings money in when its amount stands on
/// the book's own side: the debit of a debit book, the credit of a credit
/// book (a red amount there is a receipt taken back, and stays with the
/// receipts).
class VoucherPlan
{
public:
    /// One voucher to make.
    struct Part {
        QList<int> rows;  ///< its records, grid rows in grid order
        QString type;     ///< its voucher type word (may be empty)
        int addQty = 0;   ///< the journal rows it stands for
    };

    /// The name a grouping goes by: "all", "record" or "type".
    static QString nameOf(VoucherGrouping grouping);
    /// The grouping named \a name (blanks and case aside); none for any other text.
    static std::optional<VoucherGrouping> grouping(const QString &name);

    /// The type of a voucher of receipts among \a docTypes ("记|收|付"): the
    /// first whose word holds 收 and not 付; without one, the first general
    /// type (neither), else the first type.
    static QString receiptType(const QString &docTypes);
    /// The type of a voucher of payments: as receiptType(), with 付 for 收.
    static QString paymentType(const QString &docTypes);

    /// The vouchers of grid rows \a first to \a last of \a grid grouped by
    /// \a grouping: one part (the first type of \a docTypes, all the rows
    /// selected counted), one per record (the first type), or the receipts
    /// and then the payments (each part only when it has records). No part
    /// when no row may take a voucher.
    static QList<Part> parts(const Sheet &grid, int first, int last, int relativeAccId, bool creditBook,
                             VoucherGrouping grouping, const QString &docTypes);
};

} // namespace kx
