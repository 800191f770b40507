#include "control/JournalCommands.h"

#include "control/FindBar.h"
#include "control/GridKeys.h"
#include "control/JournalPrivate.h"
#include "control/JournalRowCommands.h"
#include "control/JournalVoucherCommands.h"
#include "control/LayoutController.h"
#include "control/OutputController.h"
#include "control/ExplainMemoView.h"
#include "control/ReconcileView.h"
#include "control/DailyReportView.h"
#include "kxjournal/Journal.h"
#include "ledger/ColumnModel.h"
#include "ledger/ReconciledRows.h"
#include "ledger/LedgerCommands.h"

#include <QShortcut>

namespace kx {

void JournalCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;
    using I = CommandId;

    JournalRowCommands::offer(d);
    LedgerCommands::offer(r, d.book);
    JournalVoucherCommands::offer(d);

    r.bind(I::Find, [p](const QString &) { p->output->openFindBar(); });
    r.bind(I::Export, [p](const QString &) { p->q->Export(); });
    r.bind(I::Print, [p](const QString &) { p->output->printPreview(); });
    r.bind(I::Reconcile, [p](const QString &) { ReconcileView::open(*p); });
    r.bind(I::ExplainMemo, [p](const QString &) { ExplainMemoView::open(*p); });
    r.bind(I::DailyReport, [p](const QString &) { DailyReportView::open(*p); });
    r.bind(I::FindNext, [p](const QString &) { p->output->findBar->isVisible() ? p->output->findBar->step(true) : p->output->openFindBar(); });
    r.bind(I::FindPrevious,
           [p](const QString &) { p->output->findBar->isVisible() ? p->output->findBar->step(false) : p->output->openFindBar(); });

    r.bind(
        I::PackJnl, [p](const QString &on) { p->q->setIsPackedJnl(on == QLatin1String("True")); },
        [p] { return p->state.isPacked; });
    r.bind(I::Refresh, [p](const QString &) { p->refresh(); });
    r.bind(I::DefaultFormatItem, [p](const QString &) { p->defaultFormatCommand(); });
    r.bind(I::FieldShow, [p](const QString &) { p->layout->openFieldMenu(); });
    r.bind(
        I::Unreconciled, [p](const QString &on) { ReconciledRows::filter(*p->grid, on == QLatin1String("True")); },
        [p] { return ReconciledRows::filtered(*p->grid); });
    r.bind(
        I::SideTask,
        [p](const QString &on) {
            p->setSidePanel(on == QLatin1String("True"));
            Q_EMIT p->q->IconClick();
        },
        [p] { return p->sidePanel; });

    r.bind(I::DefaultFormat, [p](const QString &) { p->q->SetDefaultFormat(); });
    const auto applyFormats = [p](const QString &) { ColumnModel::applyFormats(p->book); };
    r.bind(I::AfterSetFormat, applyFormats);
    r.bind(I::SetColFont, applyFormats);
    r.bind(I::SideVisible, [p](const QString &on) { p->setSidePanel(on == QLatin1String("True")); });

    // A menu item runs under its table condition, whether chosen, sent by
    // name or pressed as keys.
    for (const Command &command : r.commands())
        if (!command.name.isEmpty())
            r.command(command.id).enabled = [p, condition = command.condition] { return p->layout->menuAllows(condition); };
}

void JournalCommands::bindKeys(JournalPrivate &d)
{
    JournalPrivate *p = &d;
    for (const Command &command : d.commands.commands()) {
        if (command.keys.isEmpty() || command.scope != KeyScope::Journal)
            continue;
        auto *shortcut = new QShortcut(QKeySequence(command.keys), d.q);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        QObject::connect(shortcut, &QShortcut::activated, shortcut, [p, id = command.id] { p->commands.run(id); });
    }
    new GridKeys(d);
}

} // namespace kx
