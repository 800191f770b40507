#pragma once

#include <QFont>
#include <QSizeF>
#include <QString>

namespace kx {

class Sheet;

/// Lays the book out on paper pages, as paper journals are kept: every page
/// repeats the caption, the period and the column headers; a page that
/// goes on ends with a "过次页" line carrying the debit and credit turned over
/// since the month began and the balance, and the next page opens with a
/// "承前页" line bringing them forward. Long texts wrap inside their column.
///
/// The laid-out lines go into a print grid: one fixed row of headers, one
/// fixed column holding each line's page number, a line's height in points;
/// total and carried lines are marked subtotal. All sizes are in points.
class PageLayout
{
public:
    /// Heights of a page's parts, in points.
    static constexpr double CaptionHeight = 28;
    static constexpr double PeriodHeight = 18;
    static constexpr double FooterHeight = 18;
    static constexpr double Padding = 2;

    /// Lays out the book in \a grid, in \a font.
    PageLayout(const Sheet &grid, const QFont &font);

    /// The printable area of an A4 sheet on its side with 10 mm margins.
    static QSizeF defaultArea();
    /// The font of a page's lines (the grid's family, 9 points).
    static QFont bodyFont(const QFont &gridFont);
    /// The height of one line of text in a cell.
    double lineHeight() const { return m_lineHeight; }

    /// Lays the book out on pages of \a area into \a out (made anew);
    /// returns the number of pages.
    int layout(const QSizeF &area, Sheet &out) const;
    /// The period the book covers, for the page heads.
    QString period() const;

private:
    const Sheet &m_grid;
    QFont m_font;
    double m_lineHeight;
};

} // namespace kx
