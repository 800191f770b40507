#include "editing/ExplainRule.h"

#include "editing/AccountLookup.h"
#include "editing/EditContext.h"
#include "grid/Sheet.h"
#include "ledger/LedgerState.h"

namespace kx {

bool ExplainRule::handles(JournalColumns::Column column) const
{
    return column == JournalColumns::Explain;
}

QString ExplainRule::comboList(EditContext &ctx, int, int) const
{
    const int book = ctx.state.savedDocId();
    if (ctx.explainListBook != book) {
        ctx.explainList.clear();
        if (const Database *db = ctx.db())
            ctx.explainList = AccountLookup(*db).bookExplains(book);
        ctx.explainListBook = book;
    }
    // What was typed lately comes first; each text once.
    QStringList items;
    for (const QString &t : ctx.explainHistory.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        if (!items.contains(t))
            items << t;
    for (const QString &t : ctx.explainList.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        if (!items.contains(t))
            items << t;
    return items.isEmpty() ? QString() : QLatin1Char('|') + items.join(QLatin1Char('|'));
}

void ExplainRule::afterEdit(EditContext &ctx, int row, int col)
{
    // The list remembers what was typed. A pasted block is not typing: its
    // explanations, often every one different, would bury the typed ones
    // and make each further line search a longer list.
    if (ctx.batch)
        return;
    const QString text = ctx.grid.text(row, col);
    if (!text.contains(QLatin1Char('|')) && !ctx.explainHistory.contains(text))
        ctx.explainHistory = text + QLatin1Char('|') + ctx.explainHistory;
}

} // namespace kx
