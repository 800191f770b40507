#include "control/PickerList.h"

#include <QFrame>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kx {

PickerList PickerList::build(QFrame *owner, const QString &placeholder, const QStringList &headers)
{
    owner->setFrameShape(QFrame::Box);
    owner->setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(owner);
    layout->setContentsMargins(2, 2, 2, 2);
    PickerList p;
    p.search = new QLineEdit(owner);
    p.search->setObjectName(QStringLiteral("search"));
    p.search->setPlaceholderText(placeholder);
    p.list = new QTreeWidget(owner);
    p.list->setHeaderLabels(headers);
    p.list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    // The keys stay in the search box, so typing goes on while moving.
    p.list->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(p.search);
    layout->addWidget(p.list);
    return p;
}

bool PickerList::key(QKeyEvent *event, const std::function<void()> &pick, const std::function<void()> &dismiss) const
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        QTreeWidgetItem *now = list->currentItem();
        QTreeWidgetItem *next = now ? (event->key() == Qt::Key_Up ? list->itemAbove(now) : list->itemBelow(now))
                                    : list->topLevelItem(0);
        if (next)
            list->setCurrentItem(next);
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        pick();
        return true;
    case Qt::Key_Escape:
        dismiss();
        return true;
    default:
        return false;
    }
}

} // namespace kx
