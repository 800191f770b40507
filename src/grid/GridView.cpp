#include "kxjournal/GridView.h"
#include "grid/GridViewPrivate.h"

#include "grid/FrozenColumns.h"
#include "grid/GridDelegate.h"
#include "kxjournal/EditCycle.h"
#include "kxjournal/GridModel.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace kx {

namespace {

int buttonCode(Qt::MouseButtons b)
{
    int code = 0;
    if (b & Qt::LeftButton)
        code |= 1;
    if (b & Qt::RightButton)
        code |= 2;
    if (b & Qt::MiddleButton)
        code |= 4;
    return code;
}

int shiftCode(Qt::KeyboardModifiers m)
{
    int code = 0;
    if (m & Qt::ShiftModifier)
        code |= 1;
    if (m & Qt::ControlModifier)
        code |= 2;
    if (m & Qt::AltModifier)
        code |= 4;
    return code;
}

} // namespace

GridView::GridView(QWidget *parent) : QTableView(parent), d(new GridViewPrivate(this))
{
    d->m_delegate = new GridDelegate(this);
    setItemDelegate(d->m_delegate);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setSelectionMode(ContiguousSelection);
    setSelectionBehavior(SelectItems);
    setWordWrap(false);
    setTabKeyNavigation(true);
    horizontalHeader()->setSectionsMovable(true);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    verticalHeader()->setHighlightSections(false);
    verticalHeader()->viewport()->installEventFilter(this);
    connect(horizontalHeader(), &QHeaderView::sectionMoved, this, &GridView::onSectionMoved);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, &GridView::onSectionResized);
    // A row the user drags taller is as tall in the frozen part.
    connect(verticalHeader(), &QHeaderView::sectionResized, this, [this](int logical) {
        if (d->m_frozen && !d->m_syncingRows)
            d->m_frozen->followRow(logical);
    });
    applyLook();
}

GridViewPrivate &GridViewPrivate::get(GridView *view)
{
    return *view->d;
}

GridModel *GridView::gridModel() const
{
    return d->m_model;
}

int GridView::mouseRow() const
{
    return d->m_mouseRow;
}

int GridView::mouseCol() const
{
    return d->m_mouseCol;
}

QWidget *GridView::activeEditor() const
{
    return d->m_activeEditor;
}

int GridView::frozenColumns() const
{
    return d->m_frozenCount;
}

bool GridView::isFrozenColumn(int column) const
{
    return d->m_frozen && column < d->m_frozenCount;
}

GridView::~GridView()
{
    d->m_delegate->detach();
    if (d->m_model)
        disconnect(d->m_model, nullptr, this, nullptr);
}

void GridView::setGridModel(GridModel *model)
{
    if (d->m_model)
        disconnect(d->m_model, nullptr, this, nullptr);
    d->m_model = model;
    QItemSelectionModel *own = selectionModel();
    setModel(model);
    if (!model)
        return;
    // One selection for the grid and every view of it: code that moves the
    // cursor and the user's clicks change the same object.
    QItemSelectionModel *made = selectionModel();
    setSelectionModel(model->selectionModel());
    if (made && made != own && made != model->selectionModel())
        delete made;
    connect(model, &GridModel::rowLayoutChanged, this, [this](int row) { row < 0 ? syncRows() : syncRow(row); });
    connect(model, &GridModel::colLayoutChanged, this, [this](int col) { col < 0 ? syncCols() : syncCol(col); });
    connect(model, &QAbstractItemModel::modelReset, this, [this] {
        syncRows();
        syncCols();
    });
    connect(model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex &, int first, int last) {
        for (int r = first; r <= last; ++r)
            syncRow(r + d->m_model->fixedRows());
    });
    connect(model, &QAbstractItemModel::columnsInserted, this, [this] { syncCols(); });
    // The current row wears its own background: both rows repaint when it moves.
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, viewport(), [this] {
        viewport()->update();
        if (d->m_frozen)
            d->m_frozen->viewport()->update();
    });
    if (d->m_frozen)
        d->m_frozen->attach();
    syncRows();
    syncCols();
}

void GridView::syncRow(int row)
{
    if (!d->m_model || !d->m_model->isDataRow(row))
        return;
    const int r = row - d->m_model->fixedRows();
    const bool hidden = d->m_model->isRowHidden(row);
    if (isRowHidden(r) != hidden)
        setRowHidden(r, hidden);
    const int h = d->m_model->rowHeight(row);
    if (verticalHeader()->sectionSize(r) != h && !hidden)
        verticalHeader()->resizeSection(r, h);
    // The frozen part copies this view's row, never the model's: one source.
    if (d->m_frozen && !d->m_syncingRows)
        d->m_frozen->followRow(r);
}

void GridView::syncRows()
{
    if (!d->m_model)
        return;
    {
        // The frozen part copies the rows once at the end, not each as it changes.
        QScopedValueRollback<bool> bulk(d->m_syncingRows, true);
        const int def = d->m_model->rowHeight(-1);
        verticalHeader()->setMinimumSectionSize(
            std::max(1, std::min(def, d->m_model->rowHeightMin() > 0 ? d->m_model->rowHeightMin() : def)));
        verticalHeader()->setDefaultSectionSize(def);
        // A book without rows of their own height is laid out by the default
        // alone; asking a million rows one by one would cost seconds.
        if (!d->m_model->uniformRows()) {
            const int n = d->m_model->rows();
            for (int row = d->m_model->fixedRows(); row < n; ++row)
                syncRow(row);
        }
        if (d->m_model->rows() > 0)
            horizontalHeader()->setFixedHeight(d->m_model->rowHeight(0));
    }
    if (d->m_frozen) {
        d->m_frozen->followRows();
        d->m_frozen->follow();
    }
}

void GridView::syncCol(int col)
{
    if (!d->m_model || !d->m_model->isDataCol(col))
        return;
    const int c = col - d->m_model->fixedCols();
    if (isColumnHidden(c) != d->m_model->isColHidden(col)) {
        // Showing a column gives it back its old width: not the user's doing.
        QScopedValueRollback<bool> guard(d->m_syncing, true);
        setColumnHidden(c, d->m_model->isColHidden(col));
    }
    const int w = d->m_model->colWidth(col);
    if (w >= 0 && horizontalHeader()->sectionSize(c) != w && !d->m_model->isColHidden(col)) {
        QScopedValueRollback<bool> guard(d->m_syncing, true);
        horizontalHeader()->resizeSection(c, w);
    }
    if (d->m_frozen)
        d->m_frozen->follow();
}

void GridView::syncCols()
{
    if (!d->m_model)
        return;
    for (int col = d->m_model->fixedCols(); col < d->m_model->cols(); ++col)
        syncCol(col);
    if (d->m_model->cols() > 0 && d->m_model->colWidth(0) >= 0)
        verticalHeader()->setFixedWidth(d->m_model->colWidth(0));
}

bool GridView::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    const bool opens = trigger == AllEditTriggers || (editTriggers() & trigger);
    if (trigger == DoubleClicked && d->m_model && index.isValid() && state() != EditingState && d->m_doubleClick &&
        d->m_doubleClick(d->m_model->gridRow(index), d->m_model->gridCol(index)))
        return false;
    if (!d->m_model || !index.isValid() || !opens || state() == EditingState || d->m_activeEditor ||
        !(d->m_model->flags(index) & Qt::ItemIsEditable))
        return QTableView::edit(index, trigger, event);
    if (index != currentIndex())
        setCurrentIndex(index);
    // A frozen cell is edited where it lies in this view: scrolled back into
    // sight, with the frozen part out of its way until the editor closes.
    const bool frozen = isFrozenColumn(index.column());
    if (frozen) {
        horizontalScrollBar()->setValue(0);
        d->m_frozen->hide();
    }
    EditCycle *cycle = d->m_model->editCycle();
    if (!cycle->begin(d->m_model->gridRow(index), d->m_model->gridCol(index))) {
        if (frozen)
            d->m_frozen->show();
        return false;
    }
    // Typing on a cell replaces what it holds, as in any spreadsheet.
    if (trigger == AnyKeyPressed)
        cycle->setEditText(QString());
    if (!QTableView::edit(index, trigger, event)) {
        cycle->cancel();
        if (frozen)
            d->m_frozen->show();
        return false;
    }
    d->m_activeEditor = indexWidget(index);
    if (!d->m_activeEditor)
        d->m_activeEditor = focusWidget();
    return true;
}

void GridView::commitData(QWidget *editor)
{
    if (!d->m_model)
        return;
    EditCycle *cycle = d->m_model->editCycle();
    if (!cycle->isEditing())
        return;
    if (!cycle->validate(GridDelegate::editorText(editor))) {
        // Refused: nothing is stored and the editor stays open with the text,
        // as the handler may have rewritten it.
        d->m_rejectedEditor = editor;
        GridDelegate::setEditorText(editor, cycle->editText());
        return;
    }
    cycle->store();
}

void GridView::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint)
{
    if (editor == d->m_rejectedEditor) {
        d->m_rejectedEditor = nullptr;
        editor->setFocus();
        return;
    }
    // Close first, then raise the after-edit event, then move on: handlers of
    // the event see the cell as stored and the cursor still on it.
    QTableView::closeEditor(editor, QAbstractItemDelegate::NoHint);
    d->m_activeEditor = nullptr;
    if (d->m_frozen && d->m_frozenCount > 0)
        d->m_frozen->show();
    if (d->m_model)
        d->m_model->editCycle()->finish();
    if (d->m_committing) {
        setFocus();
        return;
    }
    QModelIndex next;
    if (hint == QAbstractItemDelegate::EditNextItem || hint == QAbstractItemDelegate::EditPreviousItem)
        next = moveCursor(hint == QAbstractItemDelegate::EditNextItem ? MoveNext : MovePrevious, Qt::NoModifier);
    else if (hint == QAbstractItemDelegate::SubmitModelCache)
        next = navigate(false, true);
    if (next.isValid())
        setCurrentIndex(next);
    setFocus();
}

bool GridView::commitEditor()
{
    QWidget *editor = d->m_activeEditor;
    if (!editor || !d->m_model)
        return false;
    QScopedValueRollback<bool> committing(d->m_committing, true);
    commitData(editor);
    if (d->m_rejectedEditor == editor) {
        d->m_rejectedEditor = nullptr;
        return false;
    }
    closeEditor(editor, QAbstractItemDelegate::SubmitModelCache);
    return true;
}

QModelIndex GridView::navigate(bool backwards, bool enter)
{
    if (!d->m_navigator || !d->m_model)
        return {};
    const QModelIndex cur = currentIndex();
    if (!cur.isValid())
        return {};
    const auto [row, col] = d->m_navigator(d->m_model->gridRow(cur), d->m_model->gridCol(cur), backwards, enter);
    if (row < 0 || col < 0)
        return {};
    return d->m_model->indexAt(row, col);
}

QModelIndex GridView::moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers)
{
    if (cursorAction == MoveNext || cursorAction == MovePrevious) {
        const QModelIndex to = navigate(cursorAction == MovePrevious, false);
        if (to.isValid())
            return to;
    }
    return QTableView::moveCursor(cursorAction, modifiers);
}

void GridView::keyPressEvent(QKeyEvent *event)
{
    if (state() != EditingState) {
        QString command;
        if (event->key() == Qt::Key_Insert && event->modifiers() == Qt::NoModifier)
            command = QStringLiteral("InsertRows");
        else if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier)
            command = QStringLiteral("DeleteRows");
        else if (event->matches(QKeySequence::Copy))
            command = QStringLiteral("Copy");
        else if (event->matches(QKeySequence::Cut))
            command = QStringLiteral("Cut");
        else if (event->matches(QKeySequence::Paste))
            command = QStringLiteral("Paste");
        if (!command.isEmpty()) {
            event->accept();
            Q_EMIT commandKey(command);
            return;
        }
    }
    // Enter on a cell that is not being edited moves on, as after an edit.
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && state() != EditingState &&
        event->modifiers() == Qt::NoModifier) {
        const QModelIndex next = navigate(false, true);
        if (next.isValid()) {
            setCurrentIndex(next);
            event->accept();
            return;
        }
    }
    QTableView::keyPressEvent(event);
}

void GridView::trackMouse(const QPoint &pos)
{
    if (!d->m_model) {
        d->m_mouseRow = d->m_mouseCol = -1;
        return;
    }
    const int r = rowAt(pos.y());
    const int c = columnAt(pos.x());
    d->m_mouseRow = r < 0 ? -1 : r + d->m_model->fixedRows();
    d->m_mouseCol = c < 0 ? -1 : c + d->m_model->fixedCols();
}

void GridView::mousePressEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    trackMouse(pos);
    Q_EMIT mouseDown(buttonCode(event->button()), shiftCode(event->modifiers()), float(pos.x()), float(pos.y()));
    QTableView::mousePressEvent(event);
}

void GridView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint pos = event->position().toPoint();
    trackMouse(pos);
    Q_EMIT mouseMove(buttonCode(event->buttons()), shiftCode(event->modifiers()), float(pos.x()), float(pos.y()));
    QTableView::mouseMoveEvent(event);
}

void GridView::mouseReleaseEvent(QMouseEvent *event)
{
    QTableView::mouseReleaseEvent(event);
    const QPoint pos = event->position().toPoint();
    trackMouse(pos);
    Q_EMIT mouseUp(buttonCode(event->button()), shiftCode(event->modifiers()), float(pos.x()), float(pos.y()));
}

void GridView::onSectionMoved(int, int oldVisual, int newVisual)
{
    if (d->m_syncing || !d->m_model)
        return;
    // The header only moves its picture of the column; put it back and move
    // the model's column instead, so keys and indexes stay one and the same.
    {
        QScopedValueRollback<bool> guard(d->m_syncing, true);
        horizontalHeader()->moveSection(newVisual, oldVisual);
    }
    d->m_model->moveColTo(oldVisual + d->m_model->fixedCols(), newVisual + d->m_model->fixedCols());
}

void GridView::onSectionResized(int logical, int, int size)
{
    if (d->m_frozen)
        d->m_frozen->follow();
    if (d->m_syncing || !d->m_model || size <= 0)
        return;
    const int col = logical + d->m_model->fixedCols();
    QScopedValueRollback<bool> guard(d->m_syncing, true);
    d->m_model->setColWidth(col, size);
    Q_EMIT columnResized(col, size);
}

void GridView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyLook();
}

} // namespace kx
