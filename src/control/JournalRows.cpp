// Journal: row work — inserting, deleting, closing, checking, the clipboard
// and dragging rows — each change one step of the undo history.
#include "kxjournal/Journal.h"
#include "grid/GridViewPrivate.h"

#include "control/JournalPrivate.h"
#include "editing/EditSession.h"
#include "kxjournal/EditCycle.h"
#include "grid/Sheet.h"
#include "kxjournal/GridView.h"
#include "ledger/BookCheck.h"
#include "ledger/LedgerStep.h"
#include "rows/BlockPaste.h"
#include "rows/GridClipboard.h"
#include "rows/MonthClosing.h"
#include "rows/RowMover.h"
#include "rows/RowOperations.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace kx {

bool JournalPrivate::settleEditor()
{
    // Rows are about to move under the cell being edited: what was typed
    // is stored first, or, when it is refused, the operation waits.
    if (view->activeEditor() && !view->commitEditor())
        return false;
    if (grid->editCycle()->isEditing())
        grid->editCycle()->cancel();
    closePickers();
    return true;
}

bool JournalPrivate::step(const QString &name, const QString &text, const std::function<bool()> &work)
{
    return exclusive(name, false, [&] {
        // Storing the open editor raises events: the control may be gone after it.
        if (!settleEditor() || !alive())
            return false;
        return LedgerStep::record(*grid, state, *this, &edit->history(), text, work);
    });
}

void JournalPrivate::setUpRows()
{
    GridViewPrivate::get(view).m_dropTest = ([this](int source, int row, int col) {
        return !state.mayModify() || state.isConsolidated() || RowMover(*grid, state, *this).isBadDropRow(source, row, col);
    });
    QObject::connect(view, &GridView::rowDropped, q, [this](int source, int row, int col) {
        if (state.mayModify() && !state.isConsolidated())
            step(QStringLiteral("MoveRow"), QStringLiteral("移动行"),
                 [&] { return RowMover(*grid, state, *this).drop(source, row, col); });
    });
}

void JournalPrivate::copyToClipboard(bool cut)
{
    // A host without a screen has no clipboard.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return;
    auto *data = new QMimeData;
    data->setText(GridClipboard::selectedText(*grid));
    data->setHtml(GridClipboard::selectedHtml(*grid));
    QGuiApplication::clipboard()->setMimeData(data);
    if (cut)
        step(QStringLiteral("Cut"), QStringLiteral("剪切"), [&] { return BlockPaste(edit->context(), edit->rules()).clear(); });
}

void JournalPrivate::pasteFromClipboard()
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        q->pasteText(QGuiApplication::clipboard()->text());
}

bool JournalPrivate::clearCells()
{
    if (!state.mayModify() || state.isConsolidated())
        return false;
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (!ask(QStringLiteral("是否清除选定单元格的内容？"), QStringLiteral("清除")) || !alive())
        return false;
    return step(QStringLiteral("Clear"), QStringLiteral("清除"),
                [&] { return BlockPaste(edit->context(), edit->rules()).clear(); });
}

// Each operation works through p, which it holds: a handler may delete the control.

bool Journal::InsertRows()
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("InsertRows"), QStringLiteral("插入行"),
                   [p] { return RowOperations(*p->grid, p->state, *p).insertRows(); });
}

bool Journal::DeleteRows(int Row)
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("DeleteRows"), QStringLiteral("删除行"),
                   [p, Row] { return RowOperations(*p->grid, p->state, *p).deleteRows(Row); });
}

bool Journal::CloseBook()
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("CloseBook"), QStringLiteral("结账"),
                   [p] { return MonthClosing(*p->grid, p->state, *p).closeBook(); });
}

bool Journal::CheckBook()
{
    JournalPrivate *const p = d.get();
    return p->exclusive(QStringLiteral("CheckBook"), false, [p] { return BookCheck(*p->grid, p->state, *p).check(); });
}

QString Journal::copyText() const { return GridClipboard::selectedText(*d->grid); }

bool Journal::pasteText(const QString &text)
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("Paste"), QStringLiteral("粘贴"),
                   [p, &text] { return BlockPaste(p->edit->context(), p->edit->rules()).paste(text); });
}

} // namespace kx
