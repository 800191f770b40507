#pragma once

#include <QString>

namespace kx {

class Sheet;

/// For the length of a scope: the grid carries a busy tag (its change
/// handlers stand aside) and redraw is off. Both are put back on the way out.
class GridBusy
{
public:
    /// Marks \a grid busy with \a tag.
    GridBusy(Sheet &grid, const QString &tag);
    ~GridBusy();
    GridBusy(const GridBusy &) = delete;
    GridBusy &operator=(const GridBusy &) = delete;

private:
    Sheet &m_grid;
    QString m_tag;
    bool m_redraw;
};

} // namespace kx
