#pragma once

#include "ledger/Book.h"
#include <QFont>
#include <QString>
#include <functional>

namespace kx {

class Sheet;
struct LedgerState;

/// Widens columns to what they show. A figure is never cut: an amount or
/// balance column grows to its widest value. The widest is found from the
/// typed values (one pass reading eight bytes a cell; only the largest
/// magnitude and the totals of summary rows are formatted and measured),
/// so a million rows cost milliseconds. Date and number columns are
/// measured on an even sample of rows. Columns only grow: the user's own
/// wider widths stay.
class ColumnFit
{
public:
    /// The width in pixels of \a text in \a font.
    using Measure = std::function<int(const QString &text, const QFont &font)>;

    /// Fits the columns of \a grid, measuring with \a measure.
    ColumnFit(Book &book, Measure measure);

    /// Grows every amount and balance column between columns \a left and
    /// \a right (all by default) to its widest value in rows \a first …
    /// \a last (all rows by default).
    void fitFigures(int first = 0, int last = -1, int left = 0, int right = -1);
    /// Grows the date and number columns to the widest of \a sample rows.
    void fitLabels(int sample = 256);
    /// The width column \a col needs for its figures in rows \a first …
    /// \a last (all rows by default; 0: no figures).
    int figureWidth(int col, int first = 0, int last = -1) const;

    /// Room a cell keeps beside its text (the cell's margins and grid line).
    static constexpr int Padding = 10;
    /// Rows of a worked-out column beyond which its noted widest figure
    /// stands for the range (Sheet::derivedPeak()).
    static constexpr int PeakRange = 4096;

private:
    int measureCell(int row, int col) const;
    QFont fontAt(int row, int col) const;

    Book &m_book;
    Sheet &m_grid;
    const LedgerState &m_state;
    Measure m_measure;
};

} // namespace kx
