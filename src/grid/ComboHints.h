#pragma once

#include <QStyledItemDelegate>

class QComboBox;

namespace kx {

/// The items of a drop-down list with a hint each ("text\thint"): the text
/// is what is picked; the hint (an explanation's account and amount, say)
/// shows beside it, dimmed and right-aligned, and as the item's tip.
class ComboHints : public QStyledItemDelegate
{
    Q_OBJECT
public:
    /// The role the hint of an item is kept in.
    static constexpr int HintRole = Qt::UserRole + 7;

    explicit ComboHints(QObject *parent = nullptr);

    /// Fills \a box with the items of \a list ("|a\thint|b|…"), each hint
    /// kept apart from its text, and shows the hints when there are any.
    static void fill(QComboBox *box, const QString &list);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace kx
