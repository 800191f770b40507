#pragma once

#include "kxjournal/Result.h"

#include <QString>

namespace kx {

class AccContext;
class GridModel;
class LedgerHost;
struct LedgerState;

/// Opening, removing and renumbering rows of the journal grid, and removing
/// the records dated before the accounts begin. Works on the grid only,
/// except the last, which deletes from the database at once.
class RowOperations
{
public:
    /// Works on \a grid for the book in \a state, reporting to \a host.
    RowOperations(GridModel &grid, LedgerState &state, LedgerHost &host);

    /// Opens as many empty rows as are selected above the selection, never
    /// above the opening row. Does not mark the book changed: an empty row
    /// stores nothing. False when nothing was inserted.
    bool insertRows();
    /// Asks, then removes the selected rows (\a row > 0: that row alone),
    /// never the opening row. Their keys wait for the next save; balances
    /// are recalculated. False when nothing was removed.
    bool deleteRows(int row = 0);
    /// Removes rows \a r1 … \a r2 without asking (the opening row stays):
    /// keys collected, last summary row kept true, balances recalculated,
    /// the book marked changed. Returns how many rows went.
    int removeRows(int r1, int r2);
    /// Numbers the selected rows' record numbers on from the row above the
    /// selection, with its prefix and width; summary rows keep theirs.
    /// False when nothing changed.
    bool renumber();
    /// Asks, then deletes from the database, in one transaction, every
    /// record of the grid dated before the accounts' begin date of \a acc
    /// (the opening row stays), and removes those rows. Cannot be undone.
    /// Returns how many went.
    Result<int> deleteHistory(AccContext *acc);


private:
    GridModel &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
};

} // namespace kx
