#include "data/LimitDialect.h"

namespace kx {

QString LimitDialect::selectTop(int n, const QString &body) const
{
    return QStringLiteral("Select ") + body + QStringLiteral(" Limit %1").arg(n);
}

QString LimitDialect::deleteRowsFrom() const
{
    return QStringLiteral("Delete From ");
}

} // namespace kx
