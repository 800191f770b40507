#include "ledger/LedgerCommands.h"

#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/Book.h"
#include "ledger/CommandRegistry.h"
#include "ledger/LedgerHost.h"
#include "ledger/SummaryRows.h"

namespace kx {

void LedgerCommands::offer(CommandRegistry &registry, Book &book)
{
    Book *b = &book;
    registry.bind(CommandId::Statistics,
                  [b](const QString &) { b->host().prompt(SummaryRows(*b).statistics(), true); });
    registry.bind(CommandId::Recalc, [b](const QString &) {
        BalanceCalculator(*b).calculate(b->sheet().fixedRows());
        b->host().prompt(QStringLiteral("已经重新计算全部余额。"), false);
    });
}

} // namespace kx
