#include "grid/GridBusy.h"

#include "kxjournal/GridModel.h"

#include <QCursor>
#include <QGuiApplication>

namespace kx {

GridBusy::GridBusy(GridModel &grid, const QString &tag)
    : m_grid(grid), m_tag(grid.tag()), m_redraw(grid.redraw()),
      m_cursor(qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr)
{
    m_grid.setTag(tag);
    m_grid.setRedraw(false);
    if (m_cursor)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

GridBusy::~GridBusy()
{
    m_grid.setTag(m_tag);
    m_grid.setRedraw(m_redraw);
    if (m_cursor)
        QGuiApplication::restoreOverrideCursor();
}

} // namespace kx
