#include "control/JournalCommands.h"

#include "control/JournalPrivate.h"
#include "control/JournalVoucherCommands.h"
#include "kxjournal/Journal.h"
#include "ledger/ColumnModel.h"

#include <QStringList>
#include <utility>

namespace kx {

namespace {

// Every item is enabled by one set of conditions, and shows the keys the
// control answers to.
void refine(JournalPrivate &d)
{
    static const std::pair<const char *, const char *> keys[] = {
        {"mnuUndo", "Ctrl+Z"},   {"mnuRedo", "Ctrl+Y"},       {"mnuCut", "Ctrl+X"},     {"mnuCopy", "Ctrl+C"},
        {"mnuPaste", "Ctrl+V"},  {"mnuInsertRows", "Ins"},    {"mnuDeleteRows", "Del"}, {"mnuSave", "Ctrl+S"},
        {"mnuFind", "Ctrl+F"},   {"mnuRefresh", "F5"},
    };
    JournalPrivate *p = &d;
    for (const auto &[name, key] : keys)
        if (Command *c = d.commands.byName(QLatin1String(name)))
            c->keys = QLatin1String(key);
    QStringList names;
    for (const Command &command : d.commands.commands())
        if (!command.name.isEmpty())
            names << command.name;
    for (const QString &name : names)
        d.commands.byName(name)->enabled = [p, name] { return p->menuAllows(name); };
}

} // namespace

void JournalCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;
    const QString output = QStringLiteral("output");
    const QString view = QStringLiteral("view");

    JournalVoucherCommands::offer(d);
    r.add({QStringLiteral("mnuFind"), {}, QStringLiteral("查找..."), output, [p](const QString &) { p->openFindBar(); },
           {}, {}});
    r.add({QStringLiteral("mnuExport"), QStringLiteral("Export"), QStringLiteral("导出..."), output,
           [p](const QString &) { p->q->Export(); }, {}, {}});
    r.add({QStringLiteral("mnuPrint"), {}, QStringLiteral("打印预览..."), output, [p](const QString &) { p->printPreview(); },
           {}, {}});

    r.add({QStringLiteral("mnuPackJnl"), {}, QStringLiteral("合并显示"), view,
           [p](const QString &on) { p->q->setIsPackedJnl(on == QLatin1String("True")); }, {},
           [p] { return p->state.isPacked; }});
    r.add({QStringLiteral("mnuRefresh"), QStringLiteral("Refresh"), QStringLiteral("刷新"), view,
           [p](const QString &) { p->refresh(); }, {}, {}});
    r.add({QStringLiteral("mnuDefaultFormat"), {}, QStringLiteral("默认格式"), view,
           [p](const QString &) { p->defaultFormatCommand(); }, {}, {}});
    r.add({QStringLiteral("mnuFieldShow"), {}, QStringLiteral("显示字段"), view,
           [p](const QString &) { p->openFieldMenu(); }, {}, {}});
    r.add({QStringLiteral("mnuSideTask"), {}, QStringLiteral("侧边任务"), view,
           [p](const QString &on) {
               p->setSidePanel(on == QLatin1String("True"));
               Q_EMIT p->q->IconClick();
           },
           {}, [p] { return p->sidePanel; }});

    refine(d);

    // Commands a host sends through DoCommand, without a menu item of their own.
    // ("Find" is accepted and does nothing, as an unknown name: the find bar is the user's.)
    r.add({{}, QStringLiteral("DefaultFormat"), {}, {}, [p](const QString &) { p->q->SetDefaultFormat(); }, {}, {}});
    const auto applyFormats = [p](const QString &) { ColumnModel::applyFormats(*p->grid, p->state); };
    r.add({{}, QStringLiteral("AfterSetFormat"), {}, {}, applyFormats, {}, {}});
    r.add({{}, QStringLiteral("SetColFont"), {}, {}, applyFormats, {}, {}});
    r.add({{}, QStringLiteral("SideVisible"), {}, {},
           [p](const QString &on) { p->setSidePanel(on == QLatin1String("True")); }, {}, {}});
}

} // namespace kx
