#pragma once

#include <QString>

namespace kx {

class GridModel;

/// Cell ranges as clipboard text: tab between cells, a line per row.
class GridClipboard
{
public:
    /// The selected block of \a grid, hidden rows and columns left out.
    static QString selectedText(const GridModel &grid);
};

} // namespace kx
