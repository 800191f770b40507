#pragma once

#include "kxjournal/kxjournal_export.h"
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace kx {

/// The named values a container keeps for a control between sessions (its
/// design-time settings). Remembers the order in which values were written.
class KXJOURNAL_EXPORT PropertyBag
{
public:
    virtual ~PropertyBag() = default;

    /// Stores \a value under \a name (replacing an earlier value).
    virtual void write(const QString &name, const QVariant &value);
    /// The value stored under \a name, or \a defaultValue when there is none.
    virtual QVariant read(const QString &name, const QVariant &defaultValue) const;
    /// True when a value is stored under \a name.
    bool contains(const QString &name) const;
    /// Removes the value stored under \a name.
    void remove(const QString &name);
    /// The names stored, in the order they were first written.
    QStringList names() const;

private:
    QList<QPair<QString, QVariant>> m_items;
};

} // namespace kx
