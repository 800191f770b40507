#pragma once

#include "data/LimitDialect.h"

namespace kx {

/// The dialect of the embedded SQLite database: strftime() for dates, LIMIT instead of TOP, substr() instead of Left().
class SqliteDialect : public LimitDialect
{
public:
    Kind kind() const override;
    /// 15: a whole amount is kept as an integer, any other as a double,
    /// which gives back 15 significant digits exactly.
    int exactDigits() const override;

protected:
    QString leftOf(const QString &column, int length) const override;
    QString dateLabelExpression() const override;
    QString voucherLabelExpression() const override;
};

} // namespace kx
