// GridView: dragging a row by its header.
#include "kxjournal/GridView.h"
#include "grid/GridViewPrivate.h"

#include "grid/Sheet.h"

#include <QApplication>
#include <QHeaderView>
#include <QMouseEvent>

namespace kx {

std::pair<int, int> GridView::dropCell(const QPoint &headerPos) const
{
    QHeaderView *header = verticalHeader();
    const int section = header->logicalIndexAt(headerPos.y());
    const int row = section < 0 ? -1 : section + d->m_model->fixedRows();
    if (headerPos.x() >= 0 && headerPos.x() < header->width())
        return {row, 0};
    // Over the cells: the column there (never 0), or past the last one.
    const QPoint inCells = viewport()->mapFromGlobal(header->viewport()->mapToGlobal(headerPos));
    const int c = columnAt(inCells.x());
    return {row, c < 0 ? d->m_model->cols() : c + d->m_model->fixedCols()};
}

bool GridView::rowHeaderMouse(QMouseEvent *event)
{
    if (!d->m_model || !d->m_dropTest)
        return false;
    const QPoint pos = event->position().toPoint();
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (event->button() == Qt::LeftButton && state() != EditingState) {
            const int section = verticalHeader()->logicalIndexAt(pos.y());
            d->m_dragSource = section < 0 ? -1 : section + d->m_model->fixedRows();
            d->m_pressPos = pos;
            d->m_dragging = false;
        }
        return false;
    case QEvent::MouseMove: {
        if (d->m_dragSource < 0 || !(event->buttons() & Qt::LeftButton))
            return false;
        if (!d->m_dragging) {
            if ((pos - d->m_pressPos).manhattanLength() < QApplication::startDragDistance())
                return false;
            d->m_dragging = true;
            if (Sheet *sheet = Sheet::of(d->m_model))
                sheet->setDragMarkRow(d->m_dragSource);
        }
        const auto [row, col] = dropCell(pos);
        verticalHeader()->viewport()->setCursor(d->m_dropTest(d->m_dragSource, row, col) ? Qt::ForbiddenCursor
                                                                                  : Qt::DragMoveCursor);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        if (d->m_dragSource < 0 || event->button() != Qt::LeftButton)
            return false;
        const int source = d->m_dragSource;
        const bool dragged = d->m_dragging;
        d->m_dragSource = -1;
        d->m_dragging = false;
        if (!dragged)
            return false;
        if (Sheet *sheet = Sheet::of(d->m_model))
            sheet->setDragMarkRow(-1);
        verticalHeader()->viewport()->unsetCursor();
        const auto [row, col] = dropCell(pos);
        Q_EMIT rowDropped(source, row, col);
        return true;
    }
    default:
        return false;
    }
}

bool GridView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == verticalHeader()->viewport() &&
        (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseMove ||
         event->type() == QEvent::MouseButtonRelease))
        return rowHeaderMouse(static_cast<QMouseEvent *>(event));
    return QTableView::eventFilter(watched, event);
}

} // namespace kx
