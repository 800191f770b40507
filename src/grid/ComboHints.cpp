#include "grid/ComboHints.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QPainter>

#include <algorithm>

namespace kx {

namespace {

constexpr int Gap = 24;

} // namespace

ComboHints::ComboHints(QObject *parent) : QStyledItemDelegate(parent) {}

void ComboHints::fill(QComboBox *box, const QString &list, const QStringList &hints)
{
    bool hinted = false;
    int widest = 0;
    const QFontMetrics metrics(box->font());
    const QStringList items = list.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    for (int i = 0; i < items.size(); ++i) {
        const QString &text = items.at(i);
        box->addItem(text);
        const QString hint = i < hints.size() ? hints.at(i) : QString();
        if (hint.isEmpty())
            continue;
        box->setItemData(box->count() - 1, hint, HintRole);
        box->setItemData(box->count() - 1, hint, Qt::ToolTipRole);
        widest = std::max(widest, metrics.horizontalAdvance(text) + Gap + metrics.horizontalAdvance(hint));
        hinted = true;
    }
    if (!hinted)
        return;
    box->view()->setItemDelegate(new ComboHints(box));
    // The list opens wide enough for text and hint side by side.
    box->view()->setMinimumWidth(widest + 2 * Gap);
}

void ComboHints::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const QString hint = index.data(HintRole).toString();
    if (hint.isEmpty())
        return;
    painter->save();
    const bool selected = option.state & QStyle::State_Selected;
    QColor color = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    color.setAlphaF(0.6f);
    painter->setPen(color);
    painter->setFont(option.font);
    const QRect room = option.rect.adjusted(0, 0, -6, 0);
    painter->drawText(room, int(Qt::AlignRight | Qt::AlignVCenter), hint);
    painter->restore();
}

QSize ComboHints::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QString hint = index.data(HintRole).toString();
    if (!hint.isEmpty())
        size.rwidth() += Gap + option.fontMetrics.horizontalAdvance(hint);
    return size;
}

} // namespace kx
