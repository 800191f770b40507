#pragma once

#include "kxjournal/Result.h"

#include <QFont>
#include <QPageLayout>
#include <QString>
#include <QStringList>

class QPrinter;

namespace kx {

class Sheet;

/// Prints the book shown: lays it out into the print grid for the
/// printer's page and paints the pages, onto a printer or into a PDF file.
class BookPrinter
{
public:
    /// Prints the book in \a grid captioned \a caption, in the family of
    /// \a gridFont, laying it out into \a printGrid.
    BookPrinter(const Sheet &grid, Sheet &printGrid, const QString &caption, const QFont &gridFont);

    /// The book's page: A4 on its side, 10 mm margins.
    static QPageLayout page();
    /// Gives \a printer the book's page.
    static void setUpPage(QPrinter &printer);
    /// Lays the book out for \a printer's page and paints it; fails when the
    /// printer cannot be drawn on.
    Result<void> print(QPrinter &printer) const;
    /// Writes the book into the PDF file \a path, which appears whole or not
    /// at all, never over any of \a keep (the database in use), a SQLite
    /// database or what is not a regular file. The PDF is made in memory:
    /// no temporary folder is needed.
    Result<void> printToPdf(const QString &path, const QStringList &keep = {}) const;

private:
    const Sheet &m_grid;
    Sheet &m_printGrid;
    QString m_caption;
    QFont m_font;
};

} // namespace kx
