#include "control/RowController.h"

#include "control/JournalPrivate.h"
#include "editing/EditSession.h"
#include "grid/GridViewPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/GridView.h"
#include "kxjournal/Journal.h"
#include "rows/BlockPaste.h"
#include "rows/GridClipboard.h"
#include "rows/RowMover.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace kx {

void RowController::setUp()
{
    GridViewPrivate::get(d.view).m_dropTest = ([this](int source, int row, int col) {
        return !d.state.mayModify() || d.state.isConsolidated() || RowMover(d.book).isBadDropRow(source, row, col);
    });
    QObject::connect(d.view, &GridView::rowDropped, d.q, [this](int source, int row, int col) {
        if (d.state.mayModify() && !d.state.isConsolidated())
            d.step(QStringLiteral("MoveRow"), QStringLiteral("移动行"),
                 [&] { return RowMover(d.book).drop(source, row, col); });
    });
}

void RowController::copyToClipboard(bool cut)
{
    // A host without a screen has no clipboard.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return;
    auto *data = new QMimeData;
    data->setText(GridClipboard::selectedText(*d.grid));
    data->setHtml(GridClipboard::selectedHtml(*d.grid));
    QGuiApplication::clipboard()->setMimeData(data);
    if (cut)
        d.step(QStringLiteral("Cut"), QStringLiteral("剪切"), [&] { return BlockPaste(d.edit->context(), d.edit->rules()).clear(); });
}

void RowController::pasteFromClipboard()
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        d.q->pasteText(QGuiApplication::clipboard()->text());
}

bool RowController::clearCells()
{
    if (!d.state.mayModify() || d.state.isConsolidated())
        return false;
    const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
    if (!d.ask(QStringLiteral("是否清除选定单元格的内容？"), QStringLiteral("清除")) || !d.alive())
        return false;
    return d.step(QStringLiteral("Clear"), QStringLiteral("清除"),
                [&] { return BlockPaste(d.edit->context(), d.edit->rules()).clear(); });
}

} // namespace kx
