#include "rows/GridClipboard.h"

#include "kxjournal/GridModel.h"

#include <QStringList>

namespace kx {

QString GridClipboard::selectedText(const GridModel &grid)
{
    int r1, c1, r2, c2;
    grid.selection(r1, c1, r2, c2);
    if (!grid.isDataRow(r1))
        return {};
    QStringList lines;
    for (int r = r1; r <= r2; ++r) {
        if (grid.isRowHidden(r))
            continue;
        QStringList cells;
        for (int c = c1; c <= c2; ++c)
            if (!grid.isColHidden(c))
                cells << grid.text(r, c);
        lines << cells.join(QLatin1Char('\t'));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace kx
