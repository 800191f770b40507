#pragma once

#include "data/SqlDialect.h"

namespace kx {

/// The dialect of an ODBC connection to a database server (SQL Server): dates built with CONVERT, strings joined with +.
class ServerDialect : public SqlDialect
{
public:
    Kind kind() const override;
    QString insertOutput() const override;
    QString insertReturning() const override;

protected:
    QString loadSelect() const override;
    QString dateLabelExpression() const override;
    QString voucherLabelExpression() const override;
};

} // namespace kx
