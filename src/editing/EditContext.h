#pragma once

#include "editing/AccountChart.h"
#include "editing/AccountLookup.h"
#include "ledger/Book.h"
#include "ledger/JournalColumns.h"

#include <QHash>
#include <QString>

namespace kx {

class AccContext;
class Database;
class Sheet;
class LedgerHost;
struct LedgerState;

/// What the edit rules work on and the little they remember between edits:
/// the book (its sheet, state, host and context, named apart below for the
/// rules' brevity) and the editing state of the control (whether the edit
/// under way changed its cell, the explanations typed, the explanation list
/// read).
struct EditContext {
    explicit EditContext(Book &b) : book(b), grid(b.sheet()), state(b.state()), host(b.host()), columns(b.sheet()) {}

    /// The accounting context, or nullptr when there is none.
    AccContext *acc() const { return book.context(); }
    /// The open database of the context, or nullptr.
    const Database *db() const;
    /// The chart of accounts with the use counts of the book shown, read
    /// when first needed for this book.
    const AccountChart &chart();
    /// Adds an empty row at the bottom, for the next record, when the last
    /// row is not empty and the book may be changed.
    void keepBlankRow();
    /// Forgets what was read for the book shown (a new book was loaded).
    void forgetBook();
    /// The key of grid column \a col as a journal column (Count: none).
    JournalColumns::Column columnAt(int col) const;
    /// A rule refusing a text says why (\a box: meant for a message box);
    /// the edit pipeline passes it on.
    void refuse(const QString &why, bool box)
    {
        refusal = why;
        refusalBox = box;
    }

    Book &book;
    Sheet &grid;
    LedgerState &state;
    LedgerHost &host;
    JournalColumns columns;      ///< where the columns sit; refreshed when an edit begins
    bool cellChanged = false;    ///< the edit under way changed its cell
    bool fromPicker = false;     ///< the text comes from a picker, not the keyboard
    QString refusal;             ///< why the rule refused the text checked last (see refuse())
    bool refusalBox = false;     ///< the refusal is meant for a message box
    /// Many cells are entered at once (a paste): balances wait for the end,
    /// and accounts found are remembered for the next rows.
    bool batch = false;
    QHash<QString, int> accountIds;                   ///< in a batch: text typed → account id
    QHash<int, AccountLookup::Account> accountsById;  ///< in a batch: accounts read
    QString explainHistory;      ///< explanations typed, newest first, each followed by "|"
    QString explainList;         ///< the book's explanation list, read once per book
    int explainListBook = -1;    ///< the book explainList and explainMemo were read for
    QStringList explainMemo;     ///< the explanations kept for the book on purpose (常用摘要)
    AccountChart accounts;       ///< see chart()
    int accountsBook = -1;       ///< the book the chart's use counts are of
};

} // namespace kx
