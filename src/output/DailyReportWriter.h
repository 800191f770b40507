#pragma once

#include "kxjournal/Result.h"
#include "output/DailyReport.h"

#include <QFont>
#include <QSizeF>
#include <QString>
#include <QStringList>

namespace kx {

class Sheet;

/// The daily fund report on paper, in a spreadsheet and as comma-separated
/// text: the caption "资金日报表", the days, the preparer and the day it was
/// made, then one line per book in tree order (a book's level shown by how
/// far its name is indented; books with books below them bold) and a last
/// "合计" line over the top books. Asked to, it lists under each bottom
/// book its records of the span: date, 摘要, 对方科目, 单据号, 借方, 贷方,
/// the debit under 收入金额 and the credit under 支出金额, headed by a line
/// naming those columns.
class DailyReportWriter
{
public:
    /// The report \a lines of days \a from … \a to, prepared by \a preparer.
    DailyReportWriter(const QList<DailyReport::Line> &lines, const QDate &from, const QDate &to,
                      const QString &preparer = {});

    /// Lists \a entries (by book id) under their bottom books.
    void setEntries(const QHash<int, QList<DailyReport::Entry>> &entries) { m_entries = entries; }
    /// The day the report says it was made (default: today).
    void setMadeOn(const QDate &day) { m_madeOn = day; }

    static QString caption() { return QStringLiteral("资金日报表"); }
    /// The line under the caption: the days, the preparer, the day made.
    QString subtitle() const;
    /// The top books' totals (the report's "合计" line; its book is empty).
    DailyReport::Line total() const;
    /// The column headers of the records listed under a book.
    static QStringList entryHeaders();

    /// Lays the report out into \a grid as the page painter reads it (a
    /// header row, a first column holding each line's page) for pages of
    /// \a area in points, long texts wrapped in \a font.
    void layout(Sheet &grid, const QSizeF &area, const QFont &font) const;
    /// Writes the report into the PDF file \a path (never over a file of
    /// \a keep). Needs a QGuiApplication for its fonts.
    Result<void> printToPdf(const QString &path, const QStringList &keep = {}) const;
    /// Writes the report into the spreadsheet file \a path.
    Result<void> writeXlsx(const QString &path, const QStringList &keep = {}) const;
    /// Writes the report as comma-separated text (UTF-8 with a byte-order
    /// mark, CR LF), headed by the caption and the days.
    Result<void> writeCsv(const QString &path, const QStringList &keep = {}) const;
    /// Writes the report by the extension of \a path (".pdf", ".xlsx" or ".csv").
    Result<void> write(const QString &path, const QStringList &keep = {}) const;
    /// True when write() knows the extension of \a path.
    static bool knowsExtension(const QString &path);

private:
    /// How many levels below the report's top \a book stands.
    int depth(const BookDirectory::Book &book) const;

    QList<DailyReport::Line> m_lines;
    QDate m_from, m_to, m_madeOn;
    QString m_preparer;
    QHash<int, QList<DailyReport::Entry>> m_entries;
};

} // namespace kx
