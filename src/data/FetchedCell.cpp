#include "data/FetchedCell.h"

#include "grid/CellArrayData.h"
#include "kxjournal/Currency.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QLocale>
#include <QStringView>
#include <algorithm>
#include <cmath>

namespace kx {

namespace {

// A stored double amount. Amounts carry at most four decimals; below 1e11
// scaling and rounding to the nearest ten-thousandth is exact. Above, the
// error of the double times 10000 can pass half a ten-thousandth, so the
// amount is read from the double's shortest decimal form, which gives back
// every amount of up to 15 significant digits as it was written.
Currency amountOf(double d)
{
    if (std::fabs(d) < 1e11)
        return Currency::fromRaw(std::llround(d * double(Currency::Scale)));
    return Currency::fromDouble(d).valueOr(Currency::invalid());
}

// True when a stored double has no digits past the fourth decimal (beyond
// the double's own noise), so reading it as an amount changes nothing.
bool holdsExactly(double d)
{
    const double scaled = d * double(Currency::Scale);
    return std::fabs(scaled - std::round(scaled)) <= 1e-6 * std::max(1.0, std::fabs(scaled) * 1e-9);
}

// The amount a stored text is, when it is one. Money texts are short ASCII:
// widened on the stack, no string made.
Currency moneyOf(const char *text, int size)
{
    char16_t wide[64];
    if (size <= 0 || size > 64)
        return Currency::invalid();
    for (int i = 0; i < size; ++i)
        wide[i] = char16_t(static_cast<unsigned char>(text[i]));
    return Currency::fromStoredText(QStringView(wide, size)).valueOr(Currency::invalid());
}

Cell textCell(CellArrayData &block, int col, const QByteArray &text)
{
    return block.utf8Cell(col, text.constData(), int(text.size()));
}

// A double as a number: at four decimals when it has no more, else its
// shortest form (the digits it was written with), never rounded away.
Cell decimalCell(CellArrayData &block, int col, double d)
{
    const Currency value = amountOf(d);
    if (std::isfinite(d) && value.isValid() && holdsExactly(d))
        return textCell(block, col, value.toString().toUtf8());
    return textCell(block, col, QByteArray::number(d, 'g', QLocale::FloatingPointShortest));
}

} // namespace

Cell FetchedCell::of(CellArrayData &block, int col, Declared declared, const Raw &value)
{
    switch (value.kind) {
    case Raw::Null:
        return Cell();
    case Raw::Integer:
        // A whole amount is the same cell as the whole number.
        return block.numberCell(value.integer);
    case Raw::Real:
        if (declared == Declared::Amount) {
            // An amount money cannot hold stays the number it is stored as:
            // the book can tell it from a zero and leave it alone.
            const Currency money = amountOf(value.real);
            if (std::isfinite(value.real) && money.isValid() && holdsExactly(value.real))
                return block.amountCell(money);
            return textCell(block, col, QByteArray::number(value.real, 'g', QLocale::FloatingPointShortest));
        }
        return decimalCell(block, col, value.real);
    case Raw::Text:
        break;
    }
    const char *text = value.bytes;
    const int size = value.size;
    switch (declared) {
    case Declared::Amount: {
        // A stored value that is no amount ("NaN", letters) stays its text, never a zero.
        const Currency money = moneyOf(text, size);
        return money.isValid() ? block.amountCell(money) : block.utf8Cell(col, text, size);
    }
    case Declared::Decimal: {
        const Currency money = moneyOf(text, size);
        return money.isValid() ? textCell(block, col, money.toString().toUtf8()) : block.utf8Cell(col, text, size);
    }
    case Declared::Integer: {
        bool ok = false;
        const qint64 n = QByteArrayView(text, size).toLongLong(&ok);
        return ok ? block.numberCell(n) : block.utf8Cell(col, text, size);
    }
    case Declared::Moment:
        // The day part: the journal keeps days.
        return block.utf8Cell(col, text, std::min(size, 10));
    case Declared::Flag: {
        const bool yes = size > 0 && (text[0] == 't' || text[0] == 'T' || text[0] == '1');
        return yes ? block.utf8Cell(col, "true", 4) : block.utf8Cell(col, "false", 5);
    }
    case Declared::Day:
    case Declared::Any:
        break;
    }
    return block.utf8Cell(col, text, size);
}

} // namespace kx
