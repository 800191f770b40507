#pragma once

#include "data/SqlDialect.h"

namespace kx {

/// The dialect of an ODBC connection to a desktop database (Access): Format() for dates, strings joined with &.
class DesktopDialect : public SqlDialect
{
public:
    Kind kind() const override;
    QString insertReturning() const override;
    SqlStatement lastInsertedKey() const override;

protected:
    QString dateLabelExpression() const override;
    QString voucherLabelExpression() const override;
};

} // namespace kx
