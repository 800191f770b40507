#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <cstdint>
#include <vector>

namespace kx {

class Database;

/// The chart of accounts held in memory for picking an account by what a
/// bookkeeper types: a code prefix, part of the name, the entry code, or the
/// pinyin initials of the name ("yhck" or "yh" for 银行存款). Matches are
/// ranked by how well they match, then by how often the book used them.
class AccountChart
{
public:
    /// One account of the chart.
    struct Account {
        int id = 0;
        QString code;
        QString name;
        QString enterCode;
        int uses = 0;                       ///< records of the book naming it
        std::vector<std::uint32_t> initials; ///< pinyin initial masks of the name
    };

    /// Reads every account of \a db and, when \a docId is a book, how often
    /// that book used each. False when the chart cannot be read.
    bool read(const Database &db, int docId);
    /// Replaces the accounts (for a chart kept elsewhere).
    void setAccounts(QList<Account> accounts);

    /// Every account, by code.
    const QList<Account> &accounts() const { return m_accounts; }
    /// The indexes of the accounts matching \a text, best first (every
    /// account, by use and code, for empty text).
    QList<int> match(const QString &text) const;
    /// The account with id \a id, or nullptr.
    const Account *byId(int id) const;

private:
    int score(const Account &a, const QString &text) const;

    QList<Account> m_accounts;
    QHash<int, int> m_byId;
};

} // namespace kx
