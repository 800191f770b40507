#pragma once

#include "ledger/CommandRegistry.h"

#include <QKeySequence>
#include <QObject>
#include <utility>
#include <vector>

namespace kx {

class JournalPrivate;

/// Answers the keys of the commands that belong to the grid (the
/// clipboard, inserting and deleting rows) while the grid itself has the
/// focus and no cell is being edited: a cell editor, the find bar or a
/// picker keeps those keys for itself.
class GridKeys : public QObject
{
    Q_OBJECT
public:
    /// Watches the grid's view of \a d for the keys of its grid commands.
    explicit GridKeys(JournalPrivate &d);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    JournalPrivate &m_d;
    std::vector<std::pair<QKeySequence, CommandId>> m_keys;
};

} // namespace kx
