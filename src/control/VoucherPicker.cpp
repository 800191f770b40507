#include "kxjournal/VoucherPicker.h"

#include "control/PickerList.h"
#include "kxjournal/AccContext.h"
#include "voucher/VoucherDirectory.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QTreeWidget>

namespace kx {

namespace {

// A search shows at most this many vouchers; more words narrow it further.
constexpr int ShownAtMost = 500;

bool matches(const VoucherPicker::Entry &e, const QString &word)
{
    const QString number = QString::number(e.number);
    return e.date.toString(Qt::ISODate).startsWith(word) || e.date.toString(QStringLiteral("MM-dd")).startsWith(word) ||
           e.date.toString(QStringLiteral("MMdd")) == word ||
           (!e.type.isEmpty() && e.type.startsWith(word)) || number.startsWith(word) ||
           (e.type + number).startsWith(word);
}

} // namespace

class VoucherPicker::Private
{
public:
    QPointer<AccContext> acc;
    QList<Entry> entries;
    QLineEdit *search = nullptr;
    QTreeWidget *list = nullptr;

    void fill(const QString &text);
};

void VoucherPicker::Private::fill(const QString &text)
{
    list->clear();
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QList<QTreeWidgetItem *> items;
    for (const Entry &e : std::as_const(entries)) {
        if (items.size() >= ShownAtMost)
            break;
        bool all = true;
        for (const QString &w : words)
            all = all && matches(e, w);
        if (!all)
            continue;
        auto *item = new QTreeWidgetItem({e.date.toString(Qt::ISODate), e.type + QLatin1Char(' ') + QString::number(e.number)});
        item->setData(0, Qt::UserRole, e.id);
        items << item;
    }
    list->addTopLevelItems(items);
    if (!items.isEmpty())
        list->setCurrentItem(items.first());
}

VoucherPicker::VoucherPicker(QWidget *parent) : QFrame(parent), d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("VoucherPicker"));
    const PickerList parts =
        PickerList::build(this, QStringLiteral("日期、凭证字或凭证号"), {QStringLiteral("日期"), QStringLiteral("凭证字号")});
    d->search = parts.search;
    d->list = parts.list;
    d->list->setObjectName(QStringLiteral("vouchers"));
    d->list->setRootIsDecorated(false);
    resize(260, 300);
    d->search->installEventFilter(this);
    connect(d->search, &QLineEdit::textChanged, this, [this](const QString &t) { d->fill(t); });
    connect(d->list, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem *item) { choose(item->data(0, Qt::UserRole).toInt()); });
    hide();
}

VoucherPicker::~VoucherPicker() = default;

AccContext *VoucherPicker::context() const { return d->acc.data(); }
void VoucherPicker::setContext(AccContext *acc) { d->acc = acc; }

bool VoucherPicker::load()
{
    AccContext *acc = d->acc.data();
    if (!acc)
        return false;
    const Result<QList<Entry>> got = VoucherDirectory(acc->Connection()).vouchers(acc->PeriodStart(), acc->PeriodEnd());
    if (!got.ok())
        return false;
    setEntries(got.value());
    return true;
}

void VoucherPicker::setEntries(const QList<Entry> &entries)
{
    d->entries = entries;
    d->fill(d->search->text());
}

int VoucherPicker::count() const { return int(d->entries.size()); }
QString VoucherPicker::searchText() const { return d->search->text(); }
void VoucherPicker::setSearchText(const QString &text) { d->search->setText(text); }

QList<int> VoucherPicker::listedVouchers() const
{
    QList<int> ids;
    for (int i = 0; i < d->list->topLevelItemCount(); ++i)
        ids << d->list->topLevelItem(i)->data(0, Qt::UserRole).toInt();
    return ids;
}

int VoucherPicker::currentVoucher() const
{
    const QTreeWidgetItem *item = d->list->currentItem();
    return item ? item->data(0, Qt::UserRole).toInt() : 0;
}

void VoucherPicker::choose(int id)
{
    hide();
    if (id > 0)
        Q_EMIT voucherChosen(id);
}

void VoucherPicker::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    raise();
    d->search->setFocus();
    d->search->selectAll();
}

bool VoucherPicker::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != d->search || event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    return PickerList{d->search, d->list}.key(
        static_cast<QKeyEvent *>(event), [this] { choose(currentVoucher()); },
        [this] {
            hide();
            Q_EMIT dismissed();
        });
}

} // namespace kx
