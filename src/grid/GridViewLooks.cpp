// GridView: its colours (the host's, or the palette's while the host set
// none) and the style sheet that draws them.
#include "kxjournal/GridView.h"
#include "grid/GridViewPrivate.h"

#include "grid/FrozenColumns.h"

#include <QGuiApplication>

namespace kx {

namespace {

// A colour read back from a bag that is just the palette's default stays
// unchosen, so the grid still follows the palette when it changes.
QColor chosen(const QColor &now, const QColor &wanted, const QColor &shown)
{
    return !now.isValid() && wanted == shown ? QColor() : wanted;
}

} // namespace

QPalette GridView::basePalette() const
{
    // The view's own palette carries its style sheet's colours; the defaults
    // come from the palette around it.
    return parentWidget() ? parentWidget()->palette() : QGuiApplication::palette();
}

QColor GridView::backColor() const
{
    return d->m_backColor.isValid() ? d->m_backColor : basePalette().color(QPalette::Base);
}

QColor GridView::backColorFixed() const
{
    return d->m_backColorFixed.isValid() ? d->m_backColorFixed : basePalette().color(QPalette::Button);
}

QColor GridView::backColorBkg() const
{
    return d->m_backColorBkg.isValid() ? d->m_backColorBkg : basePalette().color(QPalette::Mid);
}

QColor GridView::gridColor() const
{
    return d->m_gridColor.isValid() ? d->m_gridColor : basePalette().color(QPalette::Midlight).darker(115);
}

QColor GridView::gridColorFixed() const
{
    return d->m_gridColorFixed.isValid() ? d->m_gridColorFixed : basePalette().color(QPalette::Mid);
}

QColor GridView::hotBackColor() const
{
    if (d->m_hotBackColor.isValid())
        return d->m_hotBackColor;
    // The highlight, faint: the row stands out and its texts keep their colours.
    QColor faint = basePalette().color(QPalette::Highlight);
    const QColor base = backColor();
    return QColor((faint.red() + 5 * base.red()) / 6, (faint.green() + 5 * base.green()) / 6,
                  (faint.blue() + 5 * base.blue()) / 6);
}

void GridView::setHotBackColor(const QColor &c)
{
    d->m_hotBackColor = c;
    viewport()->update();
}

QColor GridView::warnBackColor() const
{
    if (d->m_warnBackColor.isValid())
        return d->m_warnBackColor;
    return backColor().lightness() < 128 ? QColor(0x6b, 0x22, 0x22) : QColor(0xff, 0xdc, 0xdc);
}

void GridView::setWarnBackColor(const QColor &c)
{
    d->m_warnBackColor = c;
    viewport()->update();
}

void GridViewPrivate::setWarnNegativeKeys(const QStringList &keys)
{
    m_warnKeys = keys;
    q->viewport()->update();
}

bool GridViewPrivate::warnsAt(const QModelIndex &index) const
{
    if (!m_model || m_warnKeys.isEmpty() || !index.isValid())
        return false;
    const int row = m_model->gridRow(index);
    const int col = m_model->gridCol(index);
    return m_warnKeys.contains(m_model->colKey(col)) && !m_model->isEmpty(row, col) &&
           m_model->amount(row, col) < Currency();
}

void GridView::setBackColor(const QColor &c)
{
    d->m_backColor = chosen(d->m_backColor, c, backColor());
    viewport()->update();
}

void GridView::setBackColorFixed(const QColor &c)
{
    d->m_backColorFixed = chosen(d->m_backColorFixed, c, backColorFixed());
    applyLook();
}

void GridView::setBackColorBkg(const QColor &c)
{
    d->m_backColorBkg = chosen(d->m_backColorBkg, c, backColorBkg());
    applyLook();
}

void GridView::setGridColor(const QColor &c)
{
    d->m_gridColor = chosen(d->m_gridColor, c, gridColor());
    applyLook();
}

void GridView::setGridColorFixed(const QColor &c)
{
    d->m_gridColorFixed = chosen(d->m_gridColorFixed, c, gridColorFixed());
    applyLook();
}

void GridView::applyLook()
{
    const QString sheet =
        QStringLiteral("QTableView { background-color: %1; gridline-color: %2; }"
                       "QHeaderView::section { background-color: %3; border: none;"
                       " border-right: 1px solid %4; border-bottom: 1px solid %4; padding: 0 2px; }"
                       "QTableCornerButton::section { background-color: %3; border: none;"
                       " border-right: 1px solid %4; border-bottom: 1px solid %4; }")
            .arg(backColorBkg().name(), gridColor().name(), backColorFixed().name(), gridColorFixed().name());
    // A style sheet changes the palette in turn: set it only when it differs.
    if (sheet == styleSheet())
        return;
    setStyleSheet(sheet);
    if (d->m_frozen)
        d->m_frozen->setStyleSheet(sheet);
}

} // namespace kx
