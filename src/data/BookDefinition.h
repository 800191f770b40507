#pragma once

#include <QString>

namespace kx {

/// What the journal definition (kxJournal) says of the book shown.
struct BookDefinition {
    int docId = 0;               ///< the book (kxJournal.asID)
    QString journalName;         ///< its name
    int accId = 0;               ///< the account the book is kept for
    int relativeAccId = 0;       ///< the book's relative account
    QString direction;           ///< "借", "贷" or empty
    bool isBottomClass = false;  ///< no books below it
};

} // namespace kx
