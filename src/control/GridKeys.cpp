#include "control/GridKeys.h"

#include "control/JournalPrivate.h"
#include "kxjournal/GridView.h"

#include <QKeyEvent>

namespace kx {

GridKeys::GridKeys(JournalPrivate &d) : QObject(d.view), m_d(d)
{
    for (const Command &command : d.commands.commands())
        if (command.scope == KeyScope::Grid && !command.keys.isEmpty())
            m_keys.emplace_back(QKeySequence(command.keys), command.id);
    d.view->installEventFilter(this);
}

bool GridKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || watched != m_d.view || m_d.view->activeEditor())
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    const QKeySequence pressed(QKeyCombination(key->modifiers() & ~Qt::KeypadModifier, Qt::Key(key->key())));
    for (const auto &[keys, id] : m_keys) {
        if (keys == pressed) {
            m_d.commands.run(id);
            return true;
        }
    }
    return false;
}

} // namespace kx
