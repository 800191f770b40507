#pragma once

namespace kx {

class CommandRegistry;
class Sheet;
class LedgerHost;
struct LedgerState;

/// The book commands that need nothing beyond the ledger: statistics and
/// the recalculation of every balance.
class LedgerCommands
{
public:
    /// Binds the book commands of \a registry to \a grid and \a state.
    static void offer(CommandRegistry &registry, Sheet &grid, LedgerState &state, LedgerHost &host);
};

} // namespace kx
