#include "editing/EditContext.h"

#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
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
    explainMemo.clear();
}

JournalColumns::Column EditContext::columnAt(int col) const
{
    return JournalColumns::fromKey(grid.colKey(col));
}

void EditContext::keepBlankRow()
{
    Sheet &g = grid;
    if (!state.mayModify() || state.isConsolidated() || g.rows() <= g.fixedRows())
        return;
    const int last = g.rows() - 1;
    for (int c = g.fixedCols(); c < g.cols(); ++c)
        if (!g.isEmpty(last, c)) {
            g.setRows(last + 2);
            g.setRowData(last + 1, int(BookRow::Unchanged));
            return;
        }
}

} // namespace kx
