#include "bank/XlsTable.h"

#include <QLocale>
#include <QTemporaryFile>

#include <freexl.h>

namespace kx {

namespace {

// Sheets of more cells than this are no statement.
constexpr quint64 MaxCells = 20'000'000;

QString numberText(double d)
{
    // The shortest text that reads back as the same double.
    return QString::number(d, 'g', QLocale::FloatingPointShortest);
}

} // namespace

Result<QList<TableRow>> XlsTable::read(const QByteArray &bytes)
{
    // FreeXL reads files only.
    QTemporaryFile file;
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush())
        return Error(QStringLiteral("不能写临时文件：%1").arg(file.errorString()));
    const void *handle = nullptr;
    const int opened = freexl_open(QFile::encodeName(file.fileName()).constData(), &handle);
    struct Closer { const void *h; ~Closer() { if (h) freexl_close(h); } } closer{handle};
    if (opened != FREEXL_OK || !handle)
        return Error(QStringLiteral("不是有效的 .xls 工作簿（FreeXL 错误 %1）。").arg(opened));
    unsigned int password = 0;
    if (freexl_get_info(handle, FREEXL_BIFF_PASSWORD, &password) == FREEXL_OK && password == FREEXL_BIFF_OBFUSCATED)
        return Error(QStringLiteral("这个 .xls 工作簿有密码，请先在表格程序里去掉密码再导入。"));
    unsigned int sheets = 0;
    if (freexl_get_info(handle, FREEXL_BIFF_SHEET_COUNT, &sheets) != FREEXL_OK || sheets == 0)
        return Error(QStringLiteral("这个 .xls 工作簿里没有工作表。"));
    if (freexl_select_active_worksheet(handle, 0) != FREEXL_OK)
        return Error(QStringLiteral("读不出 .xls 工作簿的第一张工作表。"));
    unsigned int rowCount = 0;
    unsigned short columnCount = 0;
    if (freexl_worksheet_dimensions(handle, &rowCount, &columnCount) != FREEXL_OK)
        return Error(QStringLiteral("读不出 .xls 工作表的大小。"));
    if (quint64(rowCount) * columnCount > MaxCells)
        return Error(QStringLiteral(".xls 工作表太大（%1 行 × %2 列）。").arg(rowCount).arg(columnCount));

    QList<TableRow> rows;
    rows.reserve(rowCount);
    for (unsigned int r = 0; r < rowCount; ++r) {
        TableRow row;
        row.sourceLine = int(r + 1);
        for (unsigned short c = 0; c < columnCount; ++c) {
            FreeXL_CellValue v{};
            if (freexl_get_cell_value(handle, r, c, &v) != FREEXL_OK)
                return Error(QStringLiteral("第 %1 行：读不出第 %2 列的单元格。").arg(r + 1).arg(c + 1));
            QString text;
            switch (v.type) {
            case FREEXL_CELL_INT: text = QString::number(v.value.int_value); break;
            case FREEXL_CELL_DOUBLE: text = numberText(v.value.double_value); break;
            case FREEXL_CELL_TEXT:
            case FREEXL_CELL_SST_TEXT:
            case FREEXL_CELL_DATE:
            case FREEXL_CELL_DATETIME:
            case FREEXL_CELL_TIME:
                text = v.value.text_value ? QString::fromUtf8(v.value.text_value).trimmed() : QString();
                break;
            default: break;
            }
            row.cells.append(text);
        }
        rows.append(std::move(row));
    }
    return rows;
}

} // namespace kx
