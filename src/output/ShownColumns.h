#pragma once

#include "grid/Sheet.h"

#include <QVector>

namespace kx {

/// The grid columns a person sees, in grid order: past the fixed columns,
/// neither hidden nor squeezed to nothing. Find searches these; export and
/// print lay them out.
inline QVector<int> shownColumns(const Sheet &grid)
{
    QVector<int> cols;
    for (int c = grid.fixedCols(); c < grid.cols(); ++c)
        if (!grid.isColHidden(c) && grid.colWidth(c) != 0)
            cols.append(c);
    return cols;
}

} // namespace kx
