#pragma once

#include "grid/Cell.h"
#include "kxjournal/Currency.h"

namespace kx {

class CellStore;
class Sheet;
struct LedgerState;

/// Reads what a balance depends on straight from a row's typed cells: whether
/// the row is blank (no day), a summary row or a record, and a record's
/// amounts. A pass over a million rows reads eight bytes a cell and makes no
/// text; only a cell holding text (a summary's two-line totals, a figure too
/// wide for a cell) is read the slow way.
class RowAmounts
{
public:
    enum Kind { Blank, Summary, Record };

    RowAmounts(const Sheet &grid, const LedgerState &state);

    /// What \a row is; for a record, its amounts are read too.
    Kind read(int row);
    /// Also asks for column \a col of the rows ahead of each read, for a
    /// pass that writes it.
    void readAhead(int col);
    /// The cells of the row last read.
    const Cell *cells() const { return m_cells; }

    Currency debit, credit, forex;

    /// The amount in \a cell of \a row, column \a col (zero when empty).
    Currency amountAt(Cell cell, int row, int col) const
    {
        const Cell::Kind kind = cell.kind();
        if (kind == Cell::Number || kind == Cell::Amount)
            return cell.typedAmount();
        return kind == Cell::Empty ? Currency() : textAmount(row, col);
    }
    /// The cell of column \a col of the row last read (empty for -1).
    Cell cell(int col) const { return col < 0 ? Cell() : m_cells[col]; }

    int debitCol, creditCol, forexCol, tagCol, outlineCol;

private:
    // Rows are apart in memory: a pass asks for the cells it will need a few
    // rows ahead, so that their loads overlap instead of waiting one by one.
    static constexpr int Ahead = 16;
    void fetchAhead(int row) const;
    Currency textAmount(int row, int col) const;

    const Sheet &m_grid;
    const CellStore &m_store;
    const Cell *m_cells = nullptr;
    int m_ahead[8] = {};
    int m_aheadCount = 0;
};

} // namespace kx
