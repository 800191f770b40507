// Journal: row work — inserting, deleting, closing, checking, pasting —
// each change one step of the undo history. Dragging rows and the
// clipboard are RowController's.
#include "kxjournal/Journal.h"

#include "control/JournalPrivate.h"
#include "editing/EditSession.h"
#include "grid/Sheet.h"
#include "ledger/BookCheck.h"
#include "rows/BlockPaste.h"
#include "rows/GridClipboard.h"
#include "rows/MonthClosing.h"
#include "rows/RowOperations.h"

namespace kx {

// Each operation works through p, which it holds: a handler may delete the control.

bool Journal::InsertRows()
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("InsertRows"), QStringLiteral("插入行"),
                   [p] { return RowOperations(p->book).insertRows(); });
}

bool Journal::DeleteRows(int Row)
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("DeleteRows"), QStringLiteral("删除行"),
                   [p, Row] { return RowOperations(p->book).deleteRows(Row); });
}

bool Journal::CloseBook()
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("CloseBook"), QStringLiteral("结账"),
                   [p] { return MonthClosing(p->book).closeBook(); });
}

bool Journal::CheckBook()
{
    JournalPrivate *const p = d.get();
    return p->exclusive(QStringLiteral("CheckBook"), false, [p] { return BookCheck(p->book).check(); });
}

QString Journal::copyText() const { return GridClipboard::selectedText(*d->grid); }

bool Journal::pasteText(const QString &text)
{
    JournalPrivate *const p = d.get();
    // A long paste reports its start before its undo step begins: what the
    // host changes then is its own change, not part of the paste.
    if (!p->mayStart())
        return false;
    BlockPaste paste(p->edit->context(), p->edit->rules());
    const std::shared_ptr<JournalPrivate> keep = d;
    if (!paste.begin(text) || !keep->q)
        return false;
    return p->step(QStringLiteral("Paste"), QStringLiteral("粘贴"), [&paste, &text] { return paste.paste(text); });
}

} // namespace kx
