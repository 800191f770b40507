#pragma once

#include "ledger/CommandRegistry.h"

#include <QMenu>

namespace kx {

/// The journal's context menu (also opened by the option button), built
/// from the command registry: an item per command with a name, in registry
/// order, a separator between groups, the keys that run an item beside it.
/// Items are enabled and checked from their commands whenever the menu is
/// about to show, and after every change the control sees (sync()), so a
/// host that puts the items on its own menus and toolbars sees them current.
class JournalMenu : public QMenu
{
    Q_OBJECT
public:
    /// The menu of the commands in \a registry (which must outlive it).
    explicit JournalMenu(const CommandRegistry &registry, QWidget *parent = nullptr);

    /// The item named \a name (nullptr when there is none).
    QAction *item(const QString &name) const;
    /// The item of command \a id (nullptr when it has none).
    QAction *item(CommandId id) const;
    /// Brings every item's enabled and checked state up to date.
    void sync();

private:
    const CommandRegistry &m_registry;
};

} // namespace kx
