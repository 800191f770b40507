#pragma once

#include "bank/StatementMatcher.h"
#include "bank/StatementStore.h"
#include "kxjournal/Result.h"

#include <QDate>
#include <QList>
#include <QMultiHash>
#include <QString>

namespace kx {

class Book;
class Database;
class EditRules;
struct EditContext;

/// Reconciling a bank book by hand, beside the journal: its statement lines
/// and the records not yet matched, both of one month; ticks made
/// automatically or by hand, and taken back; each step undone whole. A
/// plain class: the control's view shows it and sends it the user's ticks.
class ReconcileSession
{
public:
    /// Works on the loaded \a book, whose statement and matches \a db keeps,
    /// ticking as \a user.
    ReconcileSession(Book &book, Database &db, const QString &user);

    /// Reads the statement, the matches and the book's records again.
    Result<void> read();
    /// Shows the month \a day falls in (an invalid day: every month).
    void setMonth(const QDate &day);
    QDate month() const { return m_month; }

    /// The month's statement lines not yet matched, by date.
    QList<StoredLine> openLines() const;
    /// The month's records not yet matched, by date.
    QList<BankRecord> openRecords() const;
    /// The month's statement lines, matched or not, by date.
    QList<StoredLine> monthLines() const;
    /// The month's records, matched or not, by date.
    QList<BankRecord> monthRecords() const;
    /// True when record \a recId is matched to a statement line.
    bool isMatched(int recId) const { return m_matchedRecords.contains(recId); }
    /// True when statement line \a lineId is matched.
    bool isLineMatched(int lineId) const { return m_matches.contains(lineId); }

    /// Matches what can be matched without a guess; how many pairs were
    /// made (one undo step), and in \a ambiguous how many lines were left.
    Result<int> autoMatch(int *ambiguous = nullptr);
    /// Matches line \a lineId with the records \a recIds by hand: the
    /// records must be open, on the line's side, and add up to its amount.
    Result<void> match(int lineId, const QList<int> &recIds);
    /// Takes the matches of line \a lineId off.
    Result<void> unmatch(int lineId);
    /// Takes the last step back; false when there is none.
    Result<bool> undo();

    /// Adds the record statement line \a lineId stands for at the bottom of
    /// the book, through the edit pipeline (\a ctx and \a rules, as typing
    /// would): its day, the bank's memo and counterparty as the
    /// explanation, the account the latest record naming that counterparty
    /// was booked to, and the amount on its side. The grid row it went into.
    Result<int> recordFrom(int lineId, EditContext &ctx, const EditRules &rules);

private:
    struct Step {
        QList<QPair<int, int>> added, removed;
    };
    bool inMonth(const QDate &day) const;
    Result<void> apply(const Step &step, bool backwards);
    void note(const QList<QPair<int, int>> &pairs, bool on);
    // Ticks the journal's Reconciled column as the matches stand.
    void markBook();

    Book &m_book;
    Database &m_db;
    QString m_user;
    QDate m_month;
    QList<StoredLine> m_lines;
    QList<BankRecord> m_records;
    QMultiHash<int, int> m_matches;  ///< line → record
    QSet<int> m_matchedRecords;
    QList<Step> m_steps;
};

} // namespace kx
