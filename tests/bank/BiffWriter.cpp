#include "BiffWriter.h"

#include <QtEndian>
#include <cstring>

namespace kxtest {

namespace {

void u8(QByteArray &b, quint8 v) { b.append(char(v)); }
void u16(QByteArray &b, quint16 v) { u8(b, v & 0xFF); u8(b, v >> 8); }
void u32(QByteArray &b, quint32 v) { u16(b, v & 0xFFFF); u16(b, v >> 16); }
void f64(QByteArray &b, double d)
{
    quint64 bits = 0;
    std::memcpy(&bits, &d, 8);
    u32(b, quint32(bits));
    u32(b, quint32(bits >> 32));
}

void record(QByteArray &out, quint16 type, const QByteArray &data)
{
    u16(out, type);
    u16(out, quint16(data.size()));
    out.append(data);
}

QByteArray bof(quint16 kind)
{
    QByteArray d;
    u16(d, 0x0600); // BIFF8
    u16(d, kind);   // 0x0005 workbook globals, 0x0010 worksheet
    u16(d, 0x0DBB);
    u16(d, 0x07CC);
    u32(d, 0);
    u32(d, 0x0006);
    return d;
}

QByteArray xf(quint16 format, bool style)
{
    QByteArray d;
    u16(d, 0);                              // font
    u16(d, format);                         // number format
    u16(d, style ? 0xFFF5 : 0x0001);        // style or cell XF, locked
    u16(d, 0x0020);
    u16(d, 0);
    u32(d, 0);
    u32(d, 0);
    u16(d, 0x20C0);
    return d;
}

QByteArray unicode(const QString &s, bool shortLength)
{
    QByteArray d;
    if (shortLength)
        u8(d, quint8(s.size()));
    else
        u16(d, quint16(s.size()));
    u8(d, 0x01); // UTF-16LE characters
    for (QChar c : s)
        u16(d, c.unicode());
    return d;
}

} // namespace

void BiffWriter::text(int row, int column, const QString &value) { m_cells.append({row, column, 15, value}); }
void BiffWriter::number(int row, int column, double value) { m_cells.append({row, column, 15, value}); }
void BiffWriter::date(int row, int column, double serial) { m_cells.append({row, column, 16, serial}); }

QByteArray BiffWriter::bytes() const
{
    QStringList strings;
    for (const Cell &c : m_cells)
        if (c.value.typeId() == QMetaType::QString && !strings.contains(c.value.toString()))
            strings << c.value.toString();

    // The sheet substream, written first to know its size.
    QByteArray sheet;
    record(sheet, 0x0809, bof(0x0010));
    int rows = 0;
    int columns = 0;
    for (const Cell &c : m_cells) {
        rows = qMax(rows, c.row + 1);
        columns = qMax(columns, c.column + 1);
    }
    QByteArray dim;
    u32(dim, 0);
    u32(dim, quint32(rows));
    u16(dim, 0);
    u16(dim, quint16(columns));
    u16(dim, 0);
    record(sheet, 0x0200, dim);
    for (const Cell &c : m_cells) {
        QByteArray d;
        u16(d, quint16(c.row));
        u16(d, quint16(c.column));
        u16(d, quint16(c.xf));
        if (c.value.typeId() == QMetaType::QString) {
            u32(d, quint32(strings.indexOf(c.value.toString())));
            record(sheet, 0x00FD, d); // LABELSST
        } else {
            f64(d, c.value.toDouble());
            record(sheet, 0x0203, d); // NUMBER
        }
    }
    record(sheet, 0x000A, {});

    // The workbook globals: 15 style XFs, then the cell XFs 15 (general)
    // and 16 (built-in date format 14).
    QByteArray globals;
    record(globals, 0x0809, bof(0x0005));
    QByteArray cp;
    u16(cp, 1200);
    record(globals, 0x0042, cp);
    QByteArray dateMode;
    u16(dateMode, 0);
    record(globals, 0x0022, dateMode);
    QByteArray font;
    u16(font, 200);
    u16(font, 0);
    u16(font, 0x7FFF);
    u16(font, 400);
    u16(font, 0);
    u8(font, 0);
    u8(font, 0);
    u8(font, 0);
    u8(font, 0);
    font.append(unicode(QStringLiteral("Arial"), true));
    for (int i = 0; i < 5; ++i)
        record(globals, 0x0031, font);
    for (int i = 0; i < 15; ++i)
        record(globals, 0x00E0, xf(0, true));
    record(globals, 0x00E0, xf(0, false));
    record(globals, 0x00E0, xf(14, false));
    QByteArray sst;
    u32(sst, quint32(strings.size()));
    u32(sst, quint32(strings.size()));
    for (const QString &s : strings)
        sst.append(unicode(s, false));
    const QString sheetName = QStringLiteral("Sheet1");
    const int boundSheetSize = 8 + int(sheetName.size()) * 2;
    const int sheetOffset = int(globals.size()) + boundSheetSize + 4 + int(sst.size()) + 4 + 4;
    QByteArray bound;
    u32(bound, quint32(sheetOffset));
    u8(bound, 0);
    u8(bound, 0);
    bound.append(unicode(sheetName, true));
    record(globals, 0x0085, bound);
    record(globals, 0x00FC, sst);
    record(globals, 0x000A, {});
    Q_ASSERT(globals.size() == sheetOffset);

    // The compound file: sector 0 the allocation table, then (for a small
    // stream) the small-stream table and the container of 64-byte pieces
    // the root holds, or the stream itself (at least 4096 bytes), then the
    // directory.
    QByteArray stream = globals + sheet;
    constexpr quint32 End = 0xFFFFFFFE, Free = 0xFFFFFFFF, FatSect = 0xFFFFFFFD;
    const bool small = m_smallStream && stream.size() < 4096;
    const quint32 streamSize = small ? quint32(stream.size()) : quint32(qMax<qsizetype>(stream.size(), 4096));
    const quint32 miniSectors = small ? (streamSize + 63) / 64 : 0;
    QByteArray body = stream;
    body.resize(qsizetype(small ? miniSectors * 64 : streamSize), '\0');
    body.resize((body.size() + 511) / 512 * 512, '\0');
    const quint32 bodySectors = quint32(body.size() / 512);
    const quint32 bodyStart = small ? 2 : 1;
    const quint32 dirSector = bodyStart + bodySectors;
    Q_ASSERT(dirSector + 1 <= 128);

    QByteArray out;
    out.append("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    out.append(QByteArray(16, '\0'));
    u16(out, 0x003E);
    u16(out, 0x0003);
    u16(out, 0xFFFE);
    u16(out, 9);
    u16(out, 6);
    out.append(QByteArray(6, '\0'));
    u32(out, 0);                 // directory sectors (version 3: none counted)
    u32(out, 1);                 // allocation table sectors
    u32(out, dirSector);         // first directory sector
    u32(out, 0);
    u32(out, 4096);              // small-stream cutoff
    u32(out, small ? 1 : End);   // the small-stream table
    u32(out, small ? 1 : 0);
    u32(out, End);               // no further table of allocation sectors
    u32(out, 0);
    u32(out, 0);                 // the allocation table is sector 0
    for (int i = 1; i < 109; ++i)
        u32(out, Free);

    QByteArray fat;
    u32(fat, FatSect);
    if (small)
        u32(fat, End); // the small-stream table
    for (quint32 s = bodyStart; s < dirSector; ++s)
        u32(fat, s + 1 == dirSector ? End : s + 1);
    u32(fat, End); // the directory
    while (fat.size() < 512)
        u32(fat, Free);
    out.append(fat);
    if (small) {
        QByteArray miniFat;
        for (quint32 m = 0; m < miniSectors; ++m)
            u32(miniFat, m + 1 == miniSectors ? End : m + 1);
        while (miniFat.size() < 512)
            u32(miniFat, Free);
        out.append(miniFat);
    }
    out.append(body);

    auto entry = [](const QString &name, quint8 type, quint32 child, quint32 start, quint32 size) {
        QByteArray e;
        for (QChar c : name)
            u16(e, c.unicode());
        e.append(QByteArray(64 - e.size(), '\0'));
        u16(e, quint16(name.isEmpty() ? 0 : (name.size() + 1) * 2));
        u8(e, type);
        u8(e, 1); // black
        u32(e, 0xFFFFFFFF);
        u32(e, 0xFFFFFFFF);
        u32(e, child);
        e.append(QByteArray(16 + 4 + 16, '\0'));
        u32(e, start);
        u32(e, size);
        u32(e, 0);
        return e;
    };
    QByteArray dir;
    dir.append(entry(QStringLiteral("Root Entry"), 5, 1, small ? bodyStart : End, miniSectors * 64));
    dir.append(entry(QStringLiteral("Workbook"), 2, 0xFFFFFFFF, small ? 0 : 1, streamSize));
    dir.append(entry(QString(), 0, 0xFFFFFFFF, 0, 0));
    dir.append(entry(QString(), 0, 0xFFFFFFFF, 0, 0));
    out.append(dir);
    return out;
}

} // namespace kxtest
