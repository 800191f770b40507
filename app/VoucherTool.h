#pragma once

#include "voucher/VoucherPlan.h"

#include <QDate>
#include <QString>

/// The voucher commands of the command-line tool, for host developers
/// checking their side of the voucher exchange file.
class VoucherTool
{
public:
    /// What `kxjournal make` needs.
    struct MakeOptions {
        QString url;       ///< database URL
        QString book;      ///< book code
        QDate from;        ///< first record date taken
        QDate to;          ///< last record date taken
        QString out;       ///< folder the file goes into
        QString types;     ///< voucher types, "记|收|付"; the first is used
        QString user;      ///< who makes the voucher
        QString director;  ///< the accounting director
        QString codec;     ///< the file's code page
        kx::VoucherGrouping grouping = kx::VoucherGrouping::All;  ///< one voucher, one per record, or per 收/付
    };

    /// Prints the voucher file at \a path as a table; 0 on success.
    static int print(const QString &path, const QString &codec);
    /// Makes the vouchers of the book's records dated \a options.from to
    /// \a options.to and prints each file's path on a line; 0 on success.
    static int make(const MakeOptions &options);
};
