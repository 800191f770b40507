#include "editing/FormulaEvaluator.h"

#include <limits>

#include <algorithm>

namespace kx {

namespace {

using Int = __int128;

// Values stay exact fractions; past this size a formula is refused rather
// than rounded, so what is shown is always what was asked for.
constexpr Int Bound = Int(1000000000000000000LL) * Int(1000000000000LL);  // 1e30

Int gcd(Int a, Int b)
{
    if (a < 0)
        a = -a;
    if (b < 0)
        b = -b;
    while (b != 0) {
        const Int t = a % b;
        a = b;
        b = t;
    }
    return a;
}

struct Fraction {
    Int num = 0;
    Int den = 1;
};

class Parser
{
public:
    explicit Parser(QStringView text) : m_text(text) {}

    bool parse(Fraction &out)
    {
        skipSpace();
        if (m_pos == m_text.size()) {
            out = Fraction();
            return true;
        }
        if (!expression(out))
            return false;
        skipSpace();
        return m_pos == m_text.size();
    }

private:
    // Deep enough for any formula a person types; a bound keeps the
    // recursion off the end of the stack for machine-made input.
    static constexpr int MaxDepth = 100;

    bool expression(Fraction &out)
    {
        if (!term(out))
            return false;
        for (;;) {
            skipSpace();
            const char16_t op = peek();
            if (op != u'+' && op != u'-')
                return true;
            ++m_pos;
            Fraction rhs;
            if (!term(rhs) || !combine(out, rhs, op))
                return false;
        }
    }

    bool term(Fraction &out)
    {
        if (!factor(out))
            return false;
        for (;;) {
            skipSpace();
            char16_t op = peek();
            if (op == u'×')
                op = u'*';
            if (op == u'÷')
                op = u'/';
            if (op != u'*' && op != u'/')
                return true;
            ++m_pos;
            Fraction rhs;
            if (!factor(rhs) || !combine(out, rhs, op))
                return false;
        }
    }

    bool factor(Fraction &out)
    {
        if (++m_depth > MaxDepth)
            return false;
        skipSpace();
        const char16_t c = peek();
        bool ok = false;
        if (c == u'-' || c == u'+') {
            ++m_pos;
            ok = factor(out);
            if (ok && c == u'-')
                out.num = -out.num;
        } else if (c == u'(') {
            ++m_pos;
            ok = expression(out);
            skipSpace();
            ok = ok && peek() == u')';
            if (ok)
                ++m_pos;
        } else {
            ok = number(out);
        }
        --m_depth;
        return ok;
    }

    bool number(Fraction &out)
    {
        Int num = 0, den = 1;
        bool digits = false, point = false;
        while (m_pos < m_text.size()) {
            const char16_t c = m_text[m_pos].unicode();
            if (c >= u'0' && c <= u'9') {
                digits = true;
                num = num * 10 + (c - u'0');
                if (point)
                    den *= 10;
                if (num >= Bound || den >= Bound)
                    return false;
            } else if (c == u'.' && !point) {
                point = true;
            } else {
                break;
            }
            ++m_pos;
        }
        if (!digits)
            return false;
        out = reduced(num, den);
        return true;
    }

    static Fraction reduced(Int num, Int den)
    {
        if (den < 0) {
            num = -num;
            den = -den;
        }
        const Int g = gcd(num, den);
        if (g > 1) {
            num /= g;
            den /= g;
        }
        return {num, den};
    }

    // Products of two values below the bound fit in 128 bits only when the
    // factors are small enough, so every product is checked.
    static bool multiply(Int a, Int b, Int &out)
    {
        return !__builtin_mul_overflow(a, b, &out) && out < Bound && out > -Bound;
    }

    static bool combine(Fraction &lhs, const Fraction &rhs, char16_t op)
    {
        Int num = 0, den = 0, x = 0, y = 0;
        switch (op) {
        case u'+':
        case u'-':
            if (!multiply(lhs.num, rhs.den, x) || !multiply(rhs.num, lhs.den, y) || !multiply(lhs.den, rhs.den, den))
                return false;
            num = op == u'+' ? x + y : x - y;
            break;
        case u'*':
            if (!multiply(lhs.num, rhs.num, num) || !multiply(lhs.den, rhs.den, den))
                return false;
            break;
        default:
            if (rhs.num == 0)
                return false;
            if (!multiply(lhs.num, rhs.den, num) || !multiply(lhs.den, rhs.num, den))
                return false;
        }
        if (num >= Bound || num <= -Bound)
            return false;
        lhs = reduced(num, den);
        return true;
    }

    char16_t peek() const { return m_pos < m_text.size() ? m_text[m_pos].unicode() : u'\0'; }

    void skipSpace()
    {
        while (m_pos < m_text.size() && m_text[m_pos].isSpace())
            ++m_pos;
    }

    QStringView m_text;
    qsizetype m_pos = 0;
    int m_depth = 0;
};

} // namespace

Result<Currency> FormulaEvaluator::evaluate(QStringView text, int decimals)
{
    Fraction value;
    if (!Parser(text).parse(value))
        return Error(QStringLiteral("公式计算错误。"));
    decimals = std::clamp(decimals, 0, 4);
    std::int64_t unit = 1;
    for (int i = 0; i < decimals; ++i)
        unit *= 10;
    // Units of the last place kept, a half going to the even neighbour.
    const bool negative = value.num < 0;
    const Int magnitude = negative ? -value.num : value.num;
    Int cents = magnitude * unit / value.den;
    const Int rest = magnitude * unit % value.den;
    if (rest * 2 > value.den || (rest * 2 == value.den && cents % 2 != 0))
        ++cents;
    if (cents > Int(std::numeric_limits<std::int64_t>::max() / (Currency::Scale / unit)))
        return Error(QStringLiteral("公式计算错误。"));
    const auto raw = static_cast<std::int64_t>(cents) * (Currency::Scale / unit);
    return Currency::fromRaw(negative ? -raw : raw);
}

} // namespace kx
