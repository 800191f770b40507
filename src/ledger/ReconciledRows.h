#pragma once

#include <QSet>

namespace kx {

class Sheet;

/// The journal's Reconciled column: a tick on each record a bank statement
/// line is matched to, and the view of only the records still open. The
/// column is not stored with the record; the matches are (in the bank
/// tables), and the ticks are made from them.
class ReconciledRows
{
public:
    /// Ticks each row of \a grid whose record key is in \a matched and clears
    /// the others' ticks; with the filter on, ticked rows are hidden.
    static void mark(Sheet &grid, const QSet<qint64> &matched);
    /// Hides the ticked records (\a openOnly) or shows every row again.
    static void filter(Sheet &grid, bool openOnly);
    /// Forgets the filter (a load laid the rows down anew, none hidden).
    static void reset(Sheet &grid);
    /// True while ticked records are hidden.
    static bool filtered(const Sheet &grid);
};

} // namespace kx
