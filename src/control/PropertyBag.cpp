#include "kxjournal/PropertyBag.h"

namespace kx {

void PropertyBag::write(const QString &name, const QVariant &value)
{
    for (auto &item : m_items) {
        if (item.first == name) {
            item.second = value;
            return;
        }
    }
    m_items.append({name, value});
}

QVariant PropertyBag::read(const QString &name, const QVariant &defaultValue) const
{
    for (const auto &item : m_items)
        if (item.first == name)
            return item.second;
    return defaultValue;
}

bool PropertyBag::contains(const QString &name) const
{
    for (const auto &item : m_items)
        if (item.first == name)
            return true;
    return false;
}

void PropertyBag::remove(const QString &name)
{
    for (int i = 0; i < m_items.size(); ++i) {
        if (m_items.at(i).first == name) {
            m_items.removeAt(i);
            return;
        }
    }
}

QStringList PropertyBag::names() const
{
    QStringList out;
    for (const auto &item : m_items)
        out << item.first;
    return out;
}

} // namespace kx
