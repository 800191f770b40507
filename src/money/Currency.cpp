#include "kxjournal/Currency.h"

#include "money/NumberPattern.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace kx {

namespace {

constexpr std::int64_t MaxRaw = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t MaxUnits = MaxRaw / Currency::Scale;

// People type amounts with an input method in full-width mode as often as not;
// fold those forms to ASCII before reading.
char16_t foldWidth(char16_t c)
{
    if (c >= 0xFF10 && c <= 0xFF19)
        return char16_t(u'0' + (c - 0xFF10));
    switch (c) {
    case 0xFF0E: case 0x3002: return u'.'; // ．and 。typed for a decimal point
    case 0xFF0C: return u',';
    case 0xFF0D: case 0x2212: return u'-';
    case 0xFF0B: return u'+';
    case 0xFF08: return u'(';
    case 0xFF09: return u')';
    case 0x3000: return u' ';
    default: return c;
    }
}

bool isBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

enum class ParseError { None, Syntax, Range };

// Reads [sign] digits[,digits]*[.digits] with the sign already stripped by the
// caller; rounds past four decimals half to even.
ParseError parseUnsigned(const char16_t *s, std::size_t n, std::int64_t &raw)
{
    std::size_t i = 0;
    std::int64_t units = 0;
    bool anyDigit = false;
    bool lastWasDigit = false;
    for (; i < n && s[i] != u'.'; ++i) {
        const char16_t c = s[i];
        if (c >= u'0' && c <= u'9') {
            if (units > (MaxUnits - (c - u'0')) / 10)
                return ParseError::Range;
            units = units * 10 + (c - u'0');
            anyDigit = lastWasDigit = true;
        } else if (c == u',') {
            if (!lastWasDigit || i + 1 >= n || s[i + 1] < u'0' || s[i + 1] > u'9')
                return ParseError::Syntax;
            lastWasDigit = false;
        } else {
            return ParseError::Syntax;
        }
    }
    std::int64_t frac = 0;
    int fracDigits = 0;
    int roundDigit = -1;   // the fifth decimal
    bool stickyBeyond = false;
    if (i < n) {
        ++i; // the point
        for (; i < n; ++i) {
            const char16_t c = s[i];
            if (c < u'0' || c > u'9')
                return ParseError::Syntax;
            anyDigit = true;
            const int d = c - u'0';
            if (fracDigits < Currency::Decimals) {
                frac = frac * 10 + d;
                ++fracDigits;
            } else if (roundDigit < 0) {
                roundDigit = d;
            } else if (d != 0) {
                stickyBeyond = true;
            }
        }
    }
    if (!anyDigit)
        return ParseError::Syntax;
    for (; fracDigits < Currency::Decimals; ++fracDigits)
        frac *= 10;
    const __int128 wide = __int128(units) * Currency::Scale + frac;
    if (wide > MaxRaw)
        return ParseError::Range;
    std::int64_t value = std::int64_t(wide);
    const bool up = roundDigit > 5 || (roundDigit == 5 && (stickyBeyond || (value & 1)));
    if (up) {
        if (value == MaxRaw)
            return ParseError::Range;
        ++value;
    }
    raw = value;
    return ParseError::None;
}

// The common case, plain "-1234.5": read in one pass without folding.
// Returns false when the text needs the full reader.
bool parsePlain(QStringView text, std::int64_t &raw)
{
    const QChar *p = text.data();
    const QChar *end = p + text.size();
    bool negative = false;
    if (p != end && *p == u'-') {
        negative = true;
        ++p;
    }
    if (p == end || end - p > 19)
        return false;
    std::int64_t units = 0;
    int intDigits = 0;
    for (; p != end && p->unicode() >= u'0' && p->unicode() <= u'9'; ++p, ++intDigits)
        units = units * 10 + (p->unicode() - u'0');
    if (intDigits > 14)
        return false;
    std::int64_t frac = 0;
    int fracDigits = 0;
    if (p != end && *p == u'.') {
        ++p;
        for (; p != end && p->unicode() >= u'0' && p->unicode() <= u'9' && fracDigits < Currency::Decimals; ++p, ++fracDigits)
            frac = frac * 10 + (p->unicode() - u'0');
    }
    if (p != end || intDigits + fracDigits == 0)
        return false;
    for (int i = fracDigits; i < Currency::Decimals; ++i)
        frac *= 10;
    raw = units * Currency::Scale + frac;
    if (negative)
        raw = -raw;
    return true;
}

Result<Currency> parseAmount(QStringView text)
{
    std::int64_t plain = 0;
    if (text.isEmpty())
        return Currency();
    if (parsePlain(text, plain))
        return Currency::fromRaw(plain);

    // Amounts are short: a fixed buffer keeps reading free of allocations,
    // which matters when a balance pass reads a hundred thousand rows.
    constexpr std::size_t Cap = 64;
    char16_t buf[Cap];
    std::size_t n = 0;
    for (QChar qc : text) {
        const char16_t c = foldWidth(qc.unicode());
        if (isBlank(c))
            continue;
        if (n == Cap)
            return Error(QStringLiteral("“%1”不是有效的金额。").arg(text));
        buf[n++] = c;
    }
    if (n == 0)
        return Currency();

    const char16_t *s = buf;
    bool negative = false;
    if (s[0] == u'(' && s[n - 1] == u')' && n >= 2) {
        negative = true;
        ++s;
        n -= 2;
    }
    auto takeSign = [&] {
        if (n > 0 && (s[0] == u'-' || s[0] == u'+')) {
            if (s[0] == u'-')
                negative = !negative;
            ++s;
            --n;
        }
    };
    takeSign();
    if (n > 0 && (s[0] == 0x00A5 || s[0] == 0xFFE5)) {
        ++s;
        --n;
    }
    if (!negative)
        takeSign();

    std::int64_t raw = 0;
    switch (parseUnsigned(s, n, raw)) {
    case ParseError::Syntax:
        return Error(QStringLiteral("“%1”不是有效的金额。").arg(text));
    case ParseError::Range:
        return Error(QStringLiteral("“%1”超出了金额的范围。").arg(text));
    case ParseError::None:
        break;
    }
    return Currency::fromRaw(negative ? -raw : raw);
}

std::int64_t pow10(int n)
{
    std::int64_t p = 1;
    while (n-- > 0)
        p *= 10;
    return p;
}

} // namespace

Result<Currency> Currency::fromText(QStringView text)
{
    return parseAmount(text);
}

Result<Currency> Currency::fromStoredText(QStringView text)
{
    const qsizetype point = text.indexOf(u'.');
    if (point >= 0) {
        qsizetype end = point + 1;
        while (end < text.size() && text[end].isDigit())
            ++end;
        for (qsizetype i = point + 1 + Decimals; i < end; ++i)
            if (text[i] != u'0')
                return Error(QStringLiteral("“%1”有四位以上的小数。").arg(text.toString()));
    }
    return fromText(text);
}

Result<Currency> Currency::fromDouble(double value)
{
    if (!std::isfinite(value))
        return Error(QStringLiteral("金额不是一个有限的数。"));
    if (std::fabs(value) >= double(MaxUnits) + 1.0)
        return Error(QStringLiteral("%1超出了金额的范围。").arg(value, 0, 'g', 17));
    // The shortest fixed form round-trips to the same double, so rounding it
    // treats 2.00005 as the half a person typed, not as 2.0000499999...
    std::array<char, 64> buf{};
    const auto res = std::to_chars(buf.data(), buf.data() + buf.size(), value, std::chars_format::fixed);
    if (res.ec != std::errc())
        return Error(QStringLiteral("金额无法转换。"));
    return fromText(QString::fromLatin1(buf.data(), int(res.ptr - buf.data())));
}

int Currency::significantDigits() const
{
    if (!isValid() || m_raw == 0)
        return 0;
    std::uint64_t mag = m_raw < 0 ? std::uint64_t(-m_raw) : std::uint64_t(m_raw);
    for (int i = 0; i < Decimals && mag % 10 == 0; ++i)
        mag /= 10;
    int digits = 0;
    for (; mag != 0; mag /= 10)
        ++digits;
    return digits;
}

double Currency::toDouble() const
{
    // Below 2^53 both sides are exact and the one division rounds once.
    constexpr std::int64_t Exact = std::int64_t(1) << 53;
    if ((m_raw > -Exact && m_raw < Exact) || !isValid())
        return double(m_raw) / double(Scale);
    // Beyond, the raw count itself would be rounded first: read the digits.
    char16_t wide[32];
    const int n = toChars(wide);
    char digits[32];
    for (int i = 0; i < n; ++i)
        digits[i] = char(wide[i]);
    double value = 0;
    std::from_chars(digits, digits + n, value);
    return value;
}

int Currency::toChars(char16_t *buf) const
{
    if (!isValid()) {
        const char16_t overflow[] = u"#溢出";
        std::copy(overflow, overflow + 3, buf);
        return 3;
    }
    // Built backwards at the end of the buffer, then moved to its start.
    char16_t tmp[32];
    char16_t *end = tmp + 32;
    char16_t *p = end;
    std::uint64_t mag = m_raw < 0 ? std::uint64_t(-m_raw) : std::uint64_t(m_raw);
    std::uint64_t frac = mag % Scale;
    std::uint64_t units = mag / Scale;
    if (frac != 0) {
        int digits = Decimals;
        while (frac % 10 == 0) {
            frac /= 10;
            --digits;
        }
        for (int i = 0; i < digits; ++i) {
            *--p = char16_t(u'0' + frac % 10);
            frac /= 10;
        }
        *--p = u'.';
    }
    do {
        *--p = char16_t(u'0' + units % 10);
        units /= 10;
    } while (units != 0);
    if (m_raw < 0)
        *--p = u'-';
    std::copy(p, end, buf);
    return int(end - p);
}

QString Currency::toString() const
{
    // Zero is the commonest amount of all; every zero shares one string.
    static const QString zero = QStringLiteral("0");
    if (m_raw == 0)
        return zero;
    char16_t buf[32];
    const int n = toChars(buf);
    return QString(reinterpret_cast<const QChar *>(buf), n);
}

QString Currency::format(const QString &pattern) const
{
    if (pattern.isEmpty())
        return toString();
    if (!isValid())
        return QStringLiteral("#溢出");
    return NumberPattern(pattern).apply(*this);
}

Currency Currency::rounded(int decimals, Rounding mode) const
{
    if (!isValid() || decimals >= Decimals)
        return *this;
    if (decimals < 0)
        decimals = 0;
    const std::int64_t factor = pow10(Decimals - decimals);
    std::int64_t q = m_raw / factor;
    const std::int64_t r = m_raw % factor;
    const std::int64_t twice = 2 * (r < 0 ? -r : r);
    const bool up = mode == Rounding::HalfAwayFromZero ? twice >= factor
                                                        : (twice > factor || (twice == factor && (q & 1)));
    if (up)
        q += m_raw < 0 ? -1 : 1;
    __int128 result = __int128(q) * factor;
    if (result > MaxRaw || result < -MaxRaw)
        return invalid();
    return Currency(std::int64_t(result));
}

Result<Currency> Currency::add(Currency a, Currency b)
{
    const Currency sum = a + b;
    if (!sum.isValid())
        return Error(QStringLiteral("金额合计超出了范围。"));
    return sum;
}

Result<Currency> Currency::subtract(Currency a, Currency b)
{
    const Currency diff = a - b;
    if (!diff.isValid())
        return Error(QStringLiteral("金额差额超出了范围。"));
    return diff;
}

Result<Currency> Currency::multiply(Currency a, Currency b)
{
    if (!a.isValid() || !b.isValid())
        return Error(QStringLiteral("金额乘积超出了范围。"));
    const __int128 product = __int128(a.m_raw) * b.m_raw;
    const __int128 half = Scale / 2;
    const __int128 q = product >= 0 ? (product + half) / Scale : -((-product + half) / Scale);
    if (q > __int128(INT64_MAX) || q <= __int128(InvalidRaw))
        return Error(QStringLiteral("金额乘积超出了范围。"));
    return Currency(std::int64_t(q));
}

} // namespace kx
