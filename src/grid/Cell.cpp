#include "grid/Cell.h"

namespace kx {

namespace {

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

// "0", "-12", "345": no sign on zero, no leading zeros, at most 18 digits.
bool canonicalInteger(QStringView t, std::int64_t &out)
{
    const bool negative = t.front() == u'-';
    const qsizetype start = negative ? 1 : 0;
    const qsizetype digits = t.size() - start;
    if (digits < 1 || digits > 18)
        return false;
    if (t.at(start) == u'0' && (digits > 1 || negative))
        return false;
    std::int64_t v = 0;
    for (qsizetype i = start; i < t.size(); ++i) {
        const char16_t c = t.at(i).unicode();
        if (!isDigit(c))
            return false;
        v = v * 10 + (c - u'0');
    }
    out = negative ? -v : v;
    return true;
}

bool canonicalDay(QStringView t, QDate &out)
{
    if (t.size() != 10 || t.at(4) != u'-' || t.at(7) != u'-')
        return false;
    int parts[3] = {0, 0, 0};
    int part = 0;
    for (int i = 0; i < 10; ++i) {
        if (i == 4 || i == 7) {
            ++part;
            continue;
        }
        const char16_t c = t.at(i).unicode();
        if (!isDigit(c))
            return false;
        parts[part] = parts[part] * 10 + (c - u'0');
    }
    if (parts[0] < 1 || !QDate::isValid(parts[0], parts[1], parts[2]))
        return false;
    out = QDate(parts[0], parts[1], parts[2]);
    return true;
}

} // namespace

Cell Cell::day(const QDate &date)
{
    return date.isValid() && date.year() >= 1 && date.year() <= 9999 ? Cell(Day, date.toJulianDay()) : Cell();
}

Cell Cell::classify(QStringView t, bool &isText)
{
    isText = false;
    if (t.isEmpty())
        return Cell();
    const char16_t c0 = t.front().unicode();
    if ((isDigit(c0) || c0 == u'-') && t.size() <= 32) {
        std::int64_t n = 0;
        if (canonicalInteger(t, n))
            return number(n);
        QDate d;
        if (canonicalDay(t, d))
            return day(d);
        if (t.contains(u'.')) {
            const Result<Currency> a = Currency::fromText(t);
            if (a.ok() && a.value().isValid() && a.value().raw() % Currency::Scale != 0) {
                char16_t buf[32];
                const int len = a.value().toChars(buf);
                bool fits = false;
                const Cell cell = amount(a.value(), &fits);
                if (fits && QStringView(buf, len) == t)
                    return cell;
            }
        }
    }
    isText = true;
    return Cell();
}

QString Cell::typedText() const
{
    static const QString zero = QStringLiteral("0");
    switch (kind()) {
    case Number:
        return payload() == 0 ? zero : QString::number(payload());
    case Amount:
        return Currency::fromRaw(payload()).toString();
    case Day: {
        int y = 0, m = 0, d = 0;
        QDate::fromJulianDay(payload()).getDate(&y, &m, &d);
        const char16_t text[10] = {char16_t(u'0' + y / 1000), char16_t(u'0' + y / 100 % 10),
                                   char16_t(u'0' + y / 10 % 10), char16_t(u'0' + y % 10), u'-',
                                   char16_t(u'0' + m / 10), char16_t(u'0' + m % 10), u'-',
                                   char16_t(u'0' + d / 10), char16_t(u'0' + d % 10)};
        return QString(reinterpret_cast<const QChar *>(text), 10);
    }
    case Empty:
    case Text:
        break;
    }
    return QString();
}

} // namespace kx
