#pragma once

#include "kxjournal/Result.h"

#include <QPageLayout>
#include <QString>
#include <QStringList>
#include <functional>

class QFont;
class QSizeF;

namespace kx {

class Sheet;

/// A report of a few pages written as a PDF file through the page painter:
/// a caption and a subtitle over the lines a layout puts into a grid, with
/// a text layer tools read back. Written whole or not at all.
class ReportPdf
{
public:
    /// Puts the report's lines into \a grid for pages of \a area points in \a font.
    using Layout = std::function<void(Sheet &grid, const QSizeF &area, const QFont &font)>;

    /// Writes the report into \a path (never over \a keep), pages turned as
    /// \a orientation says.
    static Result<void> write(const QString &path, const QStringList &keep, const QString &caption,
                              const QString &subtitle, QPageLayout::Orientation orientation, const Layout &layout);
};

} // namespace kx
