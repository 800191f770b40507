#include "kxjournal/AccountPicker.h"

#include "control/AccountPickerPrivate.h"
#include "control/PickerList.h"

#include <functional>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTreeWidget>

namespace kx {

void AccountPickerPrivate::fill(const QString &text)
{
    tree->clear();
    const QList<AccountChart::Account> &all = chart.accounts();
    if (text.trimmed().isEmpty()) {
        // The chart as a tree: an account sits below the longest code that
        // starts its own (the chart comes ordered by code).
        QList<std::pair<QString, QTreeWidgetItem *>> open;
        for (const AccountChart::Account &a : all) {
            while (!open.isEmpty() && !a.code.startsWith(open.last().first))
                open.removeLast();
            QTreeWidgetItem *item = makeItem(a);
            if (open.isEmpty())
                tree->addTopLevelItem(item);
            else
                open.last().second->addChild(item);
            open.push_back({a.code, item});
        }
        tree->expandToDepth(0);
    } else {
        const QList<int> hits = chart.match(text);
        for (int i = 0; i < hits.size() && i < 200; ++i)
            tree->addTopLevelItem(makeItem(all.at(hits.at(i))));
    }
    if (tree->topLevelItemCount() > 0)
        tree->setCurrentItem(tree->topLevelItem(0));
}

AccountPicker::AccountPicker(QWidget *parent) : QFrame(parent), d(std::make_unique<AccountPickerPrivate>())
{
    setObjectName(QStringLiteral("AccountPicker"));
    const PickerList parts = PickerList::build(this, QStringLiteral("科目编码、名称、助记码或拼音首字母"),
                                               {QStringLiteral("编码"), QStringLiteral("科目名称")});
    d->search = parts.search;
    d->tree = parts.list;
    d->tree->setObjectName(QStringLiteral("accounts"));
    d->tree->setRootIsDecorated(true);
    resize(360, 300);
    d->search->installEventFilter(this);
    connect(d->search, &QLineEdit::textChanged, this, [this](const QString &t) { d->fill(t); });
    connect(d->tree, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem *item) { choose(item->data(0, Qt::UserRole).toInt()); });
    hide();
}

AccountPicker::~AccountPicker() = default;

AccountPickerPrivate &AccountPickerPrivate::get(AccountPicker *picker)
{
    return *picker->d;
}

void AccountPickerPrivate::setChart(const AccountChart &accounts)
{
    chart = accounts;
    fill(search->text());
}

QString AccountPicker::searchText() const { return d->search->text(); }
void AccountPicker::setSearchText(const QString &text) { d->search->setText(text); }

QList<int> AccountPicker::listedAccounts() const
{
    QList<int> ids;
    std::function<void(QTreeWidgetItem *)> walk = [&](QTreeWidgetItem *item) {
        ids << item->data(0, Qt::UserRole).toInt();
        for (int i = 0; i < item->childCount(); ++i)
            walk(item->child(i));
    };
    for (int i = 0; i < d->tree->topLevelItemCount(); ++i)
        walk(d->tree->topLevelItem(i));
    return ids;
}

int AccountPicker::currentAccount() const
{
    const QTreeWidgetItem *item = d->tree->currentItem();
    return item ? item->data(0, Qt::UserRole).toInt() : 0;
}

void AccountPicker::choose(int id)
{
    hide();
    if (id != 0)
        Q_EMIT accountChosen(id);
}

void AccountPicker::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    raise();
    d->search->setFocus();
    d->search->selectAll();
}

bool AccountPicker::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != d->search || event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    return PickerList{d->search, d->tree}.key(
        static_cast<QKeyEvent *>(event), [this] { choose(currentAccount()); },
        [this] {
            hide();
            Q_EMIT dismissed();
        });
}

} // namespace kx
