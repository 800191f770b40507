#pragma once

#include <QString>
#include <vector>

namespace kx {

/// A rectangular block of cell texts, row-major: the form in which a whole
/// result set is handed to GridModel::loadArray() in one call.
class CellArray
{
public:
    /// An empty array.
    CellArray() = default;
    /// An array of \a rows × \a cols empty texts.
    CellArray(int rows, int cols);

    /// Number of rows.
    int rows() const { return m_rows; }
    /// Number of columns.
    int cols() const { return m_cols; }
    /// The text at (\a row, \a col); both zero-based and in range.
    const QString &at(int row, int col) const { return m_cells[std::size_t(row) * std::size_t(m_cols) + std::size_t(col)]; }
    /// Writable text at (\a row, \a col).
    QString &at(int row, int col) { return m_cells[std::size_t(row) * std::size_t(m_cols) + std::size_t(col)]; }
    /// Appends one row of empty texts and returns its index.
    int appendRow();
    /// Reserves room for \a rows rows.
    void reserveRows(int rows);
    /// Moves row \a row's texts out into \a out (which gets cols() entries).
    void takeRow(int row, std::vector<QString> &out);

private:
    int m_rows = 0;
    int m_cols = 0;
    std::vector<QString> m_cells;
};

} // namespace kx
