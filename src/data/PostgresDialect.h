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
    QString loadSelect() const override;
};

} // namespace kx
