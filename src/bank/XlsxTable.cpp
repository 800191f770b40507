#include "bank/XlsxTable.h"

#include <QHash>
#include <QXmlStreamReader>

#include <minizip/unzip.h>

namespace kx {

namespace {

// The workbook is read from memory through minizip's file callbacks.
struct Memory
{
    const QByteArray *bytes = nullptr;
    ZPOS64_T pos = 0;
};

voidpf ZCALLBACK memOpen(voidpf opaque, const void *, int) { return opaque; }

uLong ZCALLBACK memRead(voidpf, voidpf stream, void *buf, uLong size)
{
    auto *m = static_cast<Memory *>(stream);
    const ZPOS64_T total = ZPOS64_T(m->bytes->size());
    const uLong n = m->pos >= total ? 0 : uLong(qMin<ZPOS64_T>(size, total - m->pos));
    if (n)
        memcpy(buf, m->bytes->constData() + m->pos, n);
    m->pos += n;
    return n;
}

uLong ZCALLBACK memWrite(voidpf, voidpf, const void *, uLong) { return 0; }
ZPOS64_T ZCALLBACK memTell(voidpf, voidpf stream) { return static_cast<Memory *>(stream)->pos; }

long ZCALLBACK memSeek(voidpf, voidpf stream, ZPOS64_T offset, int origin)
{
    auto *m = static_cast<Memory *>(stream);
    const ZPOS64_T total = ZPOS64_T(m->bytes->size());
    ZPOS64_T base = 0;
    if (origin == ZLIB_FILEFUNC_SEEK_CUR)
        base = m->pos;
    else if (origin == ZLIB_FILEFUNC_SEEK_END)
        base = total;
    if (offset > total || base + offset > total)
        return -1;
    m->pos = base + offset;
    return 0;
}

int ZCALLBACK memClose(voidpf, voidpf) { return 0; }
int ZCALLBACK memError(voidpf, voidpf) { return 0; }

// A part of a workbook is at most this big unpacked: a bank's statement
// is far smaller, and a crafted archive must not fill the memory.
constexpr ZPOS64_T MaxPart = 256 * 1024 * 1024;
// Sheets of more columns than this are no statement.
constexpr int MaxColumns = 1024;

Error notWorkbook(const QString &why)
{
    return Error(QStringLiteral("不是有效的 .xlsx 工作簿：%1。").arg(why));
}

// "C12" → column 2 (0-based), row 12; false for anything else.
bool cellReference(QStringView ref, int &column, int &row)
{
    qsizetype i = 0;
    column = 0;
    while (i < ref.size() && ref[i] >= u'A' && ref[i] <= u'Z') {
        column = column * 26 + (ref[i].unicode() - u'A' + 1);
        if (column > MaxColumns)
            return false;
        ++i;
    }
    if (i == 0 || i == ref.size())
        return false;
    bool ok = false;
    row = ref.mid(i).toInt(&ok);
    --column;
    return ok && row >= 1;
}

QString resolved(const QString &target)
{
    // Targets are relative to xl/ unless they start at the root.
    if (target.startsWith(QLatin1Char('/')))
        return target.mid(1);
    return target.startsWith(QLatin1String("xl/")) ? target : QStringLiteral("xl/") + target;
}

} // namespace

Result<QByteArray> XlsxTable::member(const QByteArray &zip, const QString &name)
{
    Memory mem{&zip, 0};
    zlib_filefunc64_def io{};
    io.zopen64_file = memOpen;
    io.zread_file = memRead;
    io.zwrite_file = memWrite;
    io.ztell64_file = memTell;
    io.zseek64_file = memSeek;
    io.zclose_file = memClose;
    io.zerror_file = memError;
    io.opaque = &mem;
    unzFile uf = unzOpen2_64("workbook", &io);
    if (!uf)
        return notWorkbook(QStringLiteral("文件不是 zip 压缩包"));
    struct Closer { unzFile f; ~Closer() { unzClose(f); } } closer{uf};
    if (unzLocateFile(uf, name.toUtf8().constData(), 0) != UNZ_OK)
        return notWorkbook(QStringLiteral("缺少 %1").arg(name));
    unz_file_info64 info{};
    if (unzGetCurrentFileInfo64(uf, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK)
        return notWorkbook(QStringLiteral("读不出 %1").arg(name));
    if (info.uncompressed_size > MaxPart)
        return notWorkbook(QStringLiteral("%1 太大").arg(name));
    if (unzOpenCurrentFile(uf) != UNZ_OK)
        return notWorkbook(QStringLiteral("打不开 %1").arg(name));
    QByteArray out;
    char buf[65536];
    for (;;) {
        const int n = unzReadCurrentFile(uf, buf, sizeof buf);
        if (n < 0) {
            unzCloseCurrentFile(uf);
            return notWorkbook(QStringLiteral("%1 已损坏").arg(name));
        }
        if (n == 0)
            break;
        if (ZPOS64_T(out.size()) + ZPOS64_T(n) > MaxPart) {
            unzCloseCurrentFile(uf);
            return notWorkbook(QStringLiteral("%1 太大").arg(name));
        }
        out.append(buf, n);
    }
    if (unzCloseCurrentFile(uf) != UNZ_OK)
        return notWorkbook(QStringLiteral("%1 校验不符").arg(name));
    return out;
}

Result<QList<TableRow>> XlsxTable::read(const QByteArray &bytes)
{
    // The first sheet: the workbook lists it, its relationships say where it is.
    Result<QByteArray> workbook = member(bytes, QStringLiteral("xl/workbook.xml"));
    if (!workbook)
        return Error(workbook.error());
    QString firstSheetRel;
    {
        QXmlStreamReader x(workbook.value());
        while (!x.atEnd() && firstSheetRel.isEmpty())
            if (x.readNext() == QXmlStreamReader::StartElement && x.name() == QLatin1String("sheet"))
                for (const QXmlStreamAttribute &a : x.attributes())
                    if (a.name() == QLatin1String("id") && a.prefix() != QLatin1String(""))
                        firstSheetRel = a.value().toString();
        if (x.hasError() && firstSheetRel.isEmpty())
            return notWorkbook(QStringLiteral("workbook.xml：%1").arg(x.errorString()));
    }
    QString sheetPath = QStringLiteral("xl/worksheets/sheet1.xml");
    if (!firstSheetRel.isEmpty()) {
        Result<QByteArray> rels = member(bytes, QStringLiteral("xl/_rels/workbook.xml.rels"));
        if (rels) {
            QXmlStreamReader x(rels.value());
            while (!x.atEnd())
                if (x.readNext() == QXmlStreamReader::StartElement && x.name() == QLatin1String("Relationship")
                    && x.attributes().value(QLatin1String("Id")) == firstSheetRel)
                    sheetPath = resolved(x.attributes().value(QLatin1String("Target")).toString());
        }
    }

    QStringList shared;
    if (Result<QByteArray> sst = member(bytes, QStringLiteral("xl/sharedStrings.xml"))) {
        QXmlStreamReader x(sst.value());
        QString current;
        bool inItem = false;
        int depthInRun = 0; // phonetic runs (rPh) are no part of the text
        while (!x.atEnd()) {
            const auto t = x.readNext();
            if (t == QXmlStreamReader::StartElement) {
                if (x.name() == QLatin1String("si")) {
                    inItem = true;
                    current.clear();
                } else if (x.name() == QLatin1String("rPh")) {
                    ++depthInRun;
                } else if (x.name() == QLatin1String("t") && inItem && depthInRun == 0) {
                    current += x.readElementText();
                }
            } else if (t == QXmlStreamReader::EndElement) {
                if (x.name() == QLatin1String("si")) {
                    shared << current;
                    inItem = false;
                } else if (x.name() == QLatin1String("rPh")) {
                    --depthInRun;
                }
            }
        }
        if (x.hasError())
            return notWorkbook(QStringLiteral("sharedStrings.xml：%1").arg(x.errorString()));
    }

    Result<QByteArray> sheet = member(bytes, sheetPath);
    if (!sheet)
        return Error(sheet.error());
    QList<TableRow> rows;
    QXmlStreamReader x(sheet.value());
    TableRow *row = nullptr;
    int nextRow = 1;
    while (!x.atEnd()) {
        if (x.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (x.name() == QLatin1String("row")) {
            bool ok = false;
            const int r = x.attributes().value(QLatin1String("r")).toInt(&ok);
            rows.append(TableRow());
            row = &rows.last();
            row->sourceLine = ok && r >= nextRow ? r : nextRow;
            nextRow = row->sourceLine + 1;
        } else if (x.name() == QLatin1String("c") && row) {
            const QXmlStreamAttributes attrs = x.attributes();
            const QString type = attrs.value(QLatin1String("t")).toString();
            int column = int(row->cells.size());
            int r = 0;
            const QStringView ref = attrs.value(QLatin1String("r"));
            if (!ref.isEmpty() && !cellReference(ref, column, r))
                return notWorkbook(QStringLiteral("第 %1 行的单元格“%2”位置不对").arg(row->sourceLine).arg(ref));
            if (column < row->cells.size())
                return notWorkbook(QStringLiteral("第 %1 行的单元格次序不对").arg(row->sourceLine));
            QString value;
            // <c> holds <v> (the value), <f> (a formula) or <is><t> (inline text).
            while (!x.atEnd()) {
                const auto t = x.readNext();
                if (t == QXmlStreamReader::EndElement && x.name() == QLatin1String("c"))
                    break;
                if (t != QXmlStreamReader::StartElement)
                    continue;
                if (x.name() == QLatin1String("v")) {
                    value = x.readElementText();
                } else if (x.name() == QLatin1String("t") && type == QLatin1String("inlineStr")) {
                    value += x.readElementText();
                }
            }
            if (type == QLatin1String("s")) {
                bool ok = false;
                const int index = value.toInt(&ok);
                if (!ok || index < 0 || index >= shared.size())
                    return notWorkbook(QStringLiteral("第 %1 行引用了不存在的共享文字").arg(row->sourceLine));
                value = shared.at(index);
            } else if (type == QLatin1String("b")) {
                value = value == QLatin1String("1") ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
            }
            while (row->cells.size() < column)
                row->cells.append(QString());
            row->cells.append(value.trimmed());
        }
    }
    if (x.hasError())
        return notWorkbook(QStringLiteral("%1：%2").arg(sheetPath, x.errorString()));
    return rows;
}

} // namespace kx
