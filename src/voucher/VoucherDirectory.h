#pragma once

#include "kxjournal/Result.h"
#include "kxjournal/VoucherPicker.h"

#include <QDate>
#include <QList>
#include <QString>

namespace kx {

class Database;

/// What the voucher directory (kxDocDir) says: a voucher's short label, the
/// date and number a new voucher would take, the vouchers of a period.
class VoucherDirectory
{
public:
    /// Reads from \a db.
    explicit VoucherDirectory(const Database &db) : m_db(db) {}

    /// "05-03记 12": the voucher's date (month-day), type, a blank and its
    /// number; empty for 0 or a voucher that is not there.
    QString label(int docId) const;
    /// The date of a voucher of accounting period \a period, or \a periodEnd
    /// when the period has none.
    Result<QDate> nextDate(const QString &period, const QDate &periodEnd) const;
    /// One above the highest number of type \a type (empty: every type)
    /// dated from \a start to \a end; 1 when there is none. Fails when the
    /// number would pass 32767, the largest a voucher number can be.
    Result<int> nextNumber(const QString &type, const QDate &start, const QDate &end) const;
    /// The vouchers dated from \a start to \a end, newest first (with an
    /// invalid date, the newest of all).
    Result<QList<VoucherPicker::Entry>> vouchers(const QDate &start, const QDate &end) const;

    /// The first voucher type of \a docTypes ("记|收|付" gives "记").
    static QString defaultType(const QString &docTypes);
    /// The date an engine handed back (a date, or text in yyyy-MM-dd form
    /// with or without a time), invalid for anything else.
    static QDate dateOf(const QVariant &value);

private:
    const Database &m_db;
};

} // namespace kx
