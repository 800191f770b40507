#include "editing/DateEntry.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

// Splits "2026-11-5" / "11/5" / "2026年11月5日" into its numbers; false when
// the text is anything else. At most three parts, each at most four digits.
bool numbersOf(QStringView text, std::array<int, 3> &parts, int &count, std::array<int, 3> &widths)
{
    count = 0;
    int value = 0, width = 0;
    QChar separator;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        const QChar c = i < text.size() ? text[i] : QChar();
        if (c.isDigit() && c.unicode() < 0x80) {
            if (++width > 4)
                return false;
            value = value * 10 + (c.unicode() - u'0');
            continue;
        }
        const bool end = i == text.size();
        const bool chineseEnd = c == u'日' && i + 1 == text.size();
        const bool mark = c == u'-' || c == u'/' || c == u'.' || c == u'年' || c == u'月';
        if (!end && !chineseEnd && !mark)
            return false;
        if (width == 0 || count == 3)
            return false;
        // One kind of separator between numbers ("年" and "月" go together).
        if (mark && c != u'年' && c != u'月') {
            if (!separator.isNull() && separator != c)
                return false;
            separator = c;
        }
        parts[std::size_t(count)] = value;
        widths[std::size_t(count)] = width;
        ++count;
        value = 0;
        width = 0;
        if (chineseEnd)
            break;
        if (end)
            break;
        // A separator must be followed by another number.
        if (i + 1 == text.size())
            return false;
    }
    return count > 0;
}

} // namespace

QDate DateEntry::parse(QStringView text, const QDate &reference)
{
    const QStringView t = text.trimmed();
    if (t.isEmpty() || t.size() > 16)
        return {};
    // Eight digits in a row: year, month and day run together.
    if (t.size() == 8 && std::all_of(t.begin(), t.end(), [](QChar c) { return c >= u'0' && c <= u'9'; })) {
        const int n = t.toInt();
        return QDate(n / 10000, n / 100 % 100, n % 100);
    }
    std::array<int, 3> parts{}, widths{};
    int count = 0;
    if (!numbersOf(t, parts, count, widths))
        return {};
    if (count == 3 && widths[0] == 4 && widths[1] <= 2 && widths[2] <= 2)
        return QDate(parts[0], parts[1], parts[2]);
    if (count == 2 && widths[0] <= 2 && widths[1] <= 2 && reference.isValid())
        return QDate(reference.year(), parts[0], parts[1]);
    if (count != 1 || !reference.isValid())
        return {};
    const int digits = widths[0];
    const int n = parts[0];
    if (digits <= 2)
        return QDate(reference.year(), reference.month(), n);
    if (digits == 4)
        return QDate(reference.year(), n / 100, n % 100);
    return {};
}

} // namespace kx
