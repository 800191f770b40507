#include "control/JournalMenu.h"

#include "ledger/CommandRegistry.h"

#include <QPointer>

namespace kx {

JournalMenu::JournalMenu(const CommandRegistry &registry, QWidget *parent) : QMenu(parent), m_registry(registry)
{
    QString group;
    for (const Command &command : registry.commands()) {
        if (command.name.isEmpty())
            continue;
        if (!group.isEmpty() && command.group != group)
            addSeparator();
        group = command.group;
        QAction *a = addAction(command.text);
        a->setObjectName(command.name);
        a->setCheckable(command.checkable);
        if (!command.keys.isEmpty()) {
            // Shown beside the item; the control itself answers the keys, so
            // the item's shortcut works only while the menu is open.
            a->setShortcut(QKeySequence(command.keys));
            a->setShortcutContext(Qt::WidgetShortcut);
            a->setShortcutVisibleInContextMenu(true);
        }
        const CommandId id = command.id;
        connect(a, &QAction::triggered, this, [this, id](bool checked) {
            // Looked up again: the registry owns the command, the menu only its id.
            const QPointer<JournalMenu> self(this);
            const Command &c = m_registry.command(id);
            m_registry.run(c, c.checked ? (checked ? QStringLiteral("True") : QStringLiteral("False")) : QString());
            // A host may delete the whole control from an event the command raised.
            if (self)
                sync();
        });
    }
    connect(this, &QMenu::aboutToShow, this, &JournalMenu::sync);
    sync();
}

QAction *JournalMenu::item(const QString &name) const
{
    return name.isEmpty() ? nullptr : findChild<QAction *>(name, Qt::FindDirectChildrenOnly);
}

QAction *JournalMenu::item(CommandId id) const
{
    return item(m_registry.command(id).name);
}

void JournalMenu::sync()
{
    for (const Command &command : m_registry.commands()) {
        QAction *a = item(command.name);
        if (!a)
            continue;
        a->setEnabled(CommandRegistry::isEnabled(command));
        if (command.checked)
            a->setChecked(command.checked());
    }
}

} // namespace kx
