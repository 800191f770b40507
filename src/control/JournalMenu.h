#pragma once

#include <QMenu>

namespace kx {

/// The journal's context menu (also opened by the option button). Items are
/// named like the commands they run (mnuCopy, mnuPackJnl, …); an item whose
/// command the control does not offer yet stays disabled.
class JournalMenu : public QMenu
{
    Q_OBJECT
public:
    /// Builds the items.
    explicit JournalMenu(QWidget *parent = nullptr);

    /// The item named \a name (nullptr when there is none).
    QAction *item(const QString &name) const;
    /// Connects the item \a name to \a slot and enables it.
    template <typename Fn>
    void bind(const QString &name, QObject *context, Fn slot)
    {
        if (QAction *a = item(name)) {
            a->setEnabled(true);
            connect(a, &QAction::triggered, context, slot);
        }
    }

private:
    QAction *addItem(const QString &name, const QString &text, bool checkable = false);
};

} // namespace kx
