#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QFrame;
class QKeyEvent;
class QLineEdit;
class QTreeWidget;

namespace kx {

/// The search box over a list that the pickers share, and the keys that
/// work it from the search box: ↑/↓ move, Enter picks, Esc closes.
struct PickerList {
    QLineEdit *search = nullptr;
    QTreeWidget *list = nullptr;

    /// Lays a search box with \a placeholder over a list with \a headers into \a owner.
    static PickerList build(QFrame *owner, const QString &placeholder, const QStringList &headers);
    /// Handles a key pressed in the search box; true when it was one of the
    /// picker's keys. \a pick takes the highlighted item, \a dismiss closes.
    bool key(QKeyEvent *event, const std::function<void()> &pick, const std::function<void()> &dismiss) const;
};

} // namespace kx
