#include "control/JournalRowCommands.h"

#include "control/JournalPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/Journal.h"
#include "ledger/LedgerCommands.h"
#include "rows/RowOperations.h"

namespace kx {

void JournalRowCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;
    const QString edit = QStringLiteral("edit");
    const QString rows = QStringLiteral("rows");
    const QString book = QStringLiteral("book");

    // Enabled states and keys are set for every item at once, in JournalCommands.
    r.add({QStringLiteral("mnuUndo"), {}, QStringLiteral("撤销"), edit, [p](const QString &) { p->q->undo(); }, {}, {}});
    r.add({QStringLiteral("mnuRedo"), {}, QStringLiteral("恢复"), edit, [p](const QString &) { p->q->redo(); }, {}, {}});
    r.add({QStringLiteral("mnuCut"), {}, QStringLiteral("剪切"), edit, [p](const QString &) { p->copyToClipboard(true); },
           {}, {}});
    r.add({QStringLiteral("mnuCopy"), QStringLiteral("Copy"), QStringLiteral("复制"), edit,
           [p](const QString &) { p->copyToClipboard(false); }, {}, {}});
    r.add({QStringLiteral("mnuPaste"), {}, QStringLiteral("粘贴"), edit, [p](const QString &) { p->pasteFromClipboard(); },
           {}, {}});
    r.add({QStringLiteral("mnuClear"), {}, QStringLiteral("清除"), edit, [p](const QString &) { p->clearCells(); }, {}, {}});

    r.add({QStringLiteral("mnuInsertRows"), {}, QStringLiteral("插入行"), rows,
           [p](const QString &) { p->q->InsertRows(); }, {}, {}});
    r.add({QStringLiteral("mnuDeleteRows"), {}, QStringLiteral("删除行"), rows,
           [p](const QString &) { p->q->DeleteRows(); }, {}, {}});
    r.add({QStringLiteral("mnuRenumber"), {}, QStringLiteral("重新编号"), rows,
           [p](const QString &) {
               p->step(QStringLiteral("Renumber"), QStringLiteral("重新编号"),
                       [p] { return RowOperations(*p->grid, p->state, *p).renumber(); });
           },
           {}, {}});
    r.add({QStringLiteral("mnuDelHistory"), {}, QStringLiteral("删除建账前的记录"), rows,
           [p](const QString &) {
               p->exclusive(QStringLiteral("DelHistory"), false, [p] {
                   if (!p->settleEditor() || !p->alive())
                       return false;
                   const Result<int> gone = RowOperations(*p->grid, p->state, *p).deleteHistory(p->context());
                   if (!gone.ok())
                       p->prompt(gone.error(), true);
                   return gone.ok();
               });
           },
           {}, {}});

    r.add({QStringLiteral("mnuSave"), {}, QStringLiteral("保存"), book,
           [p](const QString &) {
               if (p->settleEditor())
                   p->q->Save();
           },
           {}, {}});
    r.add({QStringLiteral("mnuInsSumRow"), {}, QStringLiteral("插入汇总行"), book,
           [p](const QString &) { p->q->InsSumRow(); }, {}, {}});
    r.add({QStringLiteral("mnuRemoveSumRow"), {}, QStringLiteral("删除汇总行"), book,
           [p](const QString &) { p->q->RemoveSumRow(); }, {}, {}});
    r.add({QStringLiteral("mnuCloseBook"), {}, QStringLiteral("月末结账"), book,
           [p](const QString &) { p->q->CloseBook(); }, {}, {}});
    r.add({QStringLiteral("mnuCheckBook"), {}, QStringLiteral("检查账簿"), book,
           [p](const QString &) {
               if (p->q->CheckBook())
                   p->prompt(QStringLiteral("账簿检查完毕，没有发现错误。"), true);
           },
           {}, {}});
    LedgerCommands::offer(r, *p->grid, p->state, *p);
}

} // namespace kx
