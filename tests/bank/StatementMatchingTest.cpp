// Automatic matching of a bank statement with the bank journal: side,
// amount and a window of days decide; a reference or a nearer day settles
// a choice; a choice that would be a guess is left to the cashier.
#include "bank/StatementMatcher.h"

#include <QHash>
#include <QRandomGenerator>
#include <gtest/gtest.h>
#include <iostream>

using kx::BankRecord;
using kx::StatementMatcher;
using kx::StatementSide;
using kx::StoredLine;

namespace {

constexpr StatementSide In = StatementSide::Receipt;
constexpr StatementSide Out = StatementSide::Payment;

StoredLine line(int id, const char *date, StatementSide side, const char *amount, const char *reference = "")
{
    StoredLine s;
    s.id = id;
    s.line.date = QDate::fromString(QString::fromLatin1(date), Qt::ISODate);
    s.line.side = side;
    s.line.amount = kx::Currency::fromText(QString::fromLatin1(amount)).value();
    s.line.reference = QString::fromLatin1(reference);
    return s;
}

BankRecord record(int id, const char *date, StatementSide side, const char *amount, const char *number = "")
{
    BankRecord r;
    r.recId = id;
    r.date = QDate::fromString(QString::fromLatin1(date), Qt::ISODate);
    r.side = side;
    r.amount = kx::Currency::fromText(QString::fromLatin1(amount)).value();
    r.number = QString::fromLatin1(number);
    return r;
}

using Pairs = QList<QPair<int, int>>;

Pairs sorted(Pairs pairs)
{
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

} // namespace

TEST(StatementMatching, SideAmountAndTheDayWindowDecide)
{
    const QList<StoredLine> lines{line(1, "2025-03-02", In, "100.00"), line(2, "2025-03-10", Out, "50.00"),
                                  line(3, "2025-03-20", In, "70.00"), line(4, "2025-03-21", In, "70.01")};
    const QList<BankRecord> records{record(11, "2025-03-05", In, "100.00"), record(12, "2025-03-10", In, "50.00"),
                                    record(13, "2025-03-25", In, "70.00"), record(14, "2025-03-21", In, "70.02")};
    StatementMatcher::Outcome found = StatementMatcher::match(lines, records);
    EXPECT_EQ(sorted(found.pairs), (Pairs{{1, 11}})) << "three days apart is inside, a payment is no receipt, "
                                                        "five days is outside, a cent decides";
    EXPECT_EQ(found.ambiguous, 0);
    found = StatementMatcher::match(lines, records, {}, {}, 5);
    EXPECT_EQ(sorted(found.pairs), (Pairs{{1, 11}, {3, 13}}));
}

TEST(StatementMatching, AGuessIsLeftAndAReferenceOrANearerDayIsNoGuess)
{
    const QList<BankRecord> twins{record(11, "2025-03-05", In, "200.00"), record(12, "2025-03-05", In, "200.00", "B778")};
    StatementMatcher::Outcome found = StatementMatcher::match({line(1, "2025-03-05", In, "200.00")}, twins);
    EXPECT_TRUE(found.pairs.isEmpty()) << "two records alike: which one the bank has is a guess";
    EXPECT_EQ(found.ambiguous, 1);

    found = StatementMatcher::match({line(1, "2025-03-05", In, "200.00", "B778")}, twins);
    EXPECT_EQ(found.pairs, (Pairs{{1, 12}})) << "the bank's reference is the record's number";
    EXPECT_EQ(found.ambiguous, 0);

    found = StatementMatcher::match({line(1, "2025-03-05", In, "200.00")},
                                    {record(11, "2025-03-07", In, "200.00"), record(12, "2025-03-04", In, "200.00")});
    EXPECT_EQ(found.pairs, (Pairs{{1, 12}})) << "the nearer day";

    // As many lines as records, all alike: every one is paired, each once.
    found = StatementMatcher::match({line(1, "2025-03-05", Out, "9.90"), line(2, "2025-03-05", Out, "9.90")},
                                    {record(11, "2025-03-05", Out, "9.90"), record(12, "2025-03-06", Out, "9.90")});
    ASSERT_EQ(found.pairs.size(), 2);
    EXPECT_NE(found.pairs[0].first, found.pairs[1].first);
    EXPECT_NE(found.pairs[0].second, found.pairs[1].second);

    // What the cashier matched by hand stays out of it.
    found = StatementMatcher::match({line(1, "2025-03-05", In, "200.00"), line(2, "2025-03-05", In, "200.00")}, twins,
                                    {2}, {11});
    EXPECT_EQ(found.pairs, (Pairs{{1, 12}}));
}

// A statement made of most of a book's records (the bank's day up to three
// days later, some references), with lines of the bank's own among them:
// every line made from a record goes back to that record, and no other
// line is matched. Amounts repeat, far enough apart in days to tell them
// apart. The seed is printed; KX_SEED repeats a run.
TEST(StatementMatching, RandomStatementsMatchBackToTheRecordsTheyWereMadeOf)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::global()->generate();
    std::cout << "seed " << seed << " (KX_SEED repeats it)\n";
    QRandomGenerator rng(seed);
    const QDate start(2025, 1, 1);
    QList<BankRecord> records;
    QList<StoredLine> lines;
    QHash<int, int> expected;  // line → record
    for (int i = 0; i < 3000; ++i) {
        BankRecord r;
        r.recId = 1000 + i;
        // Every tenth amount comes back 40 days later: the same figure, another day.
        const int cents = i % 10 == 9 ? 1000 + (i - 9) * 7 : 1000 + i * 7;
        r.date = start.addDays(i % 10 == 9 ? (i / 10) % 300 + 40 : (i / 10) % 300);
        r.side = rng.bounded(2) ? In : Out;
        r.amount = kx::Currency::fromRaw(qint64(cents) * 100);
        r.number = QString::number(i);
        records << r;
        if (rng.bounded(5) == 0)
            continue;  // the bank has not seen it yet
        StoredLine s;
        s.id = int(lines.size()) + 1;
        s.line.date = r.date.addDays(rng.bounded(4));
        s.line.side = r.side;
        s.line.amount = r.amount;
        if (rng.bounded(2))
            s.line.reference = r.number;
        lines << s;
        expected.insert(s.id, r.recId);
    }
    for (int i = 0; i < 200; ++i) {  // fees and interest the journal has not got
        StoredLine s;
        s.id = int(lines.size()) + 1;
        s.line.date = start.addDays(rng.bounded(300));
        s.line.side = rng.bounded(2) ? In : Out;
        s.line.amount = kx::Currency::fromRaw(qint64(rng.bounded(1, 999)) * 100);
        lines << s;
    }
    // Shuffled, as nothing promises the order of either list.
    for (int i = int(lines.size()) - 1; i > 0; --i)
        lines.swapItemsAt(i, int(rng.bounded(i + 1)));
    const StatementMatcher::Outcome found = StatementMatcher::match(lines, records);
    QHash<int, int> got;
    for (const auto &p : found.pairs) {
        EXPECT_FALSE(got.contains(p.first)) << "line " << p.first << " twice";
        got.insert(p.first, p.second);
    }
    EXPECT_EQ(got, expected);
    EXPECT_EQ(found.ambiguous, 0);
}

// Lines and records all alike that pair off whole are paired in the order of
// their days, so a month's end never parts a line from the record it stands
// for; a day window that forbids the order keeps the pairing found.
TEST(StatementMatching, ATieIsPairedInTheOrderOfItsDays)
{
    const StatementMatcher::Outcome found =
        StatementMatcher::match({line(1, "2025-01-30", In, "100.00"), line(2, "2025-02-01", In, "100.00")},
                                {record(11, "2025-01-31", In, "100.00"), record(12, "2025-02-02", In, "100.00")});
    EXPECT_EQ(sorted(found.pairs), (Pairs{{1, 11}, {2, 12}}));
}
