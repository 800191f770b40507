#include "bank/StatementReader.h"

#include "bank/CamtStatement.h"
#include "bank/DelimitedText.h"
#include "bank/OfxStatement.h"
#include "bank/TableStatement.h"
#include "bank/XlsTable.h"
#include "bank/XlsxTable.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace kx {

namespace {

enum class Kind { Delimited, Xlsx, Xls, Ofx, Camt };

Kind kindOf(const QByteArray &bytes, const QString &fileName)
{
    // The content says first: banks name files freely.
    if (bytes.startsWith("PK\x03\x04"))
        return Kind::Xlsx;
    if (bytes.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"))
        return Kind::Xls;
    if (OfxStatement::recognise(bytes))
        return Kind::Ofx;
    if (CamtStatement::recognise(bytes))
        return Kind::Camt;
    const QString ext = QFileInfo(fileName).suffix().toLower();
    if (ext == QLatin1String("xlsx"))
        return Kind::Xlsx;
    if (ext == QLatin1String("xls"))
        return Kind::Xls;
    if (ext == QLatin1String("ofx") || ext == QLatin1String("qfx"))
        return Kind::Ofx;
    if (ext == QLatin1String("xml"))
        return Kind::Camt;
    return Kind::Delimited;
}

Result<Statement> readAs(Kind kind, const QByteArray &bytes, const QString &fileName,
                         const std::optional<ColumnMapping> &mapping)
{
    switch (kind) {
    case Kind::Ofx:
        return OfxStatement::read(bytes);
    case Kind::Camt:
        return CamtStatement::read(bytes);
    case Kind::Xlsx:
    case Kind::Xls:
    case Kind::Delimited:
        break;
    }
    Result<QList<TableRow>> rows = kind == Kind::Xlsx  ? XlsxTable::read(bytes)
                                   : kind == Kind::Xls ? XlsTable::read(bytes)
                                                       : DelimitedText::read(bytes, fileName);
    if (!rows)
        return Error(rows.error());
    return TableStatement::read(rows.value(), mapping,
                                kind == Kind::Delimited ? TableStatement::Cells::Text
                                                        : TableStatement::Cells::Spreadsheet);
}

} // namespace

Result<Statement> StatementReader::read(const QString &path, const std::optional<ColumnMapping> &mapping)
{
    // Looked at before it is opened: opening a pipe waits for its writer.
    const QFileInfo info(path);
    if (!info.exists())
        return Error(QStringLiteral("不能打开对账单文件“%1”：文件不存在。").arg(path));
    if (!info.isFile())
        return Error(QStringLiteral("“%1”不是一个文件。").arg(path));
    if (info.size() > MaxFileSize)
        return Error(QStringLiteral("对账单文件“%1”太大（%2 字节）。").arg(path).arg(info.size()));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error(QStringLiteral("不能打开对账单文件“%1”：%2").arg(path, file.errorString()));
    const QByteArray bytes = file.read(MaxFileSize + 1);
    if (file.error() != QFileDevice::NoError)
        return Error(QStringLiteral("读对账单文件“%1”出错：%2").arg(path, file.errorString()));
    return read(bytes, info.fileName(), mapping);
}

Result<Statement> StatementReader::read(const QByteArray &bytes, const QString &fileName,
                                        const std::optional<ColumnMapping> &mapping)
{
    if (bytes.isEmpty())
        return Error(QStringLiteral("对账单文件是空的。"));
    if (bytes.size() > MaxFileSize)
        return Error(QStringLiteral("对账单文件太大（%1 字节）。").arg(bytes.size()));
    const Kind kind = kindOf(bytes, fileName);
    Result<Statement> st = readAs(kind, bytes, fileName, mapping);
    if (!st)
        return st;
    Statement s = st.takeValue();
    static const char *const Formats[] = {"csv", "xlsx", "xls", "ofx", "camt.053"};
    s.format = QLatin1String(Formats[int(kind)]);
    s.hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
    return s;
}

} // namespace kx
