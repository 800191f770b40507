#pragma once

#include "editing/EditRule.h"

#include <QDate>

namespace kx {

/// The visible date column: a date typed in any form DateEntry reads,
/// checked against the dates the row may take (and, on a row without a day
/// yet, against the balances its figures would move), then written to the
/// row as its date value and its label.
class DateRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    bool validate(EditContext &ctx, int row, int col, QString &text) override;
    void afterEdit(EditContext &ctx, int row, int col) override;

    /// The first date row \a row may take: the first day of the month after
    /// the nearest summary row above it, else 2000-01-01.
    static QDate firstAllowed(const EditContext &ctx, int row);
    /// The last date a row may take: the year end of the context's period
    /// (no bound when the context gives none).
    static QDate lastAllowed(const EditContext &ctx);
    /// The date short forms are read against: the current period's start,
    /// else the row's own date, else the nearest dated row above, else today.
    static QDate reference(const EditContext &ctx, int row);
    /// Writes \a date into \a row as its date and its label.
    static void setRowDate(EditContext &ctx, int row, const QDate &date);

private:
    // Gives a new record its 单据号 once it is dated (unless the host turned
    // numbering off): the one after the nearest number above.
    static void numberNewRecord(EditContext &ctx, int row);
};

} // namespace kx
