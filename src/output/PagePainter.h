#pragma once

#include "kxjournal/Result.h"

#include <QFont>
#include <QSizeF>
#include <QString>

class QPagedPaintDevice;
class QPainter;
class QPrinter;

namespace kx {

class Sheet;

/// Paints a print grid laid out by PageLayout: on every page the caption,
/// the period, the column headers, the page's lines in ruled cells (figures
/// right-aligned, long texts wrapped, total and carried lines bold) and
/// "第 n 页 共 m 页" at the foot.
class PagePainter
{
public:
    /// Paints \a grid headed \a caption and \a period, in \a font.
    PagePainter(const Sheet &grid, const QString &caption, const QString &period, const QFont &font)
        : m_grid(grid), m_caption(caption), m_period(period), m_font(font)
    {
    }

    /// Heads every page with \a line as it is, in place of the period.
    void setSubtitle(const QString &line) { m_subtitle = line; }

    /// Paints every page onto \a printer; fails when the printer cannot be drawn on.
    Result<void> print(QPrinter &printer) const;
    /// Paints every page onto \a device (a printer or a PDF writer), named
    /// \a name in the message when it cannot be drawn on.
    Result<void> print(QPagedPaintDevice &device, const QString &name) const;
    /// Paints page \a page (from 1) of \a pages, whose lines start at grid
    /// row \a firstRow, with \a painter, whose units are points, on a
    /// printable \a area.
    void paintPage(QPainter &painter, int page, int pages, int firstRow, const QSizeF &area) const;
    /// The number of pages the grid holds.
    int pageCount() const;

private:
    const Sheet &m_grid;
    QString m_caption;
    QString m_period;
    QString m_subtitle;
    QFont m_font;
};

} // namespace kx
