#include "output/SpreadsheetWriter.h"

#include "output/FileOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <QTemporaryDir>
#include <xlsxwriter.h>

namespace kx {

namespace {

QByteArray cellBytes(const QString &text, int *cut = nullptr)
{
    if (cut && text.size() > SpreadsheetWriter::MaxCellText)
        ++*cut;
    QString clean = text.left(SpreadsheetWriter::MaxCellText);
    if (clean.size() < text.size() && clean.back().isHighSurrogate())
        clean.chop(1);  // never half a character
    // Control characters other than tab and line breaks make the sheet's XML
    // unreadable to spreadsheet programs.
    for (QChar &c : clean)
        if (c.unicode() < 0x20 && c != u'\t' && c != u'\n' && c != u'\r')
            c = QChar(u' ');
    return clean.toUtf8();
}

struct Formats {
    lxw_format *text = nullptr;
    lxw_format *amount = nullptr;
    lxw_format *number = nullptr;
    lxw_format *date = nullptr;

    Formats(lxw_workbook *book, bool bold)
    {
        for (lxw_format **f : {&text, &amount, &number, &date}) {
            *f = workbook_add_format(book);
            if (bold)
                format_set_bold(*f);
        }
        format_set_num_format(amount, "#,##0.00");
        format_set_num_format(date, "yyyy-mm-dd");
    }
};

} // namespace

QString SpreadsheetWriter::sheetName(const QString &text)
{
    QString name;
    for (const QChar c : text.trimmed())
        if (!QStringLiteral("[]:*?/\\").contains(c))
            name += c;
    while (name.startsWith(QLatin1Char('\'')))
        name.remove(0, 1);
    while (name.endsWith(QLatin1Char('\'')))
        name.chop(1);
    name = name.left(31);
    return name.isEmpty() ? QStringLiteral("日记账") : name;
}

lxw_format *SpreadsheetWriter::titleFormat(lxw_workbook *book)
{
    lxw_format *title = workbook_add_format(book);
    format_set_bold(title);
    format_set_font_size(title, 14);
    return title;
}

lxw_format *SpreadsheetWriter::headerFormat(lxw_workbook *book)
{
    lxw_format *header = workbook_add_format(book);
    format_set_bold(header);
    format_set_align(header, LXW_ALIGN_CENTER);
    format_set_bottom(header, LXW_BORDER_THIN);
    return header;
}

Result<int> SpreadsheetWriter::write(const BookSheet &sheet, const QString &caption, const QString &path,
                                     const std::function<void(int)> &rowDone)
{
    const QByteArray file = QFile::encodeName(path);
    lxw_workbook_options options{};
    // Rows go out as they are written, so a large book needs no more memory than a small one.
    options.constant_memory = LXW_TRUE;
    QTemporaryDir scratch;
    const QByteArray scratchDir = QFile::encodeName(scratch.path());
    if (scratch.isValid())
        options.tmpdir = const_cast<char *>(scratchDir.constData());
    lxw_workbook *book = workbook_new_opt(file.constData(), &options);
    if (!book)
        return Error(QStringLiteral("不能建立电子表格。"));
    const QByteArray name = sheetName(caption).toUtf8();
    lxw_worksheet *ws = workbook_add_worksheet(book, name.constData());
    if (!ws) {
        workbook_close(book);
        return Error(QStringLiteral("不能建立电子表格的工作表。"));
    }

    const Formats plain(book, false);
    const Formats bold(book, true);
    lxw_format *title = titleFormat(book);
    lxw_format *header = headerFormat(book);

    const auto &columns = sheet.columns();
    for (int k = 0; k < columns.size(); ++k)
        worksheet_set_column(ws, lxw_col_t(k), lxw_col_t(k), std::max(4.0, columns[k].width / 7.0), nullptr);

    QString line = caption.trimmed();
    const QString period = sheet.period();
    if (!period.isEmpty())
        line += QStringLiteral("    ") + period;
    lxw_error err = worksheet_write_string(ws, 0, 0, cellBytes(line).constData(), title);
    for (int k = 0; k < columns.size() && err == LXW_NO_ERROR; ++k)
        err = worksheet_write_string(ws, 1, lxw_col_t(k), cellBytes(columns[k].header).constData(), header);
    worksheet_freeze_panes(ws, 2, 0);

    lxw_row_t r = 2;
    bool tooLong = false;
    int cut = 0;
    sheet.forEachRow([&](const BookSheet::Row &row) {
        tooLong = tooLong || r >= LXW_ROW_MAX;
        if (err != LXW_NO_ERROR || tooLong)
            return;
        const Formats &f = row.kind == BookSheet::Row::Record ? plain : bold;
        for (int k = 0; k < columns.size() && err == LXW_NO_ERROR; ++k) {
            const BookSheet::Cell &cell = row.cells[k];
            const lxw_col_t c = lxw_col_t(k);
            if (cell.amount.isValid()) {
                const bool money = columns[k].kind == BookSheet::Column::Amount;
                // Money goes to the spreadsheet as its cents: the nearest
                // double of a two-decimal figure prints back as that figure.
                const double value = money ? double(cell.amount.rounded(2).raw() / 100) / 100.0 : cell.amount.toDouble();
                err = worksheet_write_number(ws, r, c, value, money ? f.amount : f.number);
            } else if (cell.date.isValid()) {
                lxw_datetime when{cell.date.year(), cell.date.month(), cell.date.day(), 0, 0, 0.0};
                err = worksheet_write_datetime(ws, r, c, &when, f.date);
            } else if (!cell.text.isEmpty()) {
                err = worksheet_write_string(ws, r, c, cellBytes(cell.text, &cut).constData(), f.text);
            }
        }
        ++r;
        if (rowDone)
            rowDone(row.gridRow);
    });
    errno = 0;
    const lxw_error closed = workbook_close(book);
    const int cause = errno;
    if (tooLong)
        return Error(QStringLiteral("电子表格最多 %1 行，这本账放不下，请导出为逗号分隔的文本文件。").arg(LXW_ROW_MAX));
    if (err == LXW_NO_ERROR)
        err = closed;
    if (err != LXW_NO_ERROR && (cause == ENOSPC || cause == EDQUOT))
        return Error(QStringLiteral("临时文件夹“%1”所在的磁盘空间不足，电子表格没有写完。").arg(QFileInfo(path).absolutePath()));
    if (err != LXW_NO_ERROR)
        return Error(QStringLiteral("不能写出电子表格：%1").arg(QString::fromUtf8(lxw_strerror(err))));
    return cut;
}

Result<void> SpreadsheetWriter::writeReport(const QString &path, const QStringList &keep, const QString &name,
                                            const std::function<int(lxw_workbook *, lxw_worksheet *)> &fill)
{
    QSaveFile out(path);
    if (Result<void> opened = FileOutput::open(out, keep); !opened.ok())
        return opened;
    QTemporaryDir scratch;
    if (!scratch.isValid())
        return Error(FileOutput::cannotWrite(path, QStringLiteral("不能建立临时文件夹。")));
    // The library writes a file of its own; it takes the place of the
    // target only once it is whole.
    const QString written = scratch.filePath(QStringLiteral("report.xlsx"));
    lxw_workbook *book = workbook_new(QFile::encodeName(written).constData());
    if (!book)
        return Error(QStringLiteral("不能建立电子表格。"));
    lxw_worksheet *ws = workbook_add_worksheet(book, name.toUtf8().constData());
    int err = fill(book, ws);
    const lxw_error closed = workbook_close(book);
    if (!err)
        err = closed;
    if (err)
        return Error(QStringLiteral("不能写出电子表格：%1").arg(QString::fromUtf8(lxw_strerror(lxw_error(err)))));
    return FileOutput::publish(written, out);
}

} // namespace kx
