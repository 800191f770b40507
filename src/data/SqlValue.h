#pragma once

#include "kxjournal/Currency.h"

#include <QString>
#include <QVariant>

namespace kx {

/// Values as the engines hand them back, turned into the journal's forms:
/// the same text whichever engine stored them.
class SqlValue
{
public:
    /// Cell text: empty for NULL, dates as yyyy-MM-dd, doubles in their
    /// shortest form at four decimals; texts as they are (a fixed-point number
    /// that comes back as text is an amount: read it with amount()).
    static QString text(const QVariant &value);
    /// An amount: zero for NULL or empty; numbers read exactly as far as the
    /// engine kept them.
    static Currency amount(const QVariant &value);
    /// An amount as a value to bind: its plain text, which every engine
    /// converts to its numeric type without passing through a double.
    static QVariant bindAmount(Currency value) { return value.toString(); }
};

} // namespace kx
