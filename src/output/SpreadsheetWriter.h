#pragma once

#include "kxjournal/Result.h"
#include "output/BookSheet.h"

#include <QString>
#include <QStringList>
#include <functional>

struct lxw_format;
struct lxw_workbook;
struct lxw_worksheet;

namespace kx {

/// Writes a sheet as a spreadsheet file: a bold caption line with the book
/// and its period, the column headers frozen under it, figures as numbers
/// with a "#,##0.00" format (so the spreadsheet sums them), dates as dates,
/// total lines bold, column widths as on screen.
class SpreadsheetWriter
{
public:
    /// The longest text a spreadsheet cell holds; a longer one keeps its start.
    static constexpr int MaxCellText = 32767;

    /// Writes \a sheet captioned \a caption to the file \a path (made anew),
    /// telling \a rowDone each grid row written. Gives the number of texts
    /// longer than MaxCellText, which the file holds cut.
    static Result<int> write(const BookSheet &sheet, const QString &caption, const QString &path,
                             const std::function<void(int)> &rowDone);
    /// The caption line's look in \a book: bold, 14 points.
    static lxw_format *titleFormat(lxw_workbook *book);
    /// The column headers' look in \a book: bold, centred, ruled below.
    static lxw_format *headerFormat(lxw_workbook *book);
    /// \a text as a worksheet's name may be: at most 31 characters, none of []:*?/\ .
    static QString sheetName(const QString &text);
    /// Writes a report of one worksheet named \a name into \a path (never
    /// over \a keep), whole or not at all: \a fill writes the cells and
    /// gives the first error of libxlsxwriter (0: none).
    static Result<void> writeReport(const QString &path, const QStringList &keep, const QString &name,
                                    const std::function<int(lxw_workbook *, lxw_worksheet *)> &fill);
};

} // namespace kx
