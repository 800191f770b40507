#pragma once

#include <QString>

namespace kx {

/// The side a book keeps its balances on. The stored definition and the
/// public Direction() spell it "借", "贷" or empty: read and written only
/// through balanceSideOf() and balanceSideText().
enum class BalanceSide { None, Debit, Credit };

/// The side spelled \a text ("借", "贷"); None for anything else.
inline BalanceSide balanceSideOf(const QString &text)
{
    return text == u"借" ? BalanceSide::Debit : text == u"贷" ? BalanceSide::Credit : BalanceSide::None;
}

/// The text of \a side: "借", "贷" or empty.
inline QString balanceSideText(BalanceSide side)
{
    return side == BalanceSide::Debit ? QStringLiteral("借") : side == BalanceSide::Credit ? QStringLiteral("贷") : QString();
}

/// What the journal definition (kxJournal) says of the book shown.
struct BookDefinition {
    int docId = 0;               ///< the book (kxJournal.asID)
    QString journalName;         ///< its name
    int accId = 0;               ///< the account the book is kept for
    int relativeAccId = 0;       ///< the book's relative account
    BalanceSide direction = BalanceSide::None;
    bool isBottomClass = false;  ///< no books below it
};

} // namespace kx
