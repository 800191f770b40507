#include "bank/DelimitedText.h"

#include <QStringDecoder>
#include <QStringEncoder>

namespace kx {

namespace {

bool looksBinary(const QByteArray &bytes)
{
    const qsizetype n = qMin<qsizetype>(bytes.size(), 8192);
    for (qsizetype i = 0; i < n; ++i) {
        const uchar c = uchar(bytes.at(i));
        if (c == 0 || (c < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f'))
            return true;
    }
    return false;
}

// Excel keeps long numbers as text when they are written ="6222…"; banks
// export that way so that account numbers keep their digits.
QString cleanCell(QString cell)
{
    cell = std::move(cell).trimmed();
    if (cell.size() >= 3 && cell.startsWith(QLatin1String("=\"")) && cell.endsWith(QLatin1Char('"')))
        cell = cell.mid(2, cell.size() - 3).trimmed();
    return cell;
}

} // namespace

Result<QString> DelimitedText::decode(const QByteArray &bytes)
{
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        const auto enc = bytes.startsWith("\xFF\xFE") ? QStringConverter::Utf16LE : QStringConverter::Utf16BE;
        QStringDecoder d(enc, QStringConverter::Flag::Stateless);
        const QString text = d.decode(bytes.mid(2));
        if (d.hasError())
            return Error(QStringLiteral("文件不是有效的 UTF-16 文本。"));
        return text;
    }
    const bool bom = bytes.startsWith("\xEF\xBB\xBF");
    const QByteArray body = bom ? bytes.mid(3) : bytes;
    if (looksBinary(body))
        return Error(QStringLiteral("文件不是文本，也不是认识的对账单格式。"));
    {
        QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
        const QString text = utf8.decode(body);
        if (!utf8.hasError() || bom)
            return bom && utf8.hasError() ? Result<QString>(Error(QStringLiteral("文件不是有效的 UTF-8 文本。")))
                                          : Result<QString>(text);
    }
    // GB18030 reads every GBK file and the few characters GBK lacks. The
    // decoder passes some bad bytes over quietly: text that does not come
    // back byte for byte was not written in it.
    QStringDecoder gbk("GB18030", QStringConverter::Flag::Stateless);
    const QString text = gbk.decode(body);
    QStringEncoder back("GB18030");
    if (gbk.hasError() || QByteArray(back.encode(text)) != body)
        return Error(QStringLiteral("文件不是 UTF-8 或 GBK 编码的文本。"));
    return text;
}

QChar DelimitedText::pickDelimiter(const QString &text, const QString &fileName)
{
    const QStringView head = QStringView(text).left(16384);
    const qsizetype tabs = head.count(QLatin1Char('\t'));
    const qsizetype commas = head.count(QLatin1Char(','));
    const QString lower = fileName.toLower();
    const bool tabbedName = lower.endsWith(QLatin1String(".txt")) || lower.endsWith(QLatin1String(".tsv"));
    return tabs > commas || (tabs > 0 && tabbedName) ? QLatin1Char('\t') : QLatin1Char(',');
}

Result<QList<TableRow>> DelimitedText::read(const QByteArray &bytes, const QString &fileName)
{
    Result<QString> decoded = decode(bytes);
    if (!decoded)
        return Error(decoded.error());
    const QString text = decoded.takeValue();
    const QChar delimiter = pickDelimiter(text, fileName);

    QList<TableRow> rows;
    TableRow row;
    QString cell;
    int line = 1;
    int quoteLine = 0;
    bool quoted = false;
    bool atCellStart = true;
    row.sourceLine = 1;
    auto endCell = [&] {
        row.cells.append(cleanCell(std::move(cell)));
        cell = QString();
        atCellStart = true;
    };
    auto endRow = [&] {
        endCell();
        rows.append(std::move(row));
        row = TableRow();
        row.sourceLine = line;
    };
    const qsizetype n = text.size();
    const QChar *s = text.constData();
    rows.reserve(text.count(QLatin1Char('\n')) + 1);
    // Plain characters are taken in runs up to the next character that
    // means something (a quote, the delimiter, a line break).
    for (qsizetype i = 0; i < n;) {
        if (quoted) {
            qsizetype j = i;
            while (j < n && s[j] != QLatin1Char('"')) {
                if (s[j] == QLatin1Char('\n'))
                    ++line;
                ++j;
            }
            cell.append(s + i, j - i);
            if (j >= n)
                break;
            if (j + 1 < n && s[j + 1] == QLatin1Char('"')) {
                cell += QLatin1Char('"');
                i = j + 2;
            } else {
                quoted = false;
                i = j + 1;
            }
            continue;
        }
        const QChar c = s[i];
        if (c == QLatin1Char('"') && atCellStart) {
            quoted = true;
            quoteLine = line;
            atCellStart = false;
            cell.clear(); // blanks before the quote
            ++i;
        } else if (c == delimiter) {
            endCell();
            ++i;
        } else if (c == QLatin1Char('\n') || c == QLatin1Char('\r')) {
            i += c == QLatin1Char('\r') && i + 1 < n && s[i + 1] == QLatin1Char('\n') ? 2 : 1;
            ++line;
            endRow();
        } else {
            // A quote inside a cell that did not start with one is a character.
            qsizetype j = i + 1;
            while (j < n && s[j] != delimiter && s[j] != QLatin1Char('\n') && s[j] != QLatin1Char('\r')
                   && (s[j] != QLatin1Char('"') || !atCellStart))
                ++j;
            for (qsizetype k = i; k < j && atCellStart; ++k)
                if (s[k] != QLatin1Char(' ') && s[k] != QLatin1Char('\t'))
                    atCellStart = false;
            cell.append(s + i, j - i);
            i = j;
        }
    }
    if (quoted)
        return Error(QStringLiteral("第 %1 行：引号没有结束。").arg(quoteLine));
    if (!cell.isEmpty() || !row.cells.isEmpty())
        endRow();
    return rows;
}

} // namespace kx
