#pragma once

#include <QString>

namespace kx {

class Database;

/// Turns what a bookkeeper types for an account into an account of the chart
/// of accounts, and reads the lists of explanations offered in the
/// explanation column. Every value is bound, never written into the text;
/// a failing statement reads as "not found" (0, or an empty list).
class AccountLookup
{
public:
    /// One account of the chart.
    struct Account {
        int id = 0;
        QString code;
        QString name;
        bool isValid() const { return id != 0; }
    };

    /// Looks up in \a db (which must outlive the lookup).
    explicit AccountLookup(const Database &db);

    /// The account whose code, else name, else entry code is \a text
    /// exactly (surrounding blanks ignored); 0 when none is.
    int findAccId(const QString &text) const;
    /// The account a path of names points at ("银行存款/工商银行"; levels
    /// separated by "/", "\\", "_" or "."): each level is looked for below
    /// the one found before it; the last may also be a code or entry code.
    /// 0 when the last level is not found.
    int findByPath(const QString &path) const;
    /// The account with id \a id (invalid when none).
    Account byId(int id) const;
    /// The first account with code \a code (invalid when none).
    Account byCode(const QString &code) const;

    /// The explanation list of book \a docId: its 30 latest explanations,
    /// newest first, each once, without the labels of summary and opening
    /// rows, as "|text|text".
    QString bookExplains(int docId) const;
    /// The 20 latest explanations of all books, newest first, as "|text|text"
    /// (repeats kept).
    QString recentExplains() const;

    /// True for the explanation texts the ledger writes itself (summary and
    /// opening rows), which are never offered as explanations.
    static bool isLedgerLabel(const QString &text);

private:
    const Database &m_db;
};

} // namespace kx
