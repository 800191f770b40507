#pragma once

#include <QColor>
#include <QWidget>

class QFrame;
class QLabel;
class QSplitter;
class QToolButton;
class QVBoxLayout;

namespace kx {

class GridView;

/// The control's elastic layout: a header strip with the caption, the period
/// and the option button, the body frame around the grid, and a side panel at
/// the right that the side-task menu item shows and hides. Header and body,
/// body and side panel are split by handles the user may drag; their sizes
/// travel as text through the host's property bag.
class JournalFrame : public QWidget
{
    Q_OBJECT
public:
    /// Builds the frame around \a view (which it takes into the body frame).
    JournalFrame(GridView *view, QWidget *parent = nullptr);

    /// The header strip's caption text, as written.
    QString captionText() const;
    /// Writes the header strip's caption text.
    void setCaptionText(const QString &text);
    /// Writes the period shown at the right of the header.
    void setPeriodText(const QString &text);
    /// Background of the body frame, seen as the border around the grid.
    QColor borderColor() const { return m_borderColor; }
    /// Sets the background of the body frame.
    void setBorderColor(const QColor &color);
    /// Shows or hides the side panel.
    void setSidePanelVisible(bool visible);
    /// True when the side panel is shown.
    bool isSidePanelVisible() const;
    /// The option button of the header strip.
    QToolButton *optionButton() const { return m_option; }
    /// Gives the option button the look of image key \a key: "Jnl" a single
    /// book, "Jnl1" a consolidated journal.
    void setImageKey(const QString &key);
    /// The side panel, for the host's own widgets; until the host puts one
    /// there it shows the book's balance chart (BalanceChart).
    QFrame *sidePanel() const { return m_side; }
    /// Places \a bar under the grid, across the body.
    void addFooter(QWidget *bar);
    /// The sizes of the split panes as text ("24,600;700,180": header and
    /// body, then body and side panel).
    QString sizesText() const;
    /// Restores sizesText(); text that does not read is passed over.
    void setSizesText(const QString &text);

Q_SIGNALS:
    /// The user dragged a split handle.
    void sizesChanged();

private:
    QFrame *m_header;
    QLabel *m_caption;
    QLabel *m_period;
    QToolButton *m_option;
    QFrame *m_body;
    QFrame *m_side;
    QVBoxLayout *m_bodyLayout;
    QSplitter *m_rows;
    QSplitter *m_columns;
    QColor m_borderColor{0x80, 0x80, 0x80};
    QList<int> m_sideSizes;
};

} // namespace kx
