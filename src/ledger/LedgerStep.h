#pragma once

#include <QString>

#include <functional>

namespace kx {

class Book;
class EditHistory;

/// Runs an operation on the grid as one step of the undo history: what it
/// changes in the grid and in the ledger marks is recorded while it runs
/// and pushed as a single step, which undo takes back whole.
class LedgerStep
{
public:
    /// Runs \a work on \a book, recording it as the step \a text of \a history
    /// (none: just runs it). An operation that changed what a record cannot
    /// put back ends the history instead. Returns what \a work returned.
    static bool record(Book &book, EditHistory *history, const QString &text,
                       const std::function<bool()> &work);
};

} // namespace kx
