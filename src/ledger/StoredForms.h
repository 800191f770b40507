#pragma once

#include <QDate>
#include <QString>

namespace kx {

class Sheet;
class JournalColumns;

/// Values other programs stored in forms the journal does not write itself.
/// Dates it can read are read as days (and written back in its own form
/// when their row is saved); a row holding a value it cannot hold is left
/// alone, never written back.
class StoredForms
{
public:
    /// Reads the record date of \a row of \a grid (columns at \a columns)
    /// when it is stored in another form: a time of day after it, unpadded
    /// month or day, slashes, a Julian day number.
    static void readDate(Sheet &grid, const JournalColumns &columns, int row);
    /// True when \a row holds a date that cannot be read or an amount money
    /// cannot hold.
    static bool unreadable(const Sheet &grid, const JournalColumns &columns, int row);
    /// The day \a text stands for in any of the forms readDate() knows
    /// (invalid when none).
    static QDate dayOf(const QString &text);
};

} // namespace kx
