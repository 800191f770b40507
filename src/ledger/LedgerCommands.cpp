#include "ledger/LedgerCommands.h"

#include "kxjournal/GridModel.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/CommandRegistry.h"
#include "ledger/LedgerHost.h"
#include "ledger/SummaryRows.h"

namespace kx {

void LedgerCommands::offer(CommandRegistry &registry, GridModel &grid, LedgerState &state, LedgerHost &host)
{
    const QString group = QStringLiteral("book");
    GridModel *g = &grid;
    LedgerState *s = &state;
    LedgerHost *h = &host;
    registry.add({QStringLiteral("mnuInsSumRow"), {}, QStringLiteral("插入汇总行"), group,
                  [g, s, h](const QString &) { SummaryRows(*g, *s, *h).insert(0); }, {}, {}});
    registry.add({QStringLiteral("mnuRemoveSumRow"), {}, QStringLiteral("删除汇总行"), group,
                  [g, s, h](const QString &) { SummaryRows(*g, *s, *h).remove(0); }, {}, {}});
    registry.add({QStringLiteral("mnuStatistics"), {}, QStringLiteral("统计"), group,
                  [g, s, h](const QString &) { h->prompt(SummaryRows(*g, *s, *h).statistics(), true); }, {}, {}});
    // Closing and checking come with their own classes; until then the items show, disabled.
    registry.add({QStringLiteral("mnuCloseBook"), {}, QStringLiteral("月末结账"), group, {}, {}, {}});
    registry.add({QStringLiteral("mnuCheckBook"), {}, QStringLiteral("检查账簿"), group, {}, {}, {}});
    registry.add({QStringLiteral("mnuRecalc"), {}, QStringLiteral("重新计算余额"), group,
                  [g, s, h](const QString &) {
                      BalanceCalculator(*g, *s).calculate(g->fixedRows());
                      h->prompt(QStringLiteral("已经重新计算全部余额。"), false);
                  },
                  {}, {}});
}

} // namespace kx
