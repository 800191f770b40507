#include "ledger/ReconciledRows.h"

#include "grid/Sheet.h"
#include "ledger/JournalColumns.h"

namespace kx {

namespace {

const QString &tick()
{
    static const QString mark = QStringLiteral("✓");
    return mark;
}

// The grid remembers the filter with the column: its hidden ticked rows.
const char FilterProperty[] = "kxReconciledFilter";

} // namespace

void ReconciledRows::mark(Sheet &grid, const QSet<qint64> &matched)
{
    const JournalColumns columns(grid);
    const int col = columns[JournalColumns::Reconciled];
    const int key = columns[JournalColumns::RecID];
    if (col < 0 || key < 0)
        return;
    for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
        const qint64 recId = grid.number(r, key);
        const bool on = recId > 0 && matched.contains(recId);
        // The column holds a tick or nothing: its emptiness is the tick, read
        // without making a text of every row.
        if (grid.isEmpty(r, col) == on) {
            grid.setText(r, col, on ? tick() : QString());
            // A record ticked or unticked under the filter follows it.
            if (filtered(grid) && grid.isRowHidden(r) != on)
                grid.setRowHidden(r, on);
        }
    }
}

void ReconciledRows::filter(Sheet &grid, bool openOnly)
{
    const int col = JournalColumns(grid)[JournalColumns::Reconciled];
    grid.setProperty(FilterProperty, openOnly);
    if (col < 0)
        return;
    // Only ticked rows are hidden or shown again: rows a host hid stay so.
    for (int r = grid.fixedRows(); r < grid.rows(); ++r)
        if (!grid.isEmpty(r, col) && grid.isRowHidden(r) != openOnly)
            grid.setRowHidden(r, openOnly);
}

void ReconciledRows::reset(Sheet &grid)
{
    grid.setProperty(FilterProperty, false);
}

bool ReconciledRows::filtered(const Sheet &grid)
{
    return grid.property(FilterProperty).toBool();
}

} // namespace kx
