#include "rows/GridClipboard.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"

namespace kx {

QList<QStringList> GridClipboard::block(const Sheet &grid)
{
    int r1, c1, r2, c2;
    grid.selection(r1, c1, r2, c2);
    QList<QStringList> rows;
    if (!grid.isDataRow(r1))
        return rows;
    const JournalColumns columns(grid);
    const int shown = columns[JournalColumns::ShowName];
    for (int r = r1; r <= r2; ++r) {
        if (grid.isRowHidden(r))
            continue;
        const BookRow row = BookRow::of(grid, columns, r);
        // A record's day pastes back anywhere; its label only reads in this year.
        const bool isoDay = !row.isSummary() && !grid.isSubtotal(r) && row.date().isValid();
        QStringList cells;
        for (int c = c1; c <= c2; ++c) {
            if (grid.isColHidden(c))
                continue;
            cells << (c == shown && isoDay ? row.dateText() : grid.text(r, c));
        }
        rows << cells;
    }
    return rows;
}

QString GridClipboard::selectedText(const Sheet &grid)
{
    QString out;
    for (const QStringList &cells : block(grid)) {
        bool firstCell = true;
        for (const QString &cell : cells) {
            if (!firstCell)
                out += QLatin1Char('\t');
            firstCell = false;
            const bool quote = cell.contains(QLatin1Char('\t')) || cell.contains(QLatin1Char('\n')) ||
                               cell.contains(QLatin1Char('\r')) || cell.startsWith(QLatin1Char('"'));
            if (quote) {
                QString doubled = cell;
                doubled.replace(QLatin1String("\""), QLatin1String("\"\""));
                out += QLatin1Char('"') + doubled + QLatin1Char('"');
            } else {
                out += cell;
            }
        }
        out += QLatin1String("\r\n");
    }
    return out;
}

QString GridClipboard::selectedHtml(const Sheet &grid)
{
    QString out = QStringLiteral("<table>");
    for (const QStringList &cells : block(grid)) {
        out += QLatin1String("<tr>");
        for (const QString &cell : cells) {
            QString html = cell.toHtmlEscaped();
            html.replace(QLatin1String("\r\n"), QLatin1String("<br>"));
            out += QLatin1String("<td>") + html + QLatin1String("</td>");
        }
        out += QLatin1String("</tr>");
    }
    out += QLatin1String("</table>");
    return out;
}

QList<QStringList> GridClipboard::parse(const QString &text)
{
    QList<QStringList> rows;
    QStringList cells;
    QString cell;
    const qsizetype n = text.size();
    qsizetype i = 0;
    bool lineOpen = false;
    while (i < n) {
        const QChar ch = text.at(i);
        if (ch == QLatin1Char('"') && cell.isEmpty()) {
            // A quoted cell runs to the quote not doubled; what follows it up
            // to the next separator belongs to the cell as written.
            ++i;
            while (i < n) {
                if (text.at(i) == QLatin1Char('"')) {
                    if (i + 1 < n && text.at(i + 1) == QLatin1Char('"')) {
                        cell += QLatin1Char('"');
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                cell += text.at(i++);
            }
            lineOpen = true;
            continue;
        }
        if (ch == QLatin1Char('\t')) {
            cells << cell;
            cell.clear();
            lineOpen = true;
            ++i;
            continue;
        }
        if (ch == QLatin1Char('\r') || ch == QLatin1Char('\n')) {
            cells << cell;
            cell.clear();
            rows << cells;
            cells.clear();
            lineOpen = false;
            i += (ch == QLatin1Char('\r') && i + 1 < n && text.at(i + 1) == QLatin1Char('\n')) ? 2 : 1;
            continue;
        }
        cell += ch;
        lineOpen = true;
        ++i;
    }
    if (lineOpen) {
        cells << cell;
        rows << cells;
    }
    return rows;
}

} // namespace kx
