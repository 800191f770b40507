#pragma once

#include "kxjournal/Currency.h"

#include <QDate>
#include <QString>
#include <memory>

namespace kx {

class CellArrayData;

/// A rectangular block of cells, kept column by column: the form in which a whole result
/// set is handed to Sheet::loadArray() in one call. Cells are kept typed
/// (numbers, amounts, days, pooled texts) exactly as the grid keeps them, so
/// the grid takes the block over without converting a cell.
class CellArray
{
public:
    /// An empty array.
    CellArray();
    /// An array of \a rows × \a cols empty cells.
    CellArray(int rows, int cols);
    /// A deep copy.
    CellArray(const CellArray &other);
    /// A deep copy.
    CellArray &operator=(const CellArray &other);
    /// Takes \a other's cells; \a other is left empty.
    CellArray(CellArray &&other) noexcept;
    /// Takes \a other's cells; \a other is left empty.
    CellArray &operator=(CellArray &&other) noexcept;
    ~CellArray();

    /// Number of rows.
    int rows() const;
    /// Number of columns.
    int cols() const;
    /// The text of a cell (zero-based, in range), as written.
    QString text(int row, int col) const;
    /// Writes a cell's text.
    void setText(int row, int col, const QString &text);
    /// Writes a whole number.
    void setNumber(int row, int col, qint64 value);
    /// Writes an amount in its plain text form ("1250.5").
    void setAmount(int row, int col, Currency value);
    /// Writes a day (an invalid date empties the cell).
    void setDate(int row, int col, const QDate &date);
    /// Writes UTF-8 text; each distinct text of a column is decoded once.
    void setUtf8(int row, int col, const char *bytes, int size);
    /// Appends one row of empty cells and returns its index.
    int appendRow();
    /// Reserves room for \a rows rows.
    void reserveRows(int rows);

    /// The block's storage (for the grid that takes it over).
    CellArrayData &data() { return *d; }

private:
    std::unique_ptr<CellArrayData> d;
};

} // namespace kx
