#pragma once

#include <QString>
#include <QStringView>
#include <cstdint>
#include <vector>

namespace kx {

/// One character of the initials table: its code point and the first
/// letters of its readings (bit 0 'a' … bit 25 'z').
struct PinyinEntry {
    std::uint16_t codePoint;
    std::uint32_t mask;
};

/// The first letters of the pinyin readings of Chinese characters, so that
/// "yhck" or "yh" finds 银行存款. A character with several readings (行:
/// xing, hang) matches each of their first letters.
class PinyinInitials
{
public:
    /// The letters character \a ch may start with, as a mask; a Latin letter
    /// or digit matches itself (digits have no mask bit: 0 for them).
    static std::uint32_t maskOf(QChar ch);
    /// One mask per character of \a text.
    static std::vector<std::uint32_t> masksOf(QStringView text);
    /// Where the letters of \a initials ("yhck", lower or upper case) match
    /// consecutive characters of the text whose masks are \a masks: the
    /// first position, or -1 when they match nowhere.
    static int find(const std::vector<std::uint32_t> &masks, QStringView initials);
    /// One initial for each character of \a text that has one ("yhck" for
    /// 银行存款; the first in the alphabet where readings differ).
    static QString of(QStringView text);
};

} // namespace kx
