#pragma once

#include "bank/StatementStore.h"

#include <QDate>
#include <QList>
#include <QPair>
#include <QSet>
#include <QString>

namespace kx {

class Book;

/// A journal record as matching sees it.
struct BankRecord {
    int recId = 0;
    QDate date;
    StatementSide side = StatementSide::Receipt;  ///< a debit is money in (收), a credit money out (付)
    Currency amount;
    QString number;   ///< 单据号
    QString explain;  ///< 摘要

    /// The stored records of \a book (summary rows, the opening row and rows
    /// never saved left out), one per amount: a row with both a debit and a
    /// credit gives its net.
    static QList<BankRecord> of(const Book &book);
};

/// Matches statement lines with journal records automatically: the same
/// side and amount, dated within a window of each other. Where a line could
/// go to several records (or a record to several lines), a bank reference
/// or counterparty the record's number or explanation names, then the
/// nearer date, decides; a choice that still would be a guess is left to
/// the cashier. Among equals the most lines are matched: when every line
/// and every record of a tie can be paired, they are.
class StatementMatcher
{
public:
    struct Outcome {
        QList<QPair<int, int>> pairs;  ///< line key, record key
        int ambiguous = 0;             ///< lines left because the choice would be a guess
    };

    /// Matches \a lines with \a records, leaving out lines and records in
    /// \a matchedLines and \a matchedRecords; a date window of \a days days.
    static Outcome match(const QList<StoredLine> &lines, const QList<BankRecord> &records,
                         const QSet<int> &matchedLines = {}, const QSet<int> &matchedRecords = {}, int days = 3);
    /// How well line \a line and record \a record agree, higher being better
    /// (they must already agree on side and amount).
    static int score(const StatementLine &line, const BankRecord &record);
};

} // namespace kx
