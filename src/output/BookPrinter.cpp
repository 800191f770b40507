#include "output/BookPrinter.h"

#include "output/FileOutput.h"
#include "output/PageLayout.h"
#include "output/PagePainter.h"

#include "output/PdfTextLayer.h"

#include <QBuffer>
#include <QPdfWriter>
#include <QPrinter>
#include <QSaveFile>

namespace kx {

BookPrinter::BookPrinter(const Sheet &grid, Sheet &printGrid, const QString &caption, const QFont &gridFont)
    : m_grid(grid), m_printGrid(printGrid), m_caption(caption), m_font(PageLayout::bodyFont(gridFont))
{
}

QPageLayout BookPrinter::page()
{
    return QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
}

void BookPrinter::setUpPage(QPrinter &printer)
{
    printer.setPageLayout(page());
}

Result<void> BookPrinter::print(QPrinter &printer) const
{
    const PageLayout layout(m_grid, m_font);
    const QSizeF area = printer.pageLayout().paintRect(QPageLayout::Point).size();
    layout.layout(area, m_printGrid);
    return PagePainter(m_printGrid, m_caption, layout.period(), m_font).print(printer);
}

Result<void> BookPrinter::printToPdf(const QString &path, const QStringList &keep) const
{
    QSaveFile out(path);
    if (Result<void> opened = FileOutput::open(out, keep); !opened.ok())
        return opened;
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&pdf);
        writer.setResolution(1200);
        writer.setCreator(QStringLiteral("kxAccJournal"));
        writer.setTitle(m_caption.trimmed());
        writer.setPageLayout(page());
        const PageLayout layout(m_grid, m_font);
        layout.layout(writer.pageLayout().paintRect(QPageLayout::Point).size(), m_printGrid);
        const Result<void> printed = PagePainter(m_printGrid, m_caption, layout.period(), m_font).print(writer, path);
        if (!printed.ok())
            return Error(FileOutput::cannotWrite(path, printed.error()));
    }
    // The writer reports no failure of its own: a PDF it did not finish has no end mark.
    if (!pdf.data().trimmed().endsWith("%%EOF"))
        return Error(FileOutput::cannotWrite(path, QStringLiteral("PDF 文件没有写完。")));
    const QByteArray bytes = PdfTextLayer::readable(pdf.data(), m_font);
    if (out.write(bytes) != bytes.size())
        return Error(FileOutput::cannotWrite(path, FileOutput::why(out)));
    return FileOutput::commit(out);
}

} // namespace kx
