#pragma once

#include <QColor>
#include <QWidget>

class QFrame;
class QLabel;
class QToolButton;
class QVBoxLayout;

namespace kx {

class GridView;

/// The control's elastic layout: a header strip with the caption and the
/// option button, the body frame around the grid, and a side panel at the
/// right that the side-task menu item shows and hides.
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
    /// The side panel, for the host's own widgets.
    QFrame *sidePanel() const { return m_side; }
    /// Places \a bar under the grid, across the body.
    void addFooter(QWidget *bar);

private:
    QFrame *m_header;
    QLabel *m_caption;
    QToolButton *m_option;
    QFrame *m_body;
    QFrame *m_side;
    QVBoxLayout *m_outer;
    QColor m_borderColor{0x80, 0x80, 0x80};
};

} // namespace kx
