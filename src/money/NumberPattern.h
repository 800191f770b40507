#pragma once

#include "kxjournal/Currency.h"

#include <QString>
#include <vector>

namespace kx {

/// A numeric display format such as "#,##0.00" or "¥#,##0.00;(#,##0.00);-",
/// parsed once and applied to amounts. Sections are positive;negative;zero.
class NumberPattern
{
public:
    /// Parses \a pattern; text outside the digit placeholders is kept literally
    /// ("..." quotes and \x escapes included).
    explicit NumberPattern(const QString &pattern);

    /// The amount in this format, rounded half away from zero to the
    /// pattern's decimals.
    QString apply(Currency value) const;

private:
    struct Section {
        QString prefix;
        QString suffix;
        bool hasDigits = false;
        bool grouping = false;
        int minInt = 0;
        int minDec = 0;
        int maxDec = 0;
    };
    static Section parseSection(const QString &text);
    static QString render(const Section &sec, Currency magnitude);

    std::vector<Section> m_sections;
};

} // namespace kx
