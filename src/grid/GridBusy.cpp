#include "grid/GridBusy.h"

#include "grid/Sheet.h"

namespace kx {

GridBusy::GridBusy(Sheet &grid, const QString &tag) : m_grid(grid), m_tag(grid.tag()), m_redraw(grid.redraw())
{
    m_grid.setTag(tag);
    m_grid.setRedraw(false);
}

GridBusy::~GridBusy()
{
    m_grid.setTag(m_tag);
    m_grid.setRedraw(m_redraw);
}

} // namespace kx
