#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace kx {

/// Which column of a statement table holds what (0-based column numbers,
/// -1 for none). A table has either a receipt and a payment column, or one
/// amount column, signed or beside a side column (借/贷, 收/支, 出/入).
/// receipt and payment always name the depositor's sides: a table written
/// from the bank's books (借方发生额/贷方发生额) maps its 贷方 to receipt and
/// its 借方 to payment, and says so with bankSide.
struct ColumnMapping
{
    int date = -1;
    int receipt = -1;
    int payment = -1;
    int amount = -1;
    int side = -1;
    int balance = -1;
    int reference = -1;
    int counterparty = -1;
    int counterpartyAccount = -1;
    /// The first memo column; memoMore lists any further ones, joined with "；".
    int memo = -1;
    QList<int> memoMore;
    /// The amounts are the bank's 借方/贷方 (its debit is a payment here).
    bool bankSide = false;
    /// A name the cashier gave the layout (the bank's, say).
    QString name;

    /// True when it names a date and the amounts.
    bool isComplete() const;
    /// A line that stores the mapping ("date=0&receipt=3&…"), for fromString().
    QString toString() const;
    /// The mapping toString() wrote; nothing when \a text is not one.
    static std::optional<ColumnMapping> fromString(const QString &text);
    /// The mapping a header row's names suggest; an incomplete mapping
    /// when they are not a statement's.
    static ColumnMapping guess(const QStringList &header);
    /// How many of \a header's names are known statement column names.
    static int knownNames(const QStringList &header);
    /// For a message: the column names that are recognised.
    static QString expectedNames();
    /// One line for the cashier: which column was taken for what, by the
    /// header's names (or column numbers where there is no header).
    QString describe(const QStringList &header) const;

    friend bool operator==(const ColumnMapping &a, const ColumnMapping &b);
};

} // namespace kx
