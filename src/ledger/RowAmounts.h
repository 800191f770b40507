#pragma once

#include "grid/Cell.h"
#include "grid/CellStore.h"
#include "grid/ColumnReader.h"
#include "kxjournal/Currency.h"

namespace kx {

class Book;
class JournalColumns;
class Sheet;
struct LedgerState;

/// Reads what a balance depends on straight from the typed cells of a row:
/// whether the row is blank (no day), a summary row or a record, and a
/// record's amounts. A pass over a million rows reads a few dense columns,
/// eight bytes a cell, and makes no text; only a cell holding text (a
/// summary's two-line totals, a figure too wide for a cell) is read the slow
/// way.
class RowAmounts
{
public:
    enum Kind { Blank, Summary, Record };

    explicit RowAmounts(const Book &book);

    /// What \a row is; for a record, its amounts are read too.
    Kind read(int row);

    Currency debit, credit, forex;

    /// The amount in \a cell of \a row, column \a col (zero when empty).
    Currency amountAt(Cell cell, int row, int col) const
    {
        const Cell::Kind kind = cell.kind();
        if (kind > Cell::Amount)
            return kind == Cell::Text ? textAmount(row, col) : Currency();
        // Empty, a whole number or an amount, mixed at random down a column:
        // worked out without a branch on which (an empty cell's payload is 0).
        const std::int64_t payload = cell.payload();
        const bool units = kind == Cell::Number;
        const bool wide = (payload > MaxUnits) | (payload < -MaxUnits);
        if (units & wide)
            return Currency::invalid();
        return Currency::fromRaw(payload * (units ? Currency::Scale : 1));
    }

    int debitCol, creditCol, forexCol, tagCol, outlineCol;

private:
    RowAmounts(const Sheet &grid, const LedgerState &state, const JournalColumns &columns);
    static constexpr std::int64_t MaxUnits = INT64_MAX / Currency::Scale;
    Currency textAmount(int row, int col) const;
    const Sheet &m_grid;
    const CellStore &m_store;
    ColumnReader m_debit, m_credit, m_forex, m_tag, m_outline;
};

} // namespace kx
