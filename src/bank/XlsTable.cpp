#include "bank/XlsTable.h"

#include "bank/CompoundFile.h"

#include <QLocale>
#include <QMap>
#include <QtEndian>
#include <cstring>

namespace kx {

namespace {

// Sheets beyond these are no statement.
constexpr int MaxColumns = 1024;
constexpr qsizetype MaxCells = 5'000'000;

Error damaged(const QString &why) { return Error(QStringLiteral("不是有效的 .xls 工作簿：%1。").arg(why)); }

QString numberText(double d)
{
    // The shortest text that reads back as the same double.
    return QString::number(d, 'g', QLocale::FloatingPointShortest);
}

double rkValue(quint32 rk)
{
    double d = 0;
    if (rk & 0x02) {
        d = double(qint32(rk) >> 2);
    } else {
        const quint64 bits = quint64(rk & 0xFFFFFFFC) << 32;
        std::memcpy(&d, &bits, sizeof d);
    }
    return rk & 0x01 ? d / 100 : d;
}

// A run of record bodies read as one: the shared string table goes on in
// CONTINUE records, and a string's characters resume there behind a new
// flags byte.
class Pieces
{
public:
    explicit Pieces(QList<QByteArray> pieces) : m_pieces(std::move(pieces)) {}

    bool atPieceEnd() const { return m_pos >= m_pieces.at(m_index).size(); }
    bool next()
    {
        if (m_index + 1 >= m_pieces.size())
            return false;
        ++m_index;
        m_pos = 0;
        return true;
    }
    // Bytes that may run over a piece's end without a flags byte.
    bool bytes(qsizetype n, QByteArray *out)
    {
        while (n > 0) {
            if (atPieceEnd() && !next())
                return false;
            const qsizetype take = qMin(n, m_pieces.at(m_index).size() - m_pos);
            if (out)
                out->append(m_pieces.at(m_index).constData() + m_pos, take);
            m_pos += take;
            n -= take;
        }
        return true;
    }
    bool u8(quint8 &v)
    {
        QByteArray b;
        if (!bytes(1, &b))
            return false;
        v = quint8(b.at(0));
        return true;
    }
    bool u16(quint16 &v)
    {
        QByteArray b;
        if (!bytes(2, &b))
            return false;
        v = qFromLittleEndian<quint16>(b.constData());
        return true;
    }
    bool u32(quint32 &v)
    {
        QByteArray b;
        if (!bytes(4, &b))
            return false;
        v = qFromLittleEndian<quint32>(b.constData());
        return true;
    }
    // An XLUnicodeString: a count (16 or 8 bits), flags, optional rich-text
    // and phonetic sizes, the characters (one byte or two each), then the
    // rich-text runs and phonetic block, which are skipped.
    bool string(QString &out, bool shortCount = false)
    {
        quint16 count = 0;
        quint8 flags = 0;
        if (shortCount) {
            quint8 c = 0;
            if (!u8(c))
                return false;
            count = c;
        } else if (!u16(count)) {
            return false;
        }
        if (!u8(flags))
            return false;
        quint16 runs = 0;
        quint32 phonetic = 0;
        if ((flags & 0x08) && !u16(runs))
            return false;
        if ((flags & 0x04) && !u32(phonetic))
            return false;
        bool wide = flags & 0x01;
        out.clear();
        for (quint16 i = 0; i < count; ++i) {
            if (atPieceEnd()) {
                quint8 again = 0;
                if (!next() || !u8(again))
                    return false;
                wide = again & 0x01;
            }
            if (wide) {
                quint16 c = 0;
                if (!u16(c))
                    return false;
                out += QChar(c);
            } else {
                quint8 c = 0;
                if (!u8(c))
                    return false;
                out += QChar(c);
            }
        }
        return bytes(qsizetype(runs) * 4, nullptr) && bytes(qsizetype(phonetic), nullptr);
    }

private:
    QList<QByteArray> m_pieces;
    qsizetype m_index = 0;
    qsizetype m_pos = 0;
};

struct Record
{
    quint16 type = 0;
    QByteArray data;
    qsizetype next = 0; // where the record after it starts
};

bool recordAt(const QByteArray &s, qsizetype at, Record &r)
{
    if (at < 0 || at + 4 > s.size())
        return false;
    r.type = qFromLittleEndian<quint16>(s.constData() + at);
    const quint16 length = qFromLittleEndian<quint16>(s.constData() + at + 2);
    if (at + 4 + length > s.size())
        return false;
    r.data = s.mid(at + 4, length);
    r.next = at + 4 + length;
    return true;
}

quint16 u16At(const QByteArray &b, qsizetype at) { return qFromLittleEndian<quint16>(b.constData() + at); }
quint32 u32At(const QByteArray &b, qsizetype at) { return qFromLittleEndian<quint32>(b.constData() + at); }

} // namespace

Result<QList<TableRow>> XlsTable::read(const QByteArray &bytes)
{
    Result<QByteArray> found = CompoundFile::stream(bytes, QStringLiteral("Workbook"));
    if (!found) {
        // Excel 95 called the stream "Book"; its strings are in a code page.
        if (CompoundFile::stream(bytes, QStringLiteral("Book")))
            return Error(QStringLiteral("这是 Excel 95 或更早的 .xls 工作簿，请在表格程序里另存为 .xlsx 或 .csv 再导入。"));
        return Error(found.error());
    }
    const QByteArray &s = found.value();

    // The workbook globals: the first worksheet's place and the shared strings.
    Record r;
    if (!recordAt(s, 0, r) || r.type != 0x0809 || r.data.size() < 4)
        return damaged(QStringLiteral("没有开头记录"));
    if (u16At(r.data, 0) != 0x0600)
        return Error(QStringLiteral("这是 Excel 95 或更早的 .xls 工作簿，请在表格程序里另存为 .xlsx 或 .csv 再导入。"));
    qsizetype sheetAt = -1;
    QStringList shared;
    qsizetype at = r.next;
    for (;;) {
        if (!recordAt(s, at, r))
            return damaged(QStringLiteral("工作簿记录不完整"));
        at = r.next;
        if (r.type == 0x000A) // EOF
            break;
        if (r.type == 0x002F && !r.data.isEmpty())
            return Error(QStringLiteral("这个 .xls 工作簿有密码，请先在表格程序里去掉密码再导入。"));
        if (r.type == 0x0085 && r.data.size() >= 6 && sheetAt < 0 && quint8(r.data.at(5)) == 0)
            sheetAt = qsizetype(u32At(r.data, 0));
        if (r.type == 0x00FC && r.data.size() >= 8) {
            QList<QByteArray> pieces{r.data.mid(8)};
            Record more;
            while (recordAt(s, at, more) && more.type == 0x003C) {
                pieces << more.data;
                at = more.next;
            }
            const quint32 unique = u32At(r.data, 4);
            // Each string takes three bytes at least: a count bounds them.
            qsizetype total = 0;
            for (const QByteArray &p : pieces)
                total += p.size();
            if (qsizetype(unique) > total / 3 + 1)
                return damaged(QStringLiteral("共享文字表的条数不对"));
            Pieces in(pieces);
            for (quint32 i = 0; i < unique; ++i) {
                QString text;
                if (!in.string(text))
                    return damaged(QStringLiteral("共享文字表不完整"));
                shared << text;
            }
        }
    }
    if (sheetAt < 0)
        return damaged(QStringLiteral("没有工作表"));
    if (!recordAt(s, sheetAt, r) || r.type != 0x0809)
        return damaged(QStringLiteral("工作表的位置不对"));

    QMap<int, QMap<int, QString>> cells;
    qsizetype cellCount = 0;
    auto put = [&](int row, int column, const QString &text) {
        if (column < MaxColumns && cellCount < MaxCells) {
            cells[row][column] = text;
            ++cellCount;
        }
    };
    int formulaRow = -1;
    int formulaColumn = -1;
    at = r.next;
    for (;;) {
        if (!recordAt(s, at, r))
            return damaged(QStringLiteral("工作表记录不完整"));
        at = r.next;
        const QByteArray &d = r.data;
        if (r.type == 0x000A)
            break;
        if (r.type == 0x0809)
            return damaged(QStringLiteral("工作表里套着别的表"));
        if (r.type != 0x0207)
            formulaRow = -1;
        const int row = d.size() >= 4 ? u16At(d, 0) : 0;
        const int column = d.size() >= 4 ? u16At(d, 2) : 0;
        switch (r.type) {
        case 0x00FD: // LABELSST
            if (d.size() >= 10) {
                const quint32 index = u32At(d, 6);
                if (index >= quint32(shared.size()))
                    return damaged(QStringLiteral("第 %1 行引用了不存在的共享文字").arg(row + 1));
                put(row, column, shared.at(index));
            }
            break;
        case 0x0204: // LABEL
            if (d.size() >= 6) {
                Pieces in({d.mid(6)});
                QString text;
                if (!in.string(text))
                    return damaged(QStringLiteral("第 %1 行的文字不完整").arg(row + 1));
                put(row, column, text);
            }
            break;
        case 0x0203: // NUMBER
            if (d.size() >= 14) {
                double v = 0;
                const quint64 bits = qFromLittleEndian<quint64>(d.constData() + 6);
                std::memcpy(&v, &bits, sizeof v);
                put(row, column, numberText(v));
            }
            break;
        case 0x027E: // RK
            if (d.size() >= 10)
                put(row, column, numberText(rkValue(u32At(d, 6))));
            break;
        case 0x00BD: // MULRK: several RK cells of one row
            for (qsizetype i = 4, c = column; i + 6 <= d.size() - 2; i += 6, ++c)
                put(row, int(c), numberText(rkValue(u32At(d, i + 2))));
            break;
        case 0x0205: // BOOLERR
            if (d.size() >= 8 && d.at(7) == 0)
                put(row, column, d.at(6) ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
            break;
        case 0x0006: // FORMULA: its last result
            if (d.size() >= 14) {
                if (u16At(d, 12) != 0xFFFF) {
                    double v = 0;
                    const quint64 bits = qFromLittleEndian<quint64>(d.constData() + 6);
                    std::memcpy(&v, &bits, sizeof v);
                    put(row, column, numberText(v));
                } else if (d.at(6) == 0) {
                    formulaRow = row; // the text follows in a STRING record
                    formulaColumn = column;
                }
            }
            break;
        case 0x0207: // STRING
            if (formulaRow >= 0) {
                Pieces in({d});
                QString text;
                if (!in.string(text))
                    return damaged(QStringLiteral("第 %1 行的公式结果不完整").arg(formulaRow + 1));
                put(formulaRow, formulaColumn, text);
                formulaRow = -1;
            }
            break;
        default:
            break;
        }
    }

    QList<TableRow> rows;
    for (auto it = cells.constBegin(); it != cells.constEnd(); ++it) {
        TableRow row;
        row.sourceLine = it.key() + 1;
        for (auto c = it->constBegin(); c != it->constEnd(); ++c) {
            while (row.cells.size() < c.key())
                row.cells.append(QString());
            row.cells.append(c.value().trimmed());
        }
        rows.append(std::move(row));
    }
    return rows;
}

} // namespace kx
