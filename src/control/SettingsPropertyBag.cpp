#include "kxjournal/SettingsPropertyBag.h"

#include "kxjournal/Journal.h"

#include <QColor>
#include <QFont>
#include <QSettings>

namespace kx {

class SettingsPropertyBag::Private
{
public:
    QSettings &settings;
    QString group;
};

namespace {

// The values of a control just made: what needs no line in the file.
PropertyBag journalDefaults()
{
    PropertyBag defaults;
    const Journal fresh;
    fresh.WriteProperties(defaults);
    return defaults;
}

// \a text read as the type of \a like; invalid when it does not read so.
QVariant typedLike(const QString &text, const QVariant &like)
{
    switch (like.typeId()) {
    case QMetaType::QColor: {
        // Empty: no colour chosen, which is not black.
        const QColor c = QColor::fromString(text);
        return c.isValid() || text.isEmpty() ? QVariant(c) : QVariant();
    }
    case QMetaType::QFont: {
        QFont f;
        return f.fromString(text) ? QVariant(f) : QVariant();
    }
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt: {
        bool ok = false;
        const qlonglong n = text.toLongLong(&ok);
        return ok ? QVariant(like.typeId() == QMetaType::Int ? QVariant(int(n)) : QVariant(n)) : QVariant();
    }
    case QMetaType::Double: {
        bool ok = false;
        const double n = text.toDouble(&ok);
        return ok ? QVariant(n) : QVariant();
    }
    case QMetaType::Bool:
        if (text == QLatin1String("true") || text == QLatin1String("1"))
            return true;
        if (text == QLatin1String("false") || text == QLatin1String("0"))
            return false;
        return {};
    default:
        return text;
    }
}

} // namespace

SettingsPropertyBag::SettingsPropertyBag(QSettings &settings, const QString &group)
    : d(std::make_unique<Private>(Private{settings, group}))
{
}

SettingsPropertyBag::~SettingsPropertyBag() = default;

QVariant SettingsPropertyBag::readable(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QColor: {
        const QColor c = value.value<QColor>();
        if (!c.isValid())
            return QString();
        return c.alpha() == 255 ? c.name(QColor::HexRgb) : c.name(QColor::HexArgb);
    }
    case QMetaType::QFont:
        return value.value<QFont>().toString();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Bool:
    case QMetaType::QString:
        return value;
    default:
        return value.toString();
    }
}

void SettingsPropertyBag::save(const PropertyBag &bag, const PropertyBag &defaults) const
{
    d->settings.beginGroup(d->group);
    for (const QString &name : bag.names()) {
        const QVariant value = readable(bag.read(name, QVariant()));
        const bool isDefault = defaults.contains(name) && readable(defaults.read(name, QVariant())) == value;
        if (isDefault)
            d->settings.remove(name);
        else
            d->settings.setValue(name, value);
    }
    d->settings.endGroup();
}

PropertyBag SettingsPropertyBag::load(const PropertyBag &defaults) const
{
    PropertyBag bag;
    d->settings.beginGroup(d->group);
    for (const QString &name : d->settings.childKeys()) {
        const QString text = d->settings.value(name).toString();
        const QVariant value = defaults.contains(name) ? typedLike(text, defaults.read(name, QVariant())) : QVariant(text);
        if (value.isValid())
            bag.write(name, value);
    }
    d->settings.endGroup();
    return bag;
}

void SettingsPropertyBag::saveJournal(const Journal &journal) const
{
    PropertyBag bag;
    journal.WriteProperties(bag);
    save(bag, journalDefaults());
}

void SettingsPropertyBag::loadJournal(Journal &journal) const
{
    journal.ReadProperties(load(journalDefaults()));
}

} // namespace kx
