#include "output/DelimitedWriter.h"

#include <QIODevice>

namespace kx {

QString DelimitedWriter::cellText(const BookSheet::Column &column, const BookSheet::Cell &cell)
{
    if (cell.amount.isValid())
        return column.kind == BookSheet::Column::Amount ? BookSheet::twoDecimals(cell.amount) : cell.amount.toString();
    if (cell.date.isValid())
        return cell.date.toString(Qt::ISODate);
    return cell.text;
}

void DelimitedWriter::append(QString &line, const QString &field) const
{
    bool quote = false;
    for (const QChar c : field) {
        if (c == m_separator || c == u'"' || c == u'\r' || c == u'\n') {
            quote = true;
            break;
        }
    }
    if (!quote) {
        line += field;
        return;
    }
    line += QLatin1Char('"');
    for (const QChar c : field) {
        if (c == u'"')
            line += QLatin1Char('"');
        line += c;
    }
    line += QLatin1Char('"');
}

Result<void> DelimitedWriter::write(const BookSheet &sheet, QIODevice &out, const std::function<void(int)> &rowDone) const
{
    const QString eol = QStringLiteral("\r\n");
    QString chunk(QChar(0xFEFF));
    const auto &columns = sheet.columns();
    for (int k = 0; k < columns.size(); ++k) {
        if (k > 0)
            chunk += m_separator;
        append(chunk, columns[k].header);
    }
    chunk += eol;

    bool failed = false;
    const auto flush = [&] {
        const QByteArray bytes = chunk.toUtf8();
        failed = failed || out.write(bytes) != bytes.size();
        chunk.clear();
    };
    sheet.forEachRow([&](const BookSheet::Row &row) {
        if (failed)
            return;
        for (int k = 0; k < columns.size(); ++k) {
            if (k > 0)
                chunk += m_separator;
            append(chunk, cellText(columns[k], row.cells[k]));
        }
        chunk += eol;
        if (chunk.size() > (1 << 16))
            flush();
        if (rowDone)
            rowDone(row.gridRow);
    });
    flush();
    if (failed)
        return Error(out.errorString());
    return {};
}

} // namespace kx
