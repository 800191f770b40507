#pragma once

#include "data/SqlDialect.h"

namespace kx {

/// What the embedded and server dialects share and the ODBC ones do not:
/// LIMIT instead of TOP, and a plain DELETE FROM.
class LimitDialect : public SqlDialect
{
protected:
    QString selectTop(int n, const QString &body) const override;
    QString deleteRowsFrom() const override;
};

} // namespace kx
