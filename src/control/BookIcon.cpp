#include "control/BookIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace kx {

namespace {

void drawBook(QPainter &p, const QRectF &r, const QColor &cover, const QColor &page)
{
    QPainterPath shape;
    shape.addRoundedRect(r, r.width() * 0.12, r.width() * 0.12);
    p.fillPath(shape, cover);
    // The spine, and the ruled lines of the page.
    const qreal spine = r.left() + r.width() * 0.24;
    p.setPen(QPen(page, r.width() * 0.06));
    p.drawLine(QPointF(spine, r.top() + r.height() * 0.1), QPointF(spine, r.bottom() - r.height() * 0.1));
    p.setPen(QPen(page, r.height() * 0.07, Qt::SolidLine, Qt::RoundCap));
    for (int i = 1; i <= 3; ++i) {
        const qreal y = r.top() + r.height() * (0.2 + 0.2 * i);
        p.drawLine(QPointF(spine + r.width() * 0.14, y), QPointF(r.right() - r.width() * 0.16, y));
    }
}

QPixmap picture(int side, qreal ratio, bool consolidated, const QPalette &palette)
{
    QPixmap pm(int(side * ratio), int(side * ratio));
    pm.setDevicePixelRatio(ratio);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor cover = palette.color(QPalette::Highlight);
    const QColor page = palette.color(QPalette::HighlightedText);
    const qreal s = side;
    if (consolidated) {
        QColor behind = cover;
        behind.setAlphaF(0.55);
        drawBook(p, QRectF(s * 0.30, s * 0.06, s * 0.62, s * 0.74), behind, page);
        drawBook(p, QRectF(s * 0.08, s * 0.20, s * 0.62, s * 0.74), cover, page);
    } else {
        drawBook(p, QRectF(s * 0.16, s * 0.08, s * 0.68, s * 0.84), cover, page);
    }
    return pm;
}

} // namespace

QIcon BookIcon::make(bool consolidated, const QPalette &palette)
{
    QIcon icon;
    for (int side : {16, 20, 24, 32})
        for (qreal ratio : {1.0, 2.0})
            icon.addPixmap(picture(side, ratio, consolidated, palette));
    return icon;
}

} // namespace kx
