#pragma once

#include <QStyledItemDelegate>

class QComboBox;

namespace kx {

/// The items of a drop-down list with a hint each: the item is what is
/// picked; its hint (an explanation's account and amount, say) shows beside
/// it, dimmed and right-aligned, and as the item's tip.
class ComboHints : public QStyledItemDelegate
{
    Q_OBJECT
public:
    /// The role the hint of an item is kept in.
    static constexpr int HintRole = Qt::UserRole + 7;

    explicit ComboHints(QObject *parent = nullptr);

    /// Fills \a box with the items of \a list ("|a|b|…") and \a hints, one
    /// per item in order, and shows the hints when there are any.
    static void fill(QComboBox *box, const QString &list, const QStringList &hints);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace kx
