// Dates other programs store in their own forms are read as the day they
// mean, and nothing else is taken for a date.
#include "QtPrinters.h"

#include "ledger/StoredForms.h"

#include <gtest/gtest.h>

using kx::StoredForms;

TEST(StoredForms, DatesInOtherFormsReadAsTheirDayAndNothingElseDoes)
{
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral("2026-01-18 00:00:00")), QDate(2026, 1, 18));
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral("2026-01-18T09:30:00.000Z")), QDate(2026, 1, 18));
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral("2026-1-9")), QDate(2026, 1, 9));
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral("2026/01/18")), QDate(2026, 1, 18));
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral(" 2026.1.18 ")), QDate(2026, 1, 18));
    // Julian day numbers count from noon: the day 2026-01-18 is 2461059.
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral("2461059")), QDate(2026, 1, 18));
    EXPECT_EQ(StoredForms::dayOf(QStringLiteral("2461058.5")), QDate(2026, 1, 18));

    for (const char *nonsense : {"", "abc", "2026-02-30", "2026-13-01", "18/01/2026", "12", "1e300", "nan",
                                 "20260118", "2026-01-18x", "9999999999"})
        EXPECT_FALSE(StoredForms::dayOf(QString::fromUtf8(nonsense)).isValid()) << nonsense;
}
