#include "output/PagePainter.h"

#include "grid/Sheet.h"
#include "output/PageLayout.h"

#include <QPagedPaintDevice>
#include <QPainter>
#include <QPrinter>
#include <QTextOption>

namespace kx {

int PagePainter::pageCount() const
{
    return m_grid.rows() > m_grid.fixedRows() ? int(m_grid.number(m_grid.rows() - 1, 0)) : 0;
}

Result<void> PagePainter::print(QPrinter &printer) const
{
    return print(printer, printer.outputFileName().isEmpty() ? printer.printerName() : printer.outputFileName());
}

Result<void> PagePainter::print(QPagedPaintDevice &printer, const QString &name) const
{
    QPainter painter;
    if (!painter.begin(&printer))
        return Error(QStringLiteral("不能在打印机“%1”上打印。").arg(name));
    const double scale = printer.logicalDpiX() / 72.0;
    const QSizeF area = printer.pageLayout().paintRect(QPageLayout::Point).size();
    // An empty book still prints its heads, so the paper says it is empty.
    const int pages = std::max(1, pageCount());
    int row = m_grid.fixedRows();
    for (int page = 1; page <= pages; ++page) {
        if (page > 1)
            printer.newPage();
        painter.save();
        painter.scale(scale, scale);
        paintPage(painter, page, pages, row, area);
        painter.restore();
        while (row < m_grid.rows() && m_grid.number(row, 0) == page)
            ++row;
    }
    painter.end();
    return {};
}

void PagePainter::paintPage(QPainter &p, int page, int pages, int firstRow, const QSizeF &area) const
{
    const double width = area.width();
    const double pad = PageLayout::Padding;
    QFont captionFont = m_font;
    captionFont.setPixelSize(16);
    captionFont.setBold(true);
    QFont bold = m_font;
    bold.setBold(true);
    QPen rule(Qt::black);
    rule.setWidthF(0.5);
    p.setPen(rule);

    double y = 0;
    p.setFont(captionFont);
    p.drawText(QRectF(0, y, width, PageLayout::CaptionHeight), Qt::AlignCenter, m_caption.trimmed());
    y += PageLayout::CaptionHeight;
    p.setFont(m_font);
    if (!m_subtitle.isEmpty())
        p.drawText(QRectF(0, y, width, PageLayout::PeriodHeight), Qt::AlignLeft | Qt::AlignVCenter, m_subtitle);
    else if (!m_period.isEmpty())
        p.drawText(QRectF(0, y, width, PageLayout::PeriodHeight), Qt::AlignLeft | Qt::AlignVCenter,
                   QStringLiteral("期间：") + m_period);
    y += PageLayout::PeriodHeight;

    const int cols = m_grid.cols();
    const double headerHeight = m_grid.rowHeight(0);
    p.setFont(bold);
    double x = 0;
    for (int c = 1; c < cols; ++c) {
        const QRectF cell(x, y, m_grid.colWidth(c), headerHeight);
        p.drawRect(cell);
        p.drawText(cell, Qt::AlignCenter, m_grid.text(0, c));
        x += m_grid.colWidth(c);
    }
    y += headerHeight;

    QTextOption wrap;
    wrap.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    for (int r = firstRow; r < m_grid.rows() && m_grid.number(r, 0) == page; ++r) {
        const double h = m_grid.rowHeight(r);
        p.setFont(m_grid.isSubtotal(r) ? bold : m_font);
        x = 0;
        for (int c = 1; c < cols; ++c) {
            const double w = m_grid.colWidth(c);
            const QRectF cell(x, y, w, h);
            p.drawRect(cell);
            const QString text = m_grid.text(r, c);
            if (!text.isEmpty()) {
                const Qt::Alignment align = m_grid.colAlignment(c) & Qt::AlignHorizontal_Mask;
                p.save();
                p.setClipRect(cell);
                // A figure that must be noticed (a difference) keeps the colour it was given.
                if (const QColor fore = m_grid.cellForeColor(r, c); fore.isValid())
                    p.setPen(fore);
                // Figures stay on one line; texts wrap as they were laid out.
                if (align & Qt::AlignRight) {
                    p.drawText(cell.adjusted(pad, 0, -pad, 0), int(align | Qt::AlignVCenter | Qt::TextSingleLine), text);
                } else {
                    wrap.setAlignment(align | Qt::AlignVCenter);
                    p.drawText(cell.adjusted(pad, 0, -pad, 0), text, wrap);
                }
                p.restore();
            }
            x += w;
        }
        y += h;
    }

    p.setFont(m_font);
    p.drawText(QRectF(0, area.height() - PageLayout::FooterHeight, width, PageLayout::FooterHeight), Qt::AlignCenter,
               QStringLiteral("第 %1 页 共 %2 页").arg(page).arg(pages));
}

} // namespace kx
