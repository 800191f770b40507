#pragma once

#include "kxjournal/Currency.h"
#include "kxjournal/Result.h"

#include <QStringView>

namespace kx {

/// Evaluates what a bookkeeper types into an amount cell: numbers, + − × ÷
/// (also * and /), unary minus and parentheses. Arithmetic is exact (whole
/// fractions, no binary floating point: "0.1+0.2" is 0.3), and the result is
/// rounded to two places with a half going to the even neighbour ("10/3" is
/// 3.33, "1/8" is 0.12). Empty text is 0. Anything else — letters, a
/// dangling operator, division by zero, numbers too large — is an error.
class FormulaEvaluator
{
public:
    /// The value of \a text, rounded to \a decimals places (0 to 4).
    static Result<Currency> evaluate(QStringView text, int decimals = 2);
};

} // namespace kx
