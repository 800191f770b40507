#include "ledger/StoredForms.h"

#include "grid/Sheet.h"
#include "ledger/JournalColumns.h"

#include <QRegularExpression>
#include <cmath>

namespace kx {

using C = JournalColumns;

QDate StoredForms::dayOf(const QString &text)
{
    const QString t = text.trimmed();
    // A date with a time of day, or with one-digit months and days, or slashes.
    static const QRegularExpression dated(QStringLiteral("^(\\d{4})[-/.](\\d{1,2})[-/.](\\d{1,2})(?:[ T].*)?$"));
    const QRegularExpressionMatch m = dated.match(t);
    if (m.hasMatch())
        return QDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    // A Julian day number, as some tools store dates (days from 4713 BC,
    // noon to noon): only years 1 to 9999 count.
    bool ok = false;
    const double jd = t.toDouble(&ok);
    if (ok && jd >= 1721425.5 && jd < 5373484.5)
        return QDate::fromJulianDay(qint64(std::floor(jd + 0.5)));
    return {};
}

void StoredForms::readDate(Sheet &grid, const JournalColumns &columns, int row)
{
    const int col = columns[C::JnlDate];
    if (col < 0 || grid.isEmpty(row, col) || grid.date(row, col).isValid())
        return;
    const QDate day = dayOf(grid.text(row, col));
    if (day.isValid())
        grid.setDate(row, col, day);
}

bool StoredForms::unreadable(const Sheet &grid, const JournalColumns &columns, int r)
{
    const int date = columns[C::JnlDate];
    if (date >= 0 && !grid.isEmpty(r, date) && !grid.date(r, date).isValid())
        return true;
    for (C::Column c : {C::Debit, C::Credit, C::Rate, C::Forex, C::Balance, C::fxBalance}) {
        const int col = columns[c];
        if (col >= 0 && !grid.holdsAmount(r, col))
            return true;
    }
    return false;
}

} // namespace kx
