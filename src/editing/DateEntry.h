#pragma once

#include <QDate>
#include <QStringView>

namespace kx {

/// Reads a date as a bookkeeper types it into the date cell. Accepted:
/// "2026-11-05" (also with "/" or "." between, months and days with or
/// without a leading zero, or "2026年11月5日"), "20261105", "11-5" or "11月5日"
/// (the year of \a reference), "1105" (month and day, the year of
/// \a reference) and "5" or "05" (that day of \a reference's month). Anything
/// else, or a day the calendar does not have, gives an invalid date.
class DateEntry
{
public:
    /// The day \a text names, read against \a reference (the current period).
    static QDate parse(QStringView text, const QDate &reference);
};

} // namespace kx
