#pragma once

#include "kxjournal/SqlDialect.h"

namespace kx {

/// The dialect of the embedded SQLite database: strftime() for dates, LIMIT instead of TOP, substr() instead of Left().
class SqliteDialect : public SqlDialect
{
public:
    Kind kind() const override;

protected:
    QString selectTop(int n, const QString &body) const override;
    QString leftOf(const QString &column, int length) const override;
    QString deleteRowsFrom() const override;
    QString loadSelect() const override;
};

} // namespace kx
