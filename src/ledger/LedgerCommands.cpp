#include "ledger/LedgerCommands.h"

#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/CommandRegistry.h"
#include "ledger/LedgerHost.h"
#include "ledger/SummaryRows.h"

namespace kx {

void LedgerCommands::offer(CommandRegistry &registry, Sheet &grid, LedgerState &state, LedgerHost &host)
{
    Sheet *g = &grid;
    LedgerState *s = &state;
    LedgerHost *h = &host;
    registry.bind(CommandId::Statistics,
                  [g, s, h](const QString &) { h->prompt(SummaryRows(*g, *s, *h).statistics(), true); });
    registry.bind(CommandId::Recalc, [g, s, h](const QString &) {
        BalanceCalculator(*g, *s).calculate(g->fixedRows());
        h->prompt(QStringLiteral("已经重新计算全部余额。"), false);
    });
}

} // namespace kx
