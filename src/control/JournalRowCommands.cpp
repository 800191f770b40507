#include "control/JournalRowCommands.h"

#include "control/JournalPrivate.h"
#include "control/RowController.h"
#include "grid/Sheet.h"
#include "kxjournal/Journal.h"
#include "rows/RowOperations.h"

namespace kx {

void JournalRowCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;
    using I = CommandId;

    // Enabled states come from the table's conditions, for every item at once, in JournalCommands.
    r.bind(I::Undo, [p](const QString &) { p->q->undo(); });
    r.bind(I::Redo, [p](const QString &) { p->q->redo(); });
    r.bind(I::Cut, [p](const QString &) { p->rows->copyToClipboard(true); });
    r.bind(I::Copy, [p](const QString &) { p->rows->copyToClipboard(false); });
    r.bind(I::Paste, [p](const QString &) { p->rows->pasteFromClipboard(); });
    r.bind(I::Clear, [p](const QString &) { p->rows->clearCells(); });

    r.bind(I::InsertRows, [p](const QString &) { p->q->InsertRows(); });
    r.bind(I::DeleteRows, [p](const QString &) { p->q->DeleteRows(); });
    r.bind(I::Renumber, [p](const QString &) {
        p->step(QStringLiteral("Renumber"), QStringLiteral("重新编号"),
                [p] { return RowOperations(p->book).renumber(); });
    });
    r.bind(I::DelHistory, [p](const QString &) {
        p->exclusive(QStringLiteral("DelHistory"), false, [p] {
            if (!p->settleEditor() || !p->alive())
                return false;
            const Result<int> gone = RowOperations(p->book).deleteHistory(p->context());
            if (!gone.ok())
                p->prompt(gone.error(), true);
            return gone.ok();
        });
    });

    r.bind(I::Save, [p](const QString &) {
        if (p->settleEditor())
            p->q->Save();
    });
    r.bind(I::InsSumRow, [p](const QString &) { p->q->InsSumRow(); });
    r.bind(I::RemoveSumRow, [p](const QString &) { p->q->RemoveSumRow(); });
    r.bind(I::CloseBook, [p](const QString &) { p->q->CloseBook(); });
    r.bind(I::CheckBook, [p](const QString &) {
        if (p->q->CheckBook())
            p->prompt(QStringLiteral("账簿检查完毕，没有发现错误。"), true);
    });
}

} // namespace kx
