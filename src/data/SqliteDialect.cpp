#include "data/SqliteDialect.h"

namespace kx {

SqlDialect::Kind SqliteDialect::kind() const
{
    return Sqlite;
}

int SqliteDialect::exactDigits() const
{
    return 15;
}

QString SqliteDialect::leftOf(const QString &column, int length) const
{
    return QStringLiteral("substr(%1,1,%2)").arg(column).arg(length);
}

QString SqliteDialect::dateLabelExpression() const
{
    return QStringLiteral("strftime('%Y年%m月%d日',jr.JnlDate)");
}

QString SqliteDialect::voucherLabelExpression() const
{
    return QStringLiteral("strftime('%m-%d',d.DocDate) || d.DocType || ' ' || d.DocNo");
}

} // namespace kx
