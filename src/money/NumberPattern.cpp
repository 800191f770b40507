#include "money/NumberPattern.h"

#include <QStringList>
#include <algorithm>

namespace kx {

namespace {

bool isPlaceholder(QChar c)
{
    return c == QLatin1Char('#') || c == QLatin1Char('0') || c == QLatin1Char(',') || c == QLatin1Char('.');
}

// Splits on ';' outside quotes and escapes.
QStringList splitSections(const QString &pattern)
{
    QStringList parts;
    QString cur;
    bool quoted = false;
    for (int i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c == QLatin1Char('\\') && i + 1 < pattern.size()) {
            cur += c;
            cur += pattern.at(++i);
            continue;
        }
        if (c == QLatin1Char('"'))
            quoted = !quoted;
        if (c == QLatin1Char(';') && !quoted) {
            parts << cur;
            cur.clear();
        } else {
            cur += c;
        }
    }
    parts << cur;
    return parts;
}

QString unescape(const QString &literal)
{
    QString out;
    for (int i = 0; i < literal.size(); ++i) {
        const QChar c = literal.at(i);
        if (c == QLatin1Char('\\') && i + 1 < literal.size())
            out += literal.at(++i);
        else if (c != QLatin1Char('"'))
            out += c;
    }
    return out;
}

} // namespace

NumberPattern::NumberPattern(const QString &pattern)
{
    const QStringList parts = splitSections(pattern);
    for (int i = 0; i < std::min<int>(3, int(parts.size())); ++i)
        m_sections.push_back(parseSection(parts.at(i)));
}

NumberPattern::Section NumberPattern::parseSection(const QString &text)
{
    Section sec;
    int i = 0;
    bool quoted = false;
    QString literal;
    // Prefix: everything up to the first placeholder outside quotes.
    for (; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\\') && i + 1 < text.size()) {
            literal += c;
            literal += text.at(++i);
            continue;
        }
        if (c == QLatin1Char('"'))
            quoted = !quoted;
        if (!quoted && isPlaceholder(c))
            break;
        literal += c;
    }
    sec.prefix = unescape(literal);
    bool afterPoint = false;
    for (; i < text.size() && isPlaceholder(text.at(i)); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('.')) {
            afterPoint = true;
        } else if (c == QLatin1Char(',')) {
            if (!afterPoint)
                sec.grouping = true;
        } else {
            sec.hasDigits = true;
            if (afterPoint) {
                ++sec.maxDec;
                if (c == QLatin1Char('0'))
                    sec.minDec = sec.maxDec;
            } else if (c == QLatin1Char('0')) {
                ++sec.minInt;
            }
        }
    }
    sec.suffix = unescape(text.mid(i));
    return sec;
}

QString NumberPattern::render(const Section &sec, Currency magnitude)
{
    if (!sec.hasDigits)
        return sec.prefix + sec.suffix;
    const int dec = std::min(sec.maxDec, int(Currency::Decimals));
    const Currency r = magnitude.rounded(dec);
    if (!r.isValid())
        return QStringLiteral("#溢出");
    const std::int64_t raw = r.raw();
    QString intPart = QString::number(raw / Currency::Scale);
    if (intPart == QLatin1String("0") && sec.minInt == 0)
        intPart.clear();
    if (intPart.size() < sec.minInt)
        intPart = intPart.rightJustified(sec.minInt, QLatin1Char('0'));
    if (sec.grouping) {
        for (int pos = int(intPart.size()) - 3; pos > 0; pos -= 3)
            intPart.insert(pos, QLatin1Char(','));
    }
    QString frac = QString::number(raw % Currency::Scale).rightJustified(Currency::Decimals, QLatin1Char('0'));
    frac.truncate(dec);
    while (frac.size() > sec.minDec && frac.endsWith(QLatin1Char('0')))
        frac.chop(1);
    if (sec.maxDec > dec)
        frac = frac.leftJustified(std::max<int>(int(frac.size()), sec.minDec), QLatin1Char('0'));
    QString out = sec.prefix + intPart;
    if (!frac.isEmpty())
        out += QLatin1Char('.') + frac;
    if (intPart.isEmpty() && frac.isEmpty())
        out += QLatin1Char('0');
    return out + sec.suffix;
}

QString NumberPattern::apply(Currency value) const
{
    if (m_sections.empty())
        return value.toString();
    const Section &pos = m_sections.front();
    const int dec = std::min(pos.maxDec, int(Currency::Decimals));
    const Currency shown = value.rounded(dec);
    if (shown.isZero() && m_sections.size() >= 3)
        return render(m_sections[2], Currency());
    if (shown.sign() < 0) {
        if (m_sections.size() >= 2)
            return render(m_sections[1], value.abs());
        return QLatin1Char('-') + render(pos, value.abs());
    }
    return render(pos, value.abs());
}

} // namespace kx
