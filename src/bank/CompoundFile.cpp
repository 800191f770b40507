#include "bank/CompoundFile.h"

#include <QtEndian>
#include <vector>

namespace kx {

namespace {

constexpr quint32 EndOfChain = 0xFFFFFFFE;
constexpr quint32 NoStream = 0xFFFFFFFF;

quint16 u16At(const QByteArray &b, qsizetype at) { return qFromLittleEndian<quint16>(b.constData() + at); }
quint32 u32At(const QByteArray &b, qsizetype at) { return qFromLittleEndian<quint32>(b.constData() + at); }

Error damaged(const QString &why) { return Error(QStringLiteral("不是有效的 .xls 工作簿：%1。").arg(why)); }

class Reader
{
public:
    explicit Reader(const QByteArray &file) : m_file(file) {}

    Result<QByteArray> stream(const QString &name)
    {
        if (m_file.size() < 512 || !m_file.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"))
            return damaged(QStringLiteral("文件头不对"));
        const quint16 shift = u16At(m_file, 30);
        const quint16 miniShift = u16At(m_file, 32);
        if ((shift != 9 && shift != 12) || miniShift != 6)
            return damaged(QStringLiteral("扇区大小不对"));
        m_sectorSize = qsizetype(1) << shift;
        m_sectors = quint32((m_file.size() - 512 + m_sectorSize - 1) / m_sectorSize);
        if (Result<void> fat = readFat(); !fat)
            return Error(fat.error());

        const quint32 firstDir = u32At(m_file, 48);
        const quint32 cutoff = u32At(m_file, 56);
        Result<QByteArray> dir = chain(firstDir, m_fat, false);
        if (!dir)
            return Error(dir.error());
        const QByteArray &d = dir.value();
        if (d.size() < 128)
            return damaged(QStringLiteral("没有目录"));
        const quint32 rootStart = u32At(d, 116);
        const quint32 rootSize = u32At(d, 120);
        for (qsizetype at = 128; at + 128 <= d.size(); at += 128) {
            const quint16 nameBytes = u16At(d, at + 64);
            if (d.at(at + 66) != 2 || nameBytes < 2 || nameBytes > 64)
                continue;
            QString entry;
            for (int i = 0; i + 1 < nameBytes / 2; ++i)
                entry += QChar(u16At(d, at + 2 * i));
            if (entry.compare(name, Qt::CaseInsensitive) != 0)
                continue;
            const quint32 start = u32At(d, at + 116);
            const quint32 size = u32At(d, at + 120);
            if (size >= cutoff)
                return sized(chain(start, m_fat, false), size);
            // A small stream lives in 64-byte pieces inside the root's stream.
            Result<QByteArray> miniFatBytes = chain(u32At(m_file, 60), m_fat, false);
            if (!miniFatBytes)
                return Error(miniFatBytes.error());
            std::vector<quint32> miniFat;
            for (qsizetype i = 0; i + 4 <= miniFatBytes.value().size(); i += 4)
                miniFat.push_back(u32At(miniFatBytes.value(), i));
            Result<QByteArray> mini = sized(chain(rootStart, m_fat, false), rootSize);
            if (!mini)
                return Error(mini.error());
            m_mini = mini.value();
            return sized(chain(start, miniFat, true), size);
        }
        return damaged(QStringLiteral("里面没有 %1 数据").arg(name));
    }

private:
    Result<void> readFat()
    {
        // The allocation table's sectors: 109 listed in the header, the rest
        // in a chain of sectors that list more.
        std::vector<quint32> fatSectors;
        const quint32 fatCount = u32At(m_file, 44);
        if (fatCount > m_sectors)
            return damaged(QStringLiteral("分配表大小不对"));
        for (int i = 0; i < 109 && fatSectors.size() < fatCount; ++i)
            fatSectors.push_back(u32At(m_file, 76 + 4 * i));
        quint32 next = u32At(m_file, 68);
        quint32 hops = 0;
        while (fatSectors.size() < fatCount) {
            if (next >= m_sectors || ++hops > m_sectors)
                return damaged(QStringLiteral("分配表链断了"));
            const qsizetype base = 512 + qsizetype(next) * m_sectorSize;
            if (base + m_sectorSize > m_file.size())
                return damaged(QStringLiteral("文件不完整"));
            const int perSector = int(m_sectorSize / 4) - 1;
            for (int i = 0; i < perSector && fatSectors.size() < fatCount; ++i)
                fatSectors.push_back(u32At(m_file, base + 4 * i));
            next = u32At(m_file, base + 4 * perSector);
        }
        for (quint32 s : fatSectors) {
            if (s >= m_sectors)
                return damaged(QStringLiteral("分配表指向文件之外"));
            const qsizetype base = 512 + qsizetype(s) * m_sectorSize;
            if (base + m_sectorSize > m_file.size())
                return damaged(QStringLiteral("文件不完整"));
            for (qsizetype i = 0; i < m_sectorSize; i += 4)
                m_fat.push_back(u32At(m_file, base + i));
        }
        return {};
    }

    // The bytes of the chain from \a start, in sectors of the file or
    // (\a mini) in 64-byte pieces of the small-stream container.
    Result<QByteArray> chain(quint32 start, const std::vector<quint32> &table, bool mini) const
    {
        QByteArray out;
        const qsizetype unit = mini ? 64 : m_sectorSize;
        const QByteArray &source = mini ? m_mini : m_file;
        const qsizetype origin = mini ? 0 : 512;
        quint32 s = start;
        size_t hops = 0;
        while (s != EndOfChain && s != NoStream) {
            if (s >= table.size() || ++hops > table.size())
                return damaged(QStringLiteral("扇区链断了"));
            const qsizetype base = origin + qsizetype(s) * unit;
            if (base + unit > source.size())
                return damaged(QStringLiteral("文件不完整"));
            out.append(source.constData() + base, unit);
            s = table[s];
        }
        return out;
    }

    static Result<QByteArray> sized(Result<QByteArray> bytes, quint32 size)
    {
        if (!bytes)
            return bytes;
        if (qsizetype(size) > bytes.value().size())
            return damaged(QStringLiteral("数据比登记的短"));
        return bytes.value().left(size);
    }

    const QByteArray &m_file;
    qsizetype m_sectorSize = 512;
    quint32 m_sectors = 0;
    std::vector<quint32> m_fat;
    QByteArray m_mini;
};

} // namespace

Result<QByteArray> CompoundFile::stream(const QByteArray &file, const QString &name)
{
    return Reader(file).stream(name);
}

} // namespace kx
