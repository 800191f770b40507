#include "data/DesktopDialect.h"

namespace kx {

SqlDialect::Kind DesktopDialect::kind() const
{
    return Desktop;
}

QString DesktopDialect::dateLabelExpression() const
{
    return QStringLiteral("Format(jr.JnlDate,'yyyy年MM月dd日')");
}

QString DesktopDialect::voucherLabelExpression() const
{
    return QStringLiteral("Format(d.DocDate,'MM-dd') & d.DocType & ' ' & d.DocNo");
}

QString DesktopDialect::insertReturning() const
{
    return {};
}

SqlStatement DesktopDialect::lastInsertedKey() const
{
    return {QStringLiteral("Select @@IDENTITY"), {}};
}

} // namespace kx
