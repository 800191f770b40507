#pragma once

#include <QStyledItemDelegate>

namespace kx {

class GridView;

/// Paints cells on the grid's own background (the current row, negative
/// figures and summary rows marked, every text kept readable on the
/// palette's background; a cut text shows whole as a tooltip) and makes
/// the cell editor the edit cycle asks for: a text box, a text box with an ellipsis button, or an
/// editable drop-down list. Keys typed into the editor go through the cycle's
/// key event first.
class GridDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    /// A delegate for \a view.
    explicit GridDelegate(GridView *view);

    /// The text in an editor made by this delegate.
    static QString editorText(const QWidget *editor);
    /// Puts \a text into an editor made by this delegate.
    static void setEditorText(QWidget *editor, const QString &text);
    /// Forgets the view; called while the view is being destroyed, when
    /// editors may still send events but the view is no longer a GridView.
    void detach() { m_view = nullptr; }

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    GridView *m_view;
};

} // namespace kx
