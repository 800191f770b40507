#pragma once

#include "kxjournal/kxjournal_export.h"
#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>

namespace kx {

/// The named values a container keeps for a control between sessions (its
/// design-time settings). Remembers the order in which values were written.
/// A host that keeps the values in a store of its own overrides all five
/// virtual members.
class KXJOURNAL_EXPORT PropertyBag
{
public:
    /// An empty bag.
    PropertyBag();
    /// A bag holding what \a other holds, in its order.
    PropertyBag(const PropertyBag &other);
    /// Makes this bag hold what \a other holds, in its order.
    PropertyBag &operator=(const PropertyBag &other);
    /// Destroys the bag.
    virtual ~PropertyBag();

    /// Stores \a value under \a name (replacing an earlier value).
    virtual void write(const QString &name, const QVariant &value);
    /// The value stored under \a name, or \a defaultValue when there is none.
    virtual QVariant read(const QString &name, const QVariant &defaultValue) const;
    /// True when a value is stored under \a name.
    virtual bool contains(const QString &name) const;
    /// Removes the value stored under \a name.
    virtual void remove(const QString &name);
    /// The names stored, in the order they were first written.
    virtual QStringList names() const;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace kx
