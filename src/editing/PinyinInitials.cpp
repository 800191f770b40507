#include "editing/PinyinInitials.h"

#include <algorithm>
#include <iterator>

namespace kx {

namespace {
#include "PinyinTable.inc"
} // namespace

std::uint32_t PinyinInitials::maskOf(QChar ch)
{
    const char16_t u = ch.unicode();
    if (u >= 'a' && u <= 'z')
        return 1u << (u - 'a');
    if (u >= 'A' && u <= 'Z')
        return 1u << (u - 'A');
    if (u < 0x3000)
        return 0;
    const auto *end = std::end(kPinyinTable);
    const auto *it = std::lower_bound(std::begin(kPinyinTable), end, u,
                                      [](const PinyinEntry &e, char16_t cp) { return e.codePoint < cp; });
    return it != end && it->codePoint == u ? it->mask : 0;
}

std::vector<std::uint32_t> PinyinInitials::masksOf(QStringView text)
{
    std::vector<std::uint32_t> masks;
    masks.reserve(std::size_t(text.size()));
    for (QChar ch : text)
        masks.push_back(maskOf(ch));
    return masks;
}

int PinyinInitials::find(const std::vector<std::uint32_t> &masks, QStringView initials)
{
    const int n = int(initials.size());
    if (n == 0 || n > int(masks.size()))
        return -1;
    std::vector<std::uint32_t> want;
    want.reserve(std::size_t(n));
    for (QChar ch : initials) {
        const std::uint32_t m = maskOf(ch);
        // Only letters are initials; anything else is matched by code or name.
        if (m == 0 || ch.unicode() >= 0x80)
            return -1;
        want.push_back(m);
    }
    for (int start = 0; start + n <= int(masks.size()); ++start) {
        int i = 0;
        while (i < n && (masks[std::size_t(start + i)] & want[std::size_t(i)]))
            ++i;
        if (i == n)
            return start;
    }
    return -1;
}

QString PinyinInitials::of(QStringView text)
{
    QString out;
    for (QChar ch : text) {
        const std::uint32_t m = maskOf(ch);
        if (m == 0)
            continue;
        out += QChar(char16_t('a' + __builtin_ctz(m)));
    }
    return out;
}

} // namespace kx
