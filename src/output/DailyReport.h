#pragma once

#include "kxjournal/BookDirectory.h"
#include "kxjournal/Currency.h"
#include "kxjournal/Result.h"

#include <QDate>
#include <QHash>
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
    /// One record of a book in the span, as it is listed under its book.
    struct Entry {
        QDate date;
        QString number;   ///< 单据号
        QString explain;  ///< 摘要
        QString account;  ///< 对方科目 (the account's name)
        Currency debit, credit;
    };
    /// The records of books \a bookIds dated \a from … \a to, each book's
    /// in its own order (not its opening row, no summary rows); a book with
    /// no record in the span is not in the answer.
    static Result<QHash<int, QList<Entry>>> entries(const Database &db, const QList<int> &bookIds, const QDate &from,
                                                    const QDate &to);
    /// The last day on or before \a upTo (invalid: any day) that a record of
    /// book \a rootId or a book below it (0: any book) is dated; invalid
    /// when there is none.
    static Result<QDate> lastDay(const Database &db, int rootId, const QDate &upTo = {});
    /// The days of the report as it is headed: "2026-11-24" for one day,
    /// "2026-11-01 至 2026-11-24" for more.
    static QString span(const QDate &from, const QDate &to);
    /// The column headers of the report.
    static QStringList headers();
};

} // namespace kx
