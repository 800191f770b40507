#include "grid/FrozenColumns.h"

#include "grid/GridDelegate.h"
#include "kxjournal/GridView.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace kx {

FrozenColumns::FrozenColumns(GridView *main) : QTableView(main), m_main(main)
{
    setObjectName(QStringLiteral("frozenColumns"));
    setFocusPolicy(Qt::NoFocus);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(ContiguousSelection);
    setSelectionBehavior(SelectItems);
    setWordWrap(false);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    horizontalHeader()->setHighlightSections(false);
    // A delegate of its own that paints as the main view's does: a shared
    // one would hand this view the main view's editors.
    auto *delegate = new GridDelegate(main);
    delegate->setParent(this);
    setItemDelegate(delegate);
    // Both ways: a wheel over the frozen part scrolls the book too.
    connect(verticalScrollBar(), &QScrollBar::valueChanged, main->verticalScrollBar(), &QScrollBar::setValue);
    connect(main->verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(), &QScrollBar::setValue);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this](int logical, int, int size) {
        // Only the user's drag goes back; showing a column resizes it too.
        if (!m_following && m_main->columnWidth(logical) != size)
            m_main->horizontalHeader()->resizeSection(logical, size);
    });
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
        m_main->setFocus();
        m_main->edit(index);
    });
}

void FrozenColumns::attach()
{
    QItemSelectionModel *made = selectionModel();
    setModel(m_main->model());
    QItemSelectionModel *own = selectionModel();
    setSelectionModel(m_main->selectionModel());
    if (own && own != made && own != m_main->selectionModel())
        delete own;
    follow();
}

void FrozenColumns::setCount(int count)
{
    m_count = count;
    follow();
}

void FrozenColumns::follow()
{
    if (!model())
        return;
    QScopedValueRollback<bool> following(m_following, true);
    const int cols = model()->columnCount();
    for (int c = 0; c < cols; ++c) {
        const bool hidden = c >= m_count || m_main->isColumnHidden(c);
        if (isColumnHidden(c) != hidden)
            setColumnHidden(c, hidden);
        if (!hidden && columnWidth(c) != m_main->columnWidth(c))
            setColumnWidth(c, m_main->columnWidth(c));
    }
    QHeaderView *mine = verticalHeader();
    const QHeaderView *theirs = m_main->verticalHeader();
    mine->setMinimumSectionSize(theirs->minimumSectionSize());
    mine->setDefaultSectionSize(theirs->defaultSectionSize());
    horizontalHeader()->setFixedHeight(m_main->horizontalHeader()->height());
    place();
}

void FrozenColumns::place()
{
    const int x = m_main->frameWidth() + (m_main->verticalHeader()->isVisible() ? m_main->verticalHeader()->width() : 0);
    setGeometry(x, m_main->frameWidth(), frozenWidth(),
                m_main->viewport()->height() + m_main->horizontalHeader()->height());
    verticalScrollBar()->setValue(m_main->verticalScrollBar()->value());
}

int FrozenColumns::frozenWidth() const
{
    int width = 0;
    if (!model())
        return 0;
    for (int c = 0; c < std::min(m_count, model()->columnCount()); ++c)
        if (!m_main->isColumnHidden(c))
            width += m_main->columnWidth(c);
    return width;
}

} // namespace kx
