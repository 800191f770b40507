#pragma once

#include "kxjournal/Result.h"

#include <QString>

namespace kx {

class AccContext;
class GridModel;
class LedgerHost;
struct LedgerState;

/// Stores the grid's records: deletes the rows taken out since the last
/// save, writes every dated row (updated in place, or added with its new key
/// brought back into the grid), all in one transaction. A pass that fails
/// leaves the database as it was, the grid's keys unchanged, the removed
/// rows still waiting and the grid still dirty.
class BookSaver
{
public:
    /// Works on \a grid for the book in \a state, writing through \a acc
    /// (a save without a context fails) and reporting to \a host.
    BookSaver(GridModel &grid, LedgerState &state, LedgerHost &host, AccContext *acc);

    /// The whole save: refuses a consolidated journal, asks the host, writes
    /// when dirty, then notifies the context (\a instance tells this control
    /// from others) and reports "已存储“\a caption”的记录;".
    bool save(const QString &caption, int instance);

private:
    Result<void> writeRecords();
    bool anyDatedAfter(int row) const;

    GridModel &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    AccContext *m_acc;
};

} // namespace kx
