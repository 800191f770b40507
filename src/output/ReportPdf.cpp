#include "output/ReportPdf.h"

#include "grid/Sheet.h"
#include "output/BookPrinter.h"
#include "output/FileOutput.h"
#include "output/PagePainter.h"
#include "output/PdfTextLayer.h"

#include <QBuffer>
#include <QFont>
#include <QPdfWriter>
#include <QSaveFile>

namespace kx {

Result<void> ReportPdf::write(const QString &path, const QStringList &keep, const QString &caption,
                              const QString &subtitle, QPageLayout::Orientation orientation, const Layout &layout)
{
    QSaveFile out(path);
    if (Result<void> opened = FileOutput::open(out, keep); !opened.ok())
        return opened;
    QFont font(QStringLiteral("Noto Sans CJK SC"));
    font.setPixelSize(11);
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&pdf);
        writer.setResolution(1200);
        writer.setCreator(QStringLiteral("kxAccJournal"));
        writer.setTitle(caption);
        QPageLayout page = BookPrinter::page();
        page.setOrientation(orientation);
        writer.setPageLayout(page);
        Sheet grid;
        layout(grid, writer.pageLayout().paintRect(QPageLayout::Point).size(), font);
        PagePainter painter(grid, caption, QString(), font);
        painter.setSubtitle(subtitle);
        if (const Result<void> printed = painter.print(writer, path); !printed.ok())
            return Error(FileOutput::cannotWrite(path, printed.error()));
    }
    if (!pdf.data().trimmed().endsWith("%%EOF"))
        return Error(FileOutput::cannotWrite(path, QStringLiteral("PDF 文件没有写完。")));
    const QByteArray bytes = PdfTextLayer::readable(pdf.data(), font);
    if (out.write(bytes) != bytes.size())
        return Error(FileOutput::cannotWrite(path, FileOutput::why(out)));
    return FileOutput::commit(out);
}

} // namespace kx
