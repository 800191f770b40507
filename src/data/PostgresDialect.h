#pragma once

#include "data/LimitDialect.h"

namespace kx {

/// The dialect of a PostgreSQL server: to_char() for dates, LIMIT instead of TOP, and quoted result names so the grid gets its keys in their own case.
class PostgresDialect : public LimitDialect
{
public:
    Kind kind() const override;

protected:
    QString leftOf(const QString &column, int length) const override;
    QString dateLabelExpression() const override;
    QString isoDateExpression() const override;
    QString voucherLabelExpression() const override;
    QString resultName(const QString &key) const override;
    QString nameColumn(const QString &key) const override;
};

} // namespace kx
