#include "kxjournal/AccountPicker.h"

#include "editing/AccountChart.h"

#include <QHeaderView>
#include <functional>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kx {

class AccountPicker::Private
{
public:
    AccountChart chart;
    QLineEdit *search = nullptr;
    QTreeWidget *tree = nullptr;

    QTreeWidgetItem *makeItem(const AccountChart::Account &a) const
    {
        auto *item = new QTreeWidgetItem({a.code, a.name});
        item->setData(0, Qt::UserRole, a.id);
        return item;
    }
    void fill(const QString &text);
};

void AccountPicker::Private::fill(const QString &text)
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

AccountPicker::AccountPicker(QWidget *parent) : QFrame(parent), d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("AccountPicker"));
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    d->search = new QLineEdit(this);
    d->search->setObjectName(QStringLiteral("search"));
    d->search->setPlaceholderText(QStringLiteral("科目编码、名称、助记码或拼音首字母"));
    d->tree = new QTreeWidget(this);
    d->tree->setObjectName(QStringLiteral("accounts"));
    d->tree->setHeaderLabels({QStringLiteral("编码"), QStringLiteral("科目名称")});
    d->tree->setRootIsDecorated(true);
    d->tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    d->tree->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(d->search);
    layout->addWidget(d->tree);
    resize(360, 300);
    d->search->installEventFilter(this);
    connect(d->search, &QLineEdit::textChanged, this, [this](const QString &t) { d->fill(t); });
    connect(d->tree, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem *item) { choose(item->data(0, Qt::UserRole).toInt()); });
    hide();
}

AccountPicker::~AccountPicker() = default;

void AccountPicker::setChart(const AccountChart &chart)
{
    d->chart = chart;
    d->fill(d->search->text());
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
    auto *ke = static_cast<QKeyEvent *>(event);
    switch (ke->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        QTreeWidgetItem *now = d->tree->currentItem();
        QTreeWidgetItem *next = now ? (ke->key() == Qt::Key_Up ? d->tree->itemAbove(now) : d->tree->itemBelow(now))
                                    : d->tree->topLevelItem(0);
        if (next)
            d->tree->setCurrentItem(next);
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        choose(currentAccount());
        return true;
    case Qt::Key_Escape:
        hide();
        Q_EMIT dismissed();
        return true;
    default:
        return false;
    }
}

} // namespace kx
