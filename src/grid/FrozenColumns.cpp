#include "grid/FrozenColumns.h"

#include "grid/GridDelegate.h"
#include "kxjournal/GridModel.h"
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
    // Connected after this view's own header: a reset or an insert gives its
    // rows the default height first, then they take the main view's again.
    delete m_modelWatch;
    m_modelWatch = new QObject(this);
    if (QAbstractItemModel *shown = model()) {
        // Between "about to" and done, the rows on either side may be the old ones.
        const auto stale = [this] { m_stale = true; };
        const auto fresh = [this] {
            m_stale = false;
            followRows();
        };
        connect(shown, &QAbstractItemModel::modelAboutToBeReset, m_modelWatch, stale);
        connect(shown, &QAbstractItemModel::layoutAboutToBeChanged, m_modelWatch, stale);
        connect(shown, &QAbstractItemModel::modelReset, m_modelWatch, fresh);
        connect(shown, &QAbstractItemModel::layoutChanged, m_modelWatch, fresh);
        connect(shown, &QAbstractItemModel::rowsInserted, m_modelWatch,
                [this](const QModelIndex &, int first, int last) {
                    for (int r = first; r <= last; ++r)
                        followRow(r);
                });
    }
    follow();
    followRows();
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
    if (verticalScrollMode() != m_main->verticalScrollMode())
        setVerticalScrollMode(m_main->verticalScrollMode());
    horizontalHeader()->setFixedHeight(m_main->horizontalHeader()->height());
    place();
}

void FrozenColumns::followRows()
{
    if (!model())
        return;
    QHeaderView *mine = verticalHeader();
    const QHeaderView *theirs = m_main->verticalHeader();
    // Part way through a change of the rows: called again once it is done.
    if (m_stale || mine->count() != theirs->count())
        return;
    if (mine->minimumSectionSize() != theirs->minimumSectionSize())
        mine->setMinimumSectionSize(theirs->minimumSectionSize());
    // A new default height gives it to every row shown; the rows of their
    // own height are taken again below.
    if (mine->defaultSectionSize() != theirs->defaultSectionSize())
        mine->setDefaultSectionSize(theirs->defaultSectionSize());
    // Every row at the default height on both sides: nothing to ask row by row.
    const GridModel *grid = m_main->gridModel();
    const qint64 even = qint64(theirs->count()) * theirs->defaultSectionSize();
    if (grid && grid->uniformRows() && theirs->hiddenSectionCount() == 0 && mine->hiddenSectionCount() == 0 &&
        theirs->length() == even && mine->length() == even)
        return;
    // Row by row, without working out where each row lies on screen.
    const bool updates = mine->updatesEnabled();
    mine->setUpdatesEnabled(false);
    for (int r = 0; r < theirs->count(); ++r)
        followRow(r);
    mine->setUpdatesEnabled(updates);
}

void FrozenColumns::followRow(int row)
{
    QHeaderView *mine = verticalHeader();
    const QHeaderView *theirs = m_main->verticalHeader();
    if (m_stale || row < 0 || row >= mine->count() || mine->count() != theirs->count())
        return;
    if (theirs->isSectionHidden(row)) {
        if (!mine->isSectionHidden(row))
            mine->hideSection(row);
        return;
    }
    if (mine->isSectionHidden(row))
        mine->showSection(row);
    const int height = theirs->sectionSize(row);
    if (mine->sectionSize(row) != height)
        mine->resizeSection(row, height);
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
