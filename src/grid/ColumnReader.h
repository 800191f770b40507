#pragma once

#include "grid/CellStore.h"

#include <climits>

namespace kx {

/// Reads one column of a store down its rows, for passes over a whole book:
/// a dense column by index, a listed one by walking its list, so that going
/// down a million rows costs a compare or two a row either way. Rows may be
/// read in any order; going down is what is quick. The column is taken
/// again whenever the store's layout moved, so writes and row work between
/// reads are safe.
class ColumnReader
{
public:
    /// Reads column \a col of \a store (-1: a column the grid lacks, all empty).
    ColumnReader(const CellStore &store, int col) : m_store(store), m_col(col) { take(); }

    /// The column read.
    int col() const { return m_col; }
    /// The cell of \a row (in range).
    Cell at(int row)
    {
        if (m_layout != m_store.layout())
            take();
        return atAsTaken(row);
    }
    /// As at(), for a caller that has made sure the layout did not move
    /// since the column was taken (several readers, one check).
    Cell atAsTaken(int row)
    {
        if (m_dense)
            return m_dense[row];
        if (row >= m_low && row < m_high)
            return m_common;
        return seek(row);
    }

    /// Whether the store's layout moved since the column was taken.
    bool stale() const { return m_layout != m_store.layout(); }
    /// Takes the column again.
    void take();

private:
    Cell seek(int row);

    const CellStore &m_store;
    int m_col;
    std::uint64_t m_layout = 0;
    const Cell *m_dense = nullptr;
    const CellColumn *m_column = nullptr;
    Cell m_common;
    int m_low = 0, m_high = INT_MAX;  ///< rows known to hold the common cell
};

} // namespace kx
