// The forms a bookkeeper types a date in, read against the current period;
// anything else, including days the calendar lacks, is no date.
#include "QtPrinters.h"

#include "editing/DateEntry.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

using kx::DateEntry;

TEST(DateEntry, TheFormsPeopleTypeReadAsTheirDay)
{
    const QDate period(2026, 11, 23);
    const QDate day(2026, 11, 5);
    for (const char *typed : {"2026-11-05", "2026-11-5", "2026/11/05", "2026.11.5", "20261105", "2026年11月5日",
                              "11-5", "11/05", "11.5", "11月5日", "1105", "5", "05", " 05 "})
        EXPECT_EQ(DateEntry::parse(QString::fromUtf8(typed), period), day) << typed;
    EXPECT_EQ(DateEntry::parse(u"0229", QDate(2028, 3, 1)), QDate(2028, 2, 29));

    for (const char *nonsense : {"", "0", "32", "1305", "0229", "2026-02-30", "2026-11", "2026-11-5-1", "11-5/2026",
                                 "2026/11-05", "11--5", "-11-5", "11-5-", "105", "202611051", "abc", "11月",
                                 "五日", "２０２６-11-05", "2026-011-05", "99999-1-1"})
        EXPECT_FALSE(DateEntry::parse(QString::fromUtf8(nonsense), period).isValid()) << nonsense;
    EXPECT_FALSE(DateEntry::parse(u"1105", QDate()).isValid()) << "no period, no year to read it in";
}

TEST(DateEntry, AnyInputGivesADayOrNothingNeverACrash)
{
    QRandomGenerator rng(9);
    const QString alphabet = QStringLiteral("0123456789-/.年月日 x");
    const QDate period(2026, 11, 23);
    int days = 0;
    for (int i = 0; i < 200000; ++i) {
        QString text;
        const int length = int(rng.bounded(14));
        for (int k = 0; k < length; ++k)
            text += alphabet.at(int(rng.bounded(int(alphabet.size()))));
        const QDate d = DateEntry::parse(text, period);
        if (d.isValid()) {
            ++days;
            // A day read once reads the same from its own ISO form.
            ASSERT_EQ(DateEntry::parse(d.toString(Qt::ISODate), period), d) << text.toStdString();
        }
    }
    EXPECT_GT(days, 1000);
}
