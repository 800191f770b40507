#include "data/SqlValue.h"

#include <QDate>
#include <QDateTime>

namespace kx {

QString SqlValue::text(const QVariant &value)
{
    if (value.isNull())
        return {};
    switch (value.typeId()) {
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().date().toString(Qt::ISODate);
    case QMetaType::Double:
    case QMetaType::Float:
        return Currency::fromDouble(value.toDouble()).valueOr(Currency()).toString();
    default:
        return value.toString();
    }
}

Currency SqlValue::amount(const QVariant &value)
{
    if (value.isNull())
        return {};
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return Currency::fromUnits(value.toLongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return Currency::fromDouble(value.toDouble()).valueOr(Currency());
    default:
        return Currency::fromText(value.toString()).valueOr(Currency());
    }
}

} // namespace kx
