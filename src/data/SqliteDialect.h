#pragma once

#include "data/LimitDialect.h"

namespace kx {

/// The dialect of the embedded SQLite database: strftime() for dates, LIMIT instead of TOP, substr() instead of Left().
class SqliteDialect : public LimitDialect
{
public:
    Kind kind() const override;

protected:
    QString leftOf(const QString &column, int length) const override;
    QString dateLabelExpression() const override;
    QString voucherLabelExpression() const override;
};

} // namespace kx
