#pragma once

#include "bank/Reconciliation.h"
#include "kxjournal/Result.h"

#include <QFont>
#include <QString>
#include <QStringList>

namespace kx {

class Sheet;

/// The reconciliation on paper and in a spreadsheet: the caption
/// "银行存款余额调节表", the book, the day and the preparer, then the
/// journal's side (its balance, 加：银收企未收 and 减：银付企未付 with their
/// items, the adjusted balance) and the bank's side the same way, and last
/// the difference of the two adjusted balances, in red unless it is zero.
class ReconciliationReport
{
public:
    /// The report of \a reconciliation prepared by \a preparer.
    ReconciliationReport(const Reconciliation &reconciliation, const QString &preparer);

    /// The line under the caption: book, day and preparer.
    QString subtitle() const;
    /// Lays the report out into \a grid, as the page painter reads it: a
    /// header row, a first column holding each line's page, sizes in points
    /// for pages of \a area (in points), long texts wrapped in \a font.
    void layout(Sheet &grid, const QSizeF &area, const QFont &font) const;
    /// Writes the report into the PDF file \a path (never over a file of
    /// \a keep); fails, saying why, when nothing was written. Needs a
    /// QGuiApplication for its fonts.
    Result<void> printToPdf(const QString &path, const QStringList &keep = {}) const;
    /// Writes the report into the spreadsheet file \a path.
    Result<void> writeXlsx(const QString &path, const QStringList &keep = {}) const;
    /// Writes the report by the extension of \a path (".pdf" or ".xlsx").
    Result<void> write(const QString &path, const QStringList &keep = {}) const;

    static QString caption() { return QStringLiteral("银行存款余额调节表"); }

    /// One line of the report.
    struct Line {
        enum Kind { Heading, Item, Total, Difference };
        Kind kind = Item;
        QString label;
        QDate date;
        QString reference;
        QString text;
        Currency amount = Currency::invalid();
    };
    /// The report's lines, top to bottom.
    QList<Line> lines() const;

private:
    const Reconciliation &m_r;
    QString m_preparer;
};

} // namespace kx
