#include "data/PostgresDialect.h"

namespace kx {

SqlDialect::Kind PostgresDialect::kind() const
{
    return Postgres;
}

QString PostgresDialect::leftOf(const QString &column, int length) const
{
    return QStringLiteral("Left(%1,%2)").arg(column).arg(length);
}

QString PostgresDialect::dateLabelExpression() const
{
    return QStringLiteral("to_char(jr.JnlDate,'YYYY\"年\"MM\"月\"DD\"日\"')");
}

QString PostgresDialect::isoDateExpression() const
{
    return QStringLiteral("to_char(jr.JnlDate,'YYYY-MM-DD')");
}

QString PostgresDialect::voucherLabelExpression() const
{
    return QStringLiteral("to_char(d.DocDate,'MM-DD') || d.DocType || ' ' || d.DocNo");
}

// PostgreSQL folds unquoted names to lower case; quoted names give the grid
// its column keys as the journal spells them.
QString PostgresDialect::resultName(const QString &key) const
{
    return QLatin1Char('"') + key + QLatin1Char('"');
}

QString PostgresDialect::nameColumn(const QString &key) const
{
    return QStringLiteral(" AS ") + resultName(key);
}

} // namespace kx
