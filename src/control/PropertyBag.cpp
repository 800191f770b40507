#include "kxjournal/PropertyBag.h"

#include <QList>
#include <QPair>

namespace kx {

class PropertyBag::Private
{
public:
    QList<QPair<QString, QVariant>> items;  ///< in the order first written
};

PropertyBag::PropertyBag() : d(std::make_unique<Private>()) {}

PropertyBag::PropertyBag(const PropertyBag &other) : d(std::make_unique<Private>(*other.d)) {}

PropertyBag &PropertyBag::operator=(const PropertyBag &other)
{
    *d = *other.d;
    return *this;
}

PropertyBag::~PropertyBag() = default;

void PropertyBag::write(const QString &name, const QVariant &value)
{
    for (auto &item : d->items) {
        if (item.first == name) {
            item.second = value;
            return;
        }
    }
    d->items.append({name, value});
}

QVariant PropertyBag::read(const QString &name, const QVariant &defaultValue) const
{
    for (const auto &item : d->items)
        if (item.first == name)
            return item.second;
    return defaultValue;
}

bool PropertyBag::contains(const QString &name) const
{
    for (const auto &item : d->items)
        if (item.first == name)
            return true;
    return false;
}

void PropertyBag::remove(const QString &name)
{
    for (int i = 0; i < d->items.size(); ++i) {
        if (d->items.at(i).first == name) {
            d->items.removeAt(i);
            return;
        }
    }
}

QStringList PropertyBag::names() const
{
    QStringList out;
    for (const auto &item : d->items)
        out << item.first;
    return out;
}

} // namespace kx
