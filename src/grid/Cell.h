#pragma once

#include "kxjournal/Currency.h"

#include <QDate>
#include <QString>
#include <QStringView>
#include <cstdint>

namespace kx {

/// One grid cell in eight bytes: nothing, a whole number, an amount with a
/// fraction, a day, or a reference to a pooled text.
///
/// A cell's text is what was written to it, character for character; the
/// typed kinds are only taken for texts that are exactly the canonical form
/// of their value ("12", "1250.5", "2026-01-05"), so reading the text back
/// gives the same characters. Because every text has exactly one encoding,
/// two cells hold the same text exactly when their bits are equal.
class Cell
{
public:
    /// What the cell holds.
    enum Kind : std::uint8_t { Empty = 0, Number = 1, Amount = 2, Day = 3, Text = 4 };

    /// Payloads keep 61 bits; values beyond (never met in books) stay text.
    static constexpr std::int64_t Limit = (std::int64_t(1) << 60);

    constexpr Cell() = default;

    /// The cell's kind.
    constexpr Kind kind() const { return Kind(m_bits & 7u); }
    /// The kind's value: the number, the ten-thousandths, the Julian day or the text id.
    constexpr std::int64_t payload() const { return std::int64_t(m_bits) >> 3; }
    /// The raw bits.
    constexpr std::uint64_t bits() const { return m_bits; }

    friend constexpr bool operator==(Cell a, Cell b) { return a.m_bits == b.m_bits; }
    friend constexpr bool operator!=(Cell a, Cell b) { return a.m_bits != b.m_bits; }

    /// A whole number (|v| < Limit).
    static constexpr Cell number(std::int64_t v) { return Cell(Number, v); }
    /// A pooled text.
    static constexpr Cell text(std::uint32_t id) { return Cell(Text, std::int64_t(id)); }
    /// The canonical cell of an amount: whole amounts are numbers, so "100"
    /// is one cell whether it was written as text or as an amount. An
    /// invalid amount or one out of range gives Empty with \a fits false.
    static Cell amount(Currency value, bool *fits = nullptr)
    {
        const bool ok = value.isValid() && value.raw() < Limit && value.raw() > -Limit;
        if (fits)
            *fits = ok;
        if (!ok)
            return Cell();
        if (value.raw() % Currency::Scale == 0)
            return number(value.raw() / Currency::Scale);
        return Cell(Amount, value.raw());
    }
    /// A day; an invalid date gives Empty.
    static Cell day(const QDate &date);

    /// The typed cell whose canonical text is exactly \a text; Empty for
    /// empty text. \a isText is set when \a text has no typed form (the
    /// caller pools it).
    static Cell classify(QStringView text, bool &isText);
    /// The canonical text of a typed cell (empty for Empty and Text).
    QString typedText() const;
    /// The amount a typed cell stands for (zero for Empty, Day and Text).
    Currency typedAmount() const
    {
        // A number's payload is below Limit: as units it may still be past
        // what money holds, which fromUnits() tells.
        const Kind k = kind();
        return k == Amount ? Currency::fromRaw(payload()) : k == Number ? numberAmount() : Currency();
    }

private:
    Currency numberAmount() const { return Currency::fromUnits(payload()); }
    constexpr Cell(Kind kind, std::int64_t payload) : m_bits((std::uint64_t(payload) << 3) | kind) {}
    std::uint64_t m_bits = 0;
};

} // namespace kx
