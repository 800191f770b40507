#include "output/PdfTextLayer.h"

#include <QFontDatabase>
#include <QHash>
#include <QMutex>
#include <QRawFont>
#include <QVector>
#include <tuple>

namespace kx {

namespace {

// The radical blocks: the CJK radicals supplement and the Kangxi radicals.
bool isRadical(char16_t c)
{
    return c >= 0x2E80 && c <= 0x2FDF;
}

// Radical to ideograph, for the font with this key; filled once per font.
QHash<char16_t, char16_t> radicalsOf(const QFont &font)
{
    static QMutex lock;
    static QHash<QString, QHash<char16_t, char16_t>> known;
    const QString key = font.key();
    QMutexLocker locked(&lock);
    if (const auto it = known.constFind(key); it != known.constEnd())
        return *it;
    QHash<char16_t, char16_t> map;
    const QRawFont raw = QRawFont::fromFont(font, QFontDatabase::SimplifiedChinese);
    if (raw.isValid()) {
        // The glyph of every unified ideograph of the basic plane, the lowest first.
        QString ideographs;
        for (char16_t c = 0x4E00; c <= 0x9FFF; ++c)
            ideographs += QChar(c);
        const QVector<quint32> glyphs = raw.glyphIndexesForString(ideographs);
        QHash<quint32, char16_t> byGlyph;
        for (qsizetype i = glyphs.size() - 1; i >= 0; --i)
            if (glyphs[i] != 0)
                byGlyph.insert(glyphs[i], ideographs[i].unicode());
        QString radicals;
        for (char16_t c = 0x2E80; c <= 0x2FDF; ++c)
            radicals += QChar(c);
        const QVector<quint32> shared = raw.glyphIndexesForString(radicals);
        for (qsizetype i = 0; i < shared.size(); ++i)
            if (shared[i] != 0 && byGlyph.contains(shared[i]))
                map.insert(radicals[i].unicode(), byGlyph.value(shared[i]));
    }
    known.insert(key, map);
    return map;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// The four-digit code "<XXXX>" at \a at, or -1.
int codeAt(const QByteArray &pdf, qsizetype at)
{
    if (at + 5 >= pdf.size() || pdf[at] != '<' || pdf[at + 5] != '>')
        return -1;
    int value = 0;
    for (int k = 1; k <= 4; ++k) {
        const int digit = hexValue(pdf[at + k]);
        if (digit < 0)
            return -1;
        value = value * 16 + digit;
    }
    return value;
}

void writeCode(QByteArray &pdf, qsizetype at, char16_t code)
{
    static const char digits[] = "0123456789ABCDEF";
    for (int k = 4; k >= 1; --k, code >>= 4)
        pdf[at + k] = digits[code & 0xF];
}

// Rewrites the targets of the lines of one "beginbf…" section between
// \a from and \a to: each line is its source code(s), then its targets.
void fixSection(QByteArray &pdf, qsizetype from, qsizetype to, int sources, const QHash<char16_t, char16_t> &map)
{
    qsizetype line = from;
    while (line < to) {
        qsizetype end = pdf.indexOf('\n', line);
        if (end < 0 || end > to)
            end = to;
        QVector<qsizetype> codes;
        bool array = false;
        for (qsizetype i = line; i < end; ++i) {
            if (pdf[i] == '[')
                array = true;
            if (pdf[i] == '<') {
                codes << i;
                const qsizetype close = pdf.indexOf('>', i);
                i = close < 0 ? end : close;
            }
        }
        // A range of consecutive targets ("<lo> <hi> <first>") spanning
        // several codes cannot change one of them: left as it is.
        const bool oneEach = sources == 1 || array || (codes.size() == 3 && codeAt(pdf, codes[0]) == codeAt(pdf, codes[1]));
        for (qsizetype k = sources; oneEach && k < codes.size(); ++k) {
            const int code = codeAt(pdf, codes[k]);
            if (code >= 0 && isRadical(char16_t(code)))
                if (const char16_t ideograph = map.value(char16_t(code)))
                    writeCode(pdf, codes[k], ideograph);
        }
        line = end + 1;
    }
}

} // namespace

char16_t PdfTextLayer::ideographOf(char16_t radical, const QFont &font)
{
    return radicalsOf(font).value(radical);
}

QByteArray PdfTextLayer::readable(QByteArray pdf, const QFont &font)
{
    const QHash<char16_t, char16_t> map = radicalsOf(font);
    if (map.isEmpty())
        return pdf;
    // Only the glyph-to-text maps ("…/Ordering (UCS)…begincmap…endcmap") are read and changed.
    for (qsizetype at = pdf.indexOf("begincmap"); at >= 0; at = pdf.indexOf("begincmap", at + 1)) {
        const qsizetype end = pdf.indexOf("endcmap", at);
        if (end < 0)
            break;
        for (const auto &[open, close, sources] : {std::tuple<const char *, const char *, int>{"beginbfchar", "endbfchar", 1},
                                                   {"beginbfrange", "endbfrange", 2}}) {
            for (qsizetype s = pdf.indexOf(open, at); s >= 0 && s < end; s = pdf.indexOf(open, s + 1)) {
                const qsizetype e = pdf.indexOf(close, s);
                if (e < 0 || e > end)
                    break;
                fixSection(pdf, s + qsizetype(qstrlen(open)), e, sources, map);
            }
        }
        at = end;
    }
    return pdf;
}

} // namespace kx
