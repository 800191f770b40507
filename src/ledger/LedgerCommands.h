#pragma once

namespace kx {

class Book;
class CommandRegistry;

/// The book commands that need nothing beyond the ledger: statistics and
/// the recalculation of every balance.
class LedgerCommands
{
public:
    /// Binds the book commands of \a registry to \a book.
    static void offer(CommandRegistry &registry, Book &book);
};

} // namespace kx
