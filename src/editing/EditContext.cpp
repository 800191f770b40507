#include "editing/EditContext.h"

#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridModel.h"
#include "ledger/LedgerState.h"

namespace kx {

const Database *EditContext::db() const
{
    AccContext *a = acc();
    if (!a)
        return nullptr;
    const Database &d = a->Connection();
    return d.isOpen() ? &d : nullptr;
}

const AccountChart &EditContext::chart()
{
    const int book = state.savedDocId();
    if (accountsBook != book) {
        if (const Database *d = db(); d && accounts.read(*d, book))
            accountsBook = book;
    }
    return accounts;
}

void EditContext::forgetBook()
{
    accountsBook = -1;
    explainListBook = -1;
    explainList.clear();
}

JournalColumns::Column EditContext::columnAt(int col) const
{
    return JournalColumns::fromKey(grid.colKey(col));
}

} // namespace kx
