#include "control/JournalCommands.h"

#include "control/JournalPrivate.h"
#include "control/JournalVoucherCommands.h"
#include "kxjournal/Journal.h"
#include "ledger/ColumnModel.h"

namespace kx {

void JournalCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;
    const QString output = QStringLiteral("output");
    const QString view = QStringLiteral("view");
    const QString side = QStringLiteral("side");

    JournalVoucherCommands::offer(d);
    r.add({QStringLiteral("mnuFind"), {}, QStringLiteral("查找...\tCtrl+F"), output, [p](const QString &) { p->openFindBar(); },
           {}, {}});
    r.add({QStringLiteral("mnuExport"), {}, QStringLiteral("导出..."), output, [p](const QString &) { p->q->Export(); }, {}, {}});
    r.add({QStringLiteral("mnuPrint"), {}, QStringLiteral("打印预览..."), output, [p](const QString &) { p->printPreview(); },
           {}, {}});

    r.add({QStringLiteral("mnuPackJnl"), {}, QStringLiteral("合并显示"), view,
           [p](const QString &on) { p->q->setIsPackedJnl(on == QLatin1String("True")); }, {},
           [p] { return p->state.isPacked; }});
    r.add({QStringLiteral("mnuRefresh"), QStringLiteral("Refresh"), QStringLiteral("刷新"), view,
           [p](const QString &) { p->refresh(); }, {}, {}});
    r.add({QStringLiteral("mnuDefaultFormat"), {}, QStringLiteral("默认格式"), view,
           [p](const QString &) { p->defaultFormatCommand(); }, {}, {}});
    r.add({QStringLiteral("mnuFieldShow"), {}, QStringLiteral("显示字段"), view, {}, {}, {}});
    r.add({QStringLiteral("mnuSideTask"), {}, QStringLiteral("侧边任务"), side,
           [p](const QString &on) {
               p->setSidePanel(on == QLatin1String("True"));
               Q_EMIT p->q->IconClick();
           },
           {}, [p] { return p->sidePanel; }});

    // Commands a host sends through DoCommand, without a menu item of their own.
    r.add({{}, QStringLiteral("DefaultFormat"), {}, {}, [p](const QString &) { p->q->SetDefaultFormat(); }, {}, {}});
    const auto applyFormats = [p](const QString &) { ColumnModel::applyFormats(*p->grid, p->state); };
    r.add({{}, QStringLiteral("AfterSetFormat"), {}, {}, applyFormats, {}, {}});
    r.add({{}, QStringLiteral("SetColFont"), {}, {}, applyFormats, {}, {}});
    r.add({{}, QStringLiteral("SideVisible"), {}, {},
           [p](const QString &on) { p->setSidePanel(on == QLatin1String("True")); }, {}, {}});
}

} // namespace kx
