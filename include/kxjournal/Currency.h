#pragma once

#include "kxjournal/kxjournal_export.h"
#include "kxjournal/Result.h"

#include <QMetaType>
#include <QtNumeric>
#include <QString>
#include <QStringView>
#include <cstdint>

namespace kx {

/// A money amount: a 64-bit integer count of ten-thousandths.
///
/// Amounts are never held in floating point. Arithmetic that would leave the
/// representable range yields an invalid value (isValid() is false) that
/// stays invalid through further arithmetic, so an overflow is never wrapped
/// into a wrong but plausible amount; the checked forms (add(), subtract())
/// also say so in an error text.
class KXJOURNAL_EXPORT Currency
{
public:
    /// Ten-thousandths per unit.
    static constexpr std::int64_t Scale = 10000;
    /// Decimal places held.
    static constexpr int Decimals = 4;

    /// How halves are rounded.
    enum class Rounding {
        HalfAwayFromZero, ///< 四舍五入, the bookkeeper's rule
        HalfEven          ///< banker's rounding
    };

    /// Zero.
    constexpr Currency() = default;

    /// An amount of \a raw ten-thousandths. INT64_MIN gives the invalid value.
    static constexpr Currency fromRaw(std::int64_t raw) { return Currency(raw); }
    /// A whole number of units; invalid when out of range.
    static constexpr Currency fromUnits(std::int64_t units)
    {
        return units > MaxUnits || units < -MaxUnits ? invalid() : Currency(units * Scale);
    }
    /// The invalid value (the result of an overflow).
    static constexpr Currency invalid() { return Currency(InvalidRaw); }

    /// Reads an amount typed by a person: optional sign or parentheses,
    /// thousands separators, a currency sign (¥/￥), full-width digits.
    /// Empty or blank text is zero. More than four decimals are rounded half
    /// to even. Anything else is an error whose text names the input.
    static Result<Currency> fromText(QStringView text);
    /// As fromText(), for a value read back from storage: a digit other than
    /// 0 past the fourth decimal is an error rather than rounded away, so a
    /// stored value is never changed by reading it.
    static Result<Currency> fromStoredText(QStringView text);
    /// Converts a double, rounding half to even at four decimals on the
    /// shortest decimal form of the double (the digits a person sees).
    /// NaN, infinities and out-of-range values are errors.
    static Result<Currency> fromDouble(double value);

    /// The raw count of ten-thousandths.
    constexpr std::int64_t raw() const { return m_raw; }
    /// False after an overflow.
    constexpr bool isValid() const { return m_raw != InvalidRaw; }
    /// True for zero.
    constexpr bool isZero() const { return m_raw == 0; }
    /// -1, 0 or 1; 0 for the invalid value.
    int sign() const { return isValid() ? (m_raw > 0) - (m_raw < 0) : 0; }
    /// How many digits the amount has from its first digit other than 0 to
    /// its last decimal other than 0 ("1250.5": 5, "12300": 5, "0.01": 1);
    /// 0 for zero and the invalid value. A store that keeps n significant
    /// digits holds the amount exactly when this is at most n.
    int significantDigits() const;
    /// The nearest double (for display helpers, charts, and engines that
    /// keep amounts as doubles: one of up to 15 significant digits comes back
    /// from it by its shortest decimal form).
    double toDouble() const;

    /// Plain text: no grouping, no trailing zeros ("1250.5", "0", "-0.01").
    /// The invalid value gives "#溢出".
    QString toString() const;
    /// Writes toString()'s text into \a buf (room for 32 characters) and
    /// returns its length; for passes that compare before they allocate.
    int toChars(char16_t *buf) const;
    /// Text in a numeric format such as "#,##0.00", "0.0000", "¥#,##0.00" or
    /// "#,##0.00;(#,##0.00);-" (positive;negative;zero sections). An empty
    /// format gives toString().
    QString format(const QString &pattern) const;

    /// Rounded to \a decimals places (0 to 4).
    Currency rounded(int decimals, Rounding mode = Rounding::HalfAwayFromZero) const;
    /// The absolute value.
    Currency abs() const { return m_raw < 0 ? -*this : *this; }

    /// Checked sum: an error text instead of an invalid value.
    static Result<Currency> add(Currency a, Currency b);
    /// Checked difference.
    static Result<Currency> subtract(Currency a, Currency b);
    /// The product \a a × \a b, rounded half away from zero to four
    /// decimals; an error when it does not fit.
    static Result<Currency> multiply(Currency a, Currency b);

    /// Sum; invalid on overflow or when either side is invalid.
    friend Currency operator+(Currency a, Currency b)
    {
        std::int64_t out = 0;
        if (!a.isValid() || !b.isValid() || qAddOverflow(a.m_raw, b.m_raw, &out))
            return invalid();
        return Currency(out);
    }
    /// Difference; invalid on overflow or when either side is invalid.
    friend Currency operator-(Currency a, Currency b)
    {
        std::int64_t out = 0;
        if (!a.isValid() || !b.isValid() || qSubOverflow(a.m_raw, b.m_raw, &out))
            return invalid();
        return Currency(out);
    }
    /// Negation (the range is symmetric, so this cannot overflow).
    constexpr Currency operator-() const { return isValid() ? Currency(-m_raw) : *this; }
    /// In-place sum.
    Currency &operator+=(Currency other) { return *this = *this + other; }
    /// In-place difference.
    Currency &operator-=(Currency other) { return *this = *this - other; }

    // Comparisons order by amount; the invalid value sorts below all others.
    /// True when \a a and \a b are the same amount (or both invalid).
    friend constexpr bool operator==(Currency a, Currency b) { return a.m_raw == b.m_raw; }
    /// True when \a a and \a b differ.
    friend constexpr bool operator!=(Currency a, Currency b) { return a.m_raw != b.m_raw; }
    /// True when \a a is less than \a b (the invalid value is less than any amount).
    friend constexpr bool operator<(Currency a, Currency b) { return a.m_raw < b.m_raw; }
    /// True when \a a is more than \a b.
    friend constexpr bool operator>(Currency a, Currency b) { return a.m_raw > b.m_raw; }
    /// True when \a a is at most \a b.
    friend constexpr bool operator<=(Currency a, Currency b) { return a.m_raw <= b.m_raw; }
    /// True when \a a is at least \a b.
    friend constexpr bool operator>=(Currency a, Currency b) { return a.m_raw >= b.m_raw; }

private:
    static constexpr std::int64_t InvalidRaw = INT64_MIN;
    static constexpr std::int64_t MaxUnits = INT64_MAX / Scale;
    constexpr explicit Currency(std::int64_t raw) : m_raw(raw) {}

    std::int64_t m_raw = 0;
};

} // namespace kx

Q_DECLARE_METATYPE(kx::Currency)
