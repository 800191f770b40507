#pragma once

#include "kxjournal/PropertyBag.h"
#include "kxjournal/kxjournal_export.h"

#include <QString>
#include <memory>

class QSettings;

namespace kx {

class Journal;

/// Keeps a control's persisted properties in a QSettings group, as values a
/// person can read and edit: colours as names ("#rrggbb", "#aarrggbb" when
/// not opaque), fonts as QFont::toString(), numbers as numbers, switches as
/// true/false, texts as texts — never as binary blobs. Only values that
/// differ from the defaults are written; a value set back to its default is
/// removed from the group, so the file holds what the host or the user chose.
///
/// \code
/// QSettings settings(path, QSettings::IniFormat);
/// kx::SettingsPropertyBag(settings, QStringLiteral("journal")).saveJournal(journal);
/// // next session
/// kx::SettingsPropertyBag(settings, QStringLiteral("journal")).loadJournal(journal);
/// \endcode
class KXJOURNAL_EXPORT SettingsPropertyBag
{
public:
    /// Works on group \a group of \a settings (not owned; it must outlive this).
    SettingsPropertyBag(QSettings &settings, const QString &group);
    /// Leaves the settings as written (QSettings writes them out itself).
    ~SettingsPropertyBag();
    /// Not copied: it stands for one group of one settings object.
    SettingsPropertyBag(const SettingsPropertyBag &) = delete;
    /// Not copied.
    SettingsPropertyBag &operator=(const SettingsPropertyBag &) = delete;

    /// Writes each value of \a bag that differs from the value of the same
    /// name in \a defaults, in readable form; removes from the group the names
    /// of \a bag whose values equal their defaults.
    void save(const PropertyBag &bag, const PropertyBag &defaults = PropertyBag()) const;
    /// Reads the group back. A name that \a defaults holds is read as the
    /// type of its default (a colour, a font, a number, a switch); the others
    /// as texts. A value that does not read as its type is left out.
    PropertyBag load(const PropertyBag &defaults = PropertyBag()) const;

    /// Writes \a journal's persisted properties (Journal::WriteProperties)
    /// that differ from those of a control just made.
    void saveJournal(const Journal &journal) const;
    /// Reads what saveJournal wrote into \a journal (Journal::ReadProperties);
    /// names not in the group keep their present values.
    void loadJournal(Journal &journal) const;

    /// \a value as it is written: a colour's name, a font's description,
    /// a number or a text.
    static QVariant readable(const QVariant &value);

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace kx
