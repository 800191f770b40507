#pragma once

#include "kxjournal/BookDirectory.h"
#include "kxjournal/Currency.h"
#include "kxjournal/Result.h"

#include <QDate>
#include <QList>
#include <QString>

namespace kx {

class Database;

/// The daily fund report (资金日报表): for a span of days, each book's
/// opening balance, its receipts and payments (how many, how much) and its
/// closing balance, book by book down the book tree, each book above its
/// books' totals. A book's first record is its opening balance, never a
/// receipt; summary rows count for nothing. Sums are worked out by the
/// database in whole ten-thousandths, so no figure passes through a float.
class DailyReport
{
public:
    struct Line {
        BookDirectory::Book book;
        Currency opening, receipts, payments;
        int receiptCount = 0, paymentCount = 0;
        Currency closing() const { return opening + receipts - payments; }
    };

    /// The report of days \a from … \a to for book \a rootId and every book
    /// below it (0: every book), in tree order, each book with books below it
    /// holding their totals.
    static Result<QList<Line>> make(const Database &db, int rootId, const QDate &from, const QDate &to);
    /// Writes \a lines into \a path as comma-separated text (UTF-8 with a
    /// byte-order mark, CR LF), headed by the span; never over \a keep.
    static Result<void> writeCsv(const QList<Line> &lines, const QDate &from, const QDate &to, const QString &path,
                                 const QStringList &keep = {});
    /// The column headers of the report.
    static QStringList headers();
};

} // namespace kx
