#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace kx {

class Sheet;

/// Cell blocks as clipboard text: a tab between cells and a line per row,
/// a cell holding a tab, a line break or a quote put in quotes (with its
/// quotes doubled), as spreadsheets write and read them; and the same block
/// as an HTML table for rich targets.
class GridClipboard
{
public:
    /// The selected block of \a grid, hidden rows and columns left out.
    /// Record dates go as their ISO day, not as the label shown.
    static QString selectedText(const Sheet &grid);
    /// The selected block of \a grid as an HTML table.
    static QString selectedHtml(const Sheet &grid);
    /// The rows of a tab-separated \a text (quoted cells read back, line
    /// ends CR LF, LF or CR, a final line end ignored).
    static QList<QStringList> parse(const QString &text);

private:
    static QList<QStringList> block(const Sheet &grid);
};

} // namespace kx
