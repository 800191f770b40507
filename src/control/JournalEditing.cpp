// Journal: typing records in — undo, the pickers, account lookups. The
// work itself is EditingController's and the edit session's.
#include "kxjournal/Journal.h"

#include "control/EditingController.h"
#include "control/JournalPrivate.h"
#include "editing/AccountLookup.h"
#include "editing/EditSession.h"
#include "editing/ExplainRule.h"
#include "grid/Sheet.h"

namespace kx {

bool Journal::undo()
{
    // An undo raises events: the history stays while a handler deletes the control.
    const std::shared_ptr<JournalPrivate> keep = d;
    return keep->edit->history().undo();
}

bool Journal::redo()
{
    const std::shared_ptr<JournalPrivate> keep = d;
    return keep->edit->history().redo();
}
bool Journal::canUndo() const { return d->edit->history().canUndo(); }
bool Journal::canRedo() const { return d->edit->history().canRedo(); }
bool Journal::CellChanged() const { return d->edit->cellChanged(); }
QString Journal::ExplainHistory() const { return d->edit->explainHistory(); }
AccountPicker *Journal::accountPicker() const { return d->editing->accountPicker; }
CalculatorPopup *Journal::calculator() const { return d->editing->calculator; }

int Journal::FindAccID(const QString &rText)
{
    AccContext *acc = d->context();
    return acc ? AccountLookup(acc->Connection()).findAccId(rText) : 0;
}

int Journal::findAccountByPath(const QString &path)
{
    AccContext *acc = d->context();
    return acc ? AccountLookup(acc->Connection()).findByPath(path) : 0;
}

QString Journal::GetExplainList()
{
    return ExplainRule::texts(d->edit->context());
}

} // namespace kx
