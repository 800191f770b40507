// GridView: the frozen leading columns, and scrolling that keeps a cell
// clear of them.
#include "kxjournal/GridView.h"
#include "grid/GridViewPrivate.h"

#include "grid/FrozenColumns.h"

#include <QScrollBar>

namespace kx {

void GridView::setFrozenColumns(int count)
{
    d->m_frozenCount = std::max(0, count);
    if (d->m_frozenCount == 0) {
        delete d->m_frozen;
        d->m_frozen = nullptr;
        setHorizontalScrollMode(ScrollPerItem);
        return;
    }
    // Scrolling by pixels lets a column slide under the frozen part.
    setHorizontalScrollMode(ScrollPerPixel);
    if (!d->m_frozen) {
        d->m_frozen = new FrozenColumns(this);
        d->m_frozen->setStyleSheet(styleSheet());
        if (d->m_model)
            d->m_frozen->attach();
        d->m_frozen->show();
    }
    d->m_frozen->setCount(d->m_frozenCount);
}

QTableView *GridViewPrivate::frozenView() const
{
    return m_frozen;
}

void GridView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    if (!d->m_frozen || !index.isValid()) {
        QTableView::scrollTo(index, hint);
        return;
    }
    const int across = horizontalScrollBar()->value();
    QTableView::scrollTo(index, hint);
    // A frozen cell is always in sight: only rows scroll for it.
    if (isFrozenColumn(index.column())) {
        horizontalScrollBar()->setValue(across);
        return;
    }
    const int covered = d->m_frozen->frozenWidth() - visualRect(index).left();
    if (covered > 0)
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - covered);
}

void GridView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    if (d->m_frozen)
        d->m_frozen->place();
}

void GridView::updateGeometries()
{
    QTableView::updateGeometries();
    if (d->m_frozen)
        d->m_frozen->place();
}

} // namespace kx
