#include "rows/RowCommands.h"

#include "ledger/CommandRegistry.h"
#include "rows/GridClipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace kx {

void RowCommands::offer(CommandRegistry &registry, GridModel &grid)
{
    const QString edit = QStringLiteral("edit");
    const QString rows = QStringLiteral("rows");
    GridModel *g = &grid;
    registry.add({QStringLiteral("mnuCopy"), QStringLiteral("Copy"), QStringLiteral("复制"), edit,
                  [g](const QString &) {
                      // A command-line host has no GUI application, hence no clipboard.
                      if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
                          QGuiApplication::clipboard()->setText(GridClipboard::selectedText(*g));
                  },
                  {}, {}});
    // What is not built yet shows in the menu, disabled.
    registry.add({QStringLiteral("mnuCut"), {}, QStringLiteral("剪切"), edit, {}, {}, {}});
    registry.add({QStringLiteral("mnuPaste"), {}, QStringLiteral("粘贴"), edit, {}, {}, {}});
    registry.add({QStringLiteral("mnuClear"), {}, QStringLiteral("清除"), edit, {}, {}, {}});
    registry.add({QStringLiteral("mnuInsertRows"), {}, QStringLiteral("插入行"), rows, {}, {}, {}});
    registry.add({QStringLiteral("mnuDeleteRows"), {}, QStringLiteral("删除行"), rows, {}, {}, {}});
    registry.add({QStringLiteral("mnuRenumber"), {}, QStringLiteral("重新编号"), rows, {}, {}, {}});
    registry.add({QStringLiteral("mnuDelHistory"), {}, QStringLiteral("删除建账前的记录"), rows, {}, {}, {}});
}

} // namespace kx
