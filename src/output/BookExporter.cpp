#include "output/BookExporter.h"

#include "grid/Sheet.h"
#include "ledger/LedgerHost.h"
#include "output/BookSheet.h"
#include "output/DelimitedWriter.h"
#include "output/FileOutput.h"
#include "output/SpreadsheetWriter.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

namespace kx {

BookExporter::Type BookExporter::typeFor(const QString &path, Type type)
{
    if (type != ByName)
        return type;
    const QString ext = QFileInfo(path).suffix().toLower();
    if (ext == QLatin1String("xlsx"))
        return Xlsx;
    if (ext == QLatin1String("tsv") || ext == QLatin1String("txt"))
        return Tsv;
    return Csv;
}

QString BookExporter::suffix(Type type)
{
    switch (type) {
    case Xlsx: return QStringLiteral(".xlsx");
    case Tsv: return QStringLiteral(".tsv");
    default: return QStringLiteral(".csv");
    }
}

Result<void> BookExporter::checkType(int type)
{
    if (type < ByName || type > Xlsx)
        return Error(QStringLiteral("导出类型 %1 不对：0 按文件的扩展名，1 逗号分隔，2 制表符分隔，3 电子表格。").arg(type));
    return {};
}

QString BookExporter::cutNotice(int cut)
{
    if (cut <= 0)
        return {};
    return QStringLiteral("电子表格的单元格最多容纳 %1 个字符：有 %2 段更长的文字只导出了前 %1 个字符。"
                          "要完整的文字，请导出为逗号分隔的文本文件。")
        .arg(SpreadsheetWriter::MaxCellText)
        .arg(cut);
}

Result<int> BookExporter::write(const QString &path, int type, const QString &caption, const QStringList &keep) const
{
    if (Result<void> known = checkType(type); !known.ok())
        return Error(known.error());
    QSaveFile out(path);
    if (Result<void> opened = FileOutput::open(out, keep); !opened.ok())
        return Error(opened.error());

    const BookSheet sheet(m_grid);
    const int rows = std::max(1, m_grid.rows());
    int shown = -1;
    const auto rowDone = [&](int gridRow) {
        const int percent = int(qint64(gridRow) * 100 / rows);
        if (percent > shown) {
            shown = percent;
            m_host.progress(percent);
        }
    };
    struct EndProgress {
        LedgerHost &host;
        ~EndProgress() { host.progress(-1); }
    } end{m_host};
    m_host.progress(0);
    shown = 0;

    const Type kind = typeFor(path, Type(type));
    if (kind == Xlsx) {
        QTemporaryDir scratch;
        if (!scratch.isValid())
            return Error(FileOutput::cannotWrite(path, scratch.errorString()));
        const QString written = scratch.filePath(QStringLiteral("book.xlsx"));
        const Result<int> done = SpreadsheetWriter::write(sheet, caption, written, rowDone);
        if (!done.ok())
            return Error(FileOutput::cannotWrite(path, done.error()));
        if (Result<void> published = FileOutput::publish(written, out); !published.ok())
            return Error(published.error());
        return done.value();
    }
    const DelimitedWriter writer(kind == Tsv ? QChar(u'\t') : QChar(u','));
    if (Result<void> done = writer.write(sheet, out, rowDone); !done.ok())
        return Error(FileOutput::cannotWrite(path, FileOutput::why(out)));
    if (Result<void> committed = FileOutput::commit(out); !committed.ok())
        return Error(committed.error());
    return 0;
}

} // namespace kx
