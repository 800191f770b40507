// GridView: the frozen leading columns, and scrolling that keeps a cell
// clear of them.
#include "kxjournal/GridView.h"

#include "grid/FrozenColumns.h"

#include <QScrollBar>

namespace kx {

void GridView::setFrozenColumns(int count)
{
    m_frozenCount = std::max(0, count);
    if (m_frozenCount == 0) {
        delete m_frozen;
        m_frozen = nullptr;
        setHorizontalScrollMode(ScrollPerItem);
        return;
    }
    // Scrolling by pixels lets a column slide under the frozen part.
    setHorizontalScrollMode(ScrollPerPixel);
    if (!m_frozen) {
        m_frozen = new FrozenColumns(this);
        m_frozen->setStyleSheet(styleSheet());
        if (m_model)
            m_frozen->attach();
        m_frozen->show();
    }
    m_frozen->setCount(m_frozenCount);
}

QTableView *GridView::frozenView() const
{
    return m_frozen;
}

void GridView::scrollTo(const QModelIndex &index, ScrollHint hint)
{
    if (!m_frozen || !index.isValid()) {
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
    const int covered = m_frozen->frozenWidth() - visualRect(index).left();
    if (covered > 0)
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - covered);
}

void GridView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    if (m_frozen)
        m_frozen->place();
}

void GridView::updateGeometries()
{
    QTableView::updateGeometries();
    if (m_frozen)
        m_frozen->place();
}

} // namespace kx
