#include "output/BookPrinter.h"

#include "output/FileOutput.h"
#include "output/PageLayout.h"
#include "output/PagePainter.h"

#include <QPrinter>
#include <QSaveFile>
#include <QTemporaryDir>

namespace kx {

BookPrinter::BookPrinter(const GridModel &grid, GridModel &printGrid, const QString &caption, const QFont &gridFont)
    : m_grid(grid), m_printGrid(printGrid), m_caption(caption), m_font(PageLayout::bodyFont(gridFont))
{
}

void BookPrinter::setUpPage(QPrinter &printer)
{
    printer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(10, 10, 10, 10),
                                      QPageLayout::Millimeter));
}

Result<void> BookPrinter::print(QPrinter &printer) const
{
    const PageLayout layout(m_grid, m_font);
    const QSizeF area = printer.pageLayout().paintRect(QPageLayout::Point).size();
    layout.layout(area, m_printGrid);
    return PagePainter(m_printGrid, m_caption, layout.period(), m_font).print(printer);
}

Result<void> BookPrinter::printToPdf(const QString &path) const
{
    QSaveFile out(path);
    if (Result<void> opened = FileOutput::open(out); !opened.ok())
        return opened;
    QTemporaryDir scratch;
    if (!scratch.isValid())
        return Error(FileOutput::cannotWrite(path, scratch.errorString()));
    const QString written = scratch.filePath(QStringLiteral("book.pdf"));
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(written);
        printer.setCreator(QStringLiteral("kxAccJournal"));
        printer.setDocName(m_caption.trimmed());
        setUpPage(printer);
        if (Result<void> printed = print(printer); !printed.ok())
            return Error(FileOutput::cannotWrite(path, printed.error()));
    }
    return FileOutput::publish(written, out);
}

} // namespace kx
