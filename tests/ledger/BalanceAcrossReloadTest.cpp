// Running balances carried across closed months, saves and reloads: after
// every step each balance on screen, and each one stored, is the running sum
// from the opening row, sign included.
#include "QtPrinters.h"
#include "support/BookBuilder.h"
#include "support/TestDatabase.h"

#include <kxjournal/EditCycle.h>
#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QRandomGenerator>
#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

// A bank book with an opening balance of 1000 and three January records,
// direction as given ("" shows balances signed).
struct ReloadBook {
    ReloadBook(Engine engine, const QString &direction) : db(engine)
    {
        kx::Database conn = db.open();
        if (!kx::Schema::create(conn).ok())
            return;
        kxtest::BookBuilder b(conn);
        account = b.account(QStringLiteral("1122"), QStringLiteral("应收账款"));
        book = b.book(QStringLiteral("0201"), QStringLiteral("基本户"), direction);
        // Stored as the control stores them: a book with a direction keeps the size of its balances.
        const bool signedBook = direction.isEmpty();
        const auto rec = [&](int row, const char *date, const char *side, const char *amount, int balance) {
            b.record(book, row,
                     {{QStringLiteral("JnlDate"), QString::fromUtf8(date)},
                      {QStringLiteral("Explain"), QStringLiteral("记录%1").arg(row)},
                      {QStringLiteral("AccID"), account},
                      {QString::fromUtf8(side), QString::fromUtf8(amount)},
                      {QStringLiteral("balance"), signedBook ? balance : std::abs(balance)}});
        };
        rec(1, "2024-12-31", "Debit", "1000", 1000);
        rec(2, "2025-01-05", "Debit", "500", 1500);
        rec(3, "2025-01-10", "Credit", "2200", -700);
        rec(4, "2025-01-15", "Credit", "50", -750);
        acc = open();
        journal = control(acc.get());
    }

    std::unique_ptr<kx::SqlAccContext> open() const
    {
        auto a = std::make_unique<kx::SqlAccContext>(db.open());
        a->setBeginDate(QDate(2025, 1, 1));
        a->setPeriodStart(QDate(2025, 1, 1));
        a->setPeriodEnd(QDate(2025, 12, 31));
        return a;
    }

    std::unique_ptr<kx::Journal> control(kx::SqlAccContext *a)
    {
        auto j = std::make_unique<kx::Journal>();
        j->setAcc(a);
        j->setAsker([](const QString &, const QString &) { return true; });
        QObject::connect(j.get(), &kx::Journal::Notify, [this](const QString &m, bool) { said << m; });
        j->Load(book);
        return j;
    }

    int col(const char *key) const { return journal->Grid()->colIndex(QString::fromUtf8(key)); }

    bool type(int row, const char *key, const QString &text) const
    {
        kx::Sheet *g = kx::Sheet::of(journal->Grid());
        g->setCursor(row, col(key));
        return g->editCycle()->editCell(row, col(key), text);
    }

    kxtest::TestDatabase db;
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::Journal> journal;
    QStringList said;
    int account = 0, book = 0;
};

// Empty when every record and summary row of \a j shows the running sum from
// the opening row: signed in a book without a direction, its magnitude with
// the highlight exactly when the sign is the book's own otherwise.
QString wrongBalance(kx::Journal &j, bool signedBook, bool coloursKnown)
{
    kx::Sheet &g = *kx::Sheet::of(j.Grid());
    const int tag = g.colIndex(QStringLiteral("Tag"));
    const int date = g.colIndex(QStringLiteral("JnlDate"));
    const int balance = g.colIndex(QStringLiteral("Balance"));
    const int debit = g.colIndex(QStringLiteral("Debit"));
    const int credit = g.colIndex(QStringLiteral("Credit"));
    kx::Currency running;
    for (int r = g.fixedRows(); r < g.rows(); ++r) {
        if (g.isEmpty(r, date))
            continue;
        if (g.number(r, tag) >= 0)
            running += g.amount(r, debit) - g.amount(r, credit);
        const kx::Currency shown = g.amount(r, balance);
        if (signedBook ? shown != running : shown != (running.sign() < 0 ? -running : running))
            return QStringLiteral("row %1 shows %2, the running sum is %3").arg(r).arg(g.text(r, balance), running.toString());
        if (!signedBook && coloursKnown && g.cellForeColor(r, balance).isValid() != (running.sign() > 0))
            return QStringLiteral("row %1: the highlight does not follow the sign of %2").arg(r).arg(running.toString());
    }
    return {};
}

class BalanceAcrossReload : public ::testing::TestWithParam<Engine>
{
};

} // namespace

TEST_P(BalanceAcrossReload, ARecordBelowAClosedMonthCarriesTheBalanceAfterAReload)
{
    ReloadBook b(GetParam(), QStringLiteral("借"));
    ASSERT_TRUE(b.journal->CloseBook());
    ASSERT_TRUE(b.journal->Save());
    ASSERT_TRUE(b.journal->Load(b.book));
    kx::Sheet *g = kx::Sheet::of(b.journal->Grid());
    const int row = g->rows() - 1;  // the empty row under the 本月结余 row
    ASSERT_TRUE(b.type(row, "ShowName", QStringLiteral("2025-02-03"))) << qPrintable(b.said.join(QLatin1Char('\n')));
    ASSERT_TRUE(b.type(row, "Debit", QStringLiteral("100")));
    // 1000 + 500 − 2200 − 50 + 100: a credit balance of 650, shown as its size in a debit book.
    EXPECT_EQ(g->text(row, QStringLiteral("Balance")), QStringLiteral("650"));
    EXPECT_FALSE(g->cellForeColor(row, b.col("Balance")).isValid()) << "a credit balance is not the debit book's own";
    EXPECT_EQ(wrongBalance(*b.journal, false, false), QString());
    ASSERT_TRUE(b.journal->Save());

    auto acc = b.open();
    auto again = b.control(acc.get());
    EXPECT_EQ(again->Grid()->text(row, QStringLiteral("Balance")), QStringLiteral("650")) << "the stored balance";
}

TEST_P(BalanceAcrossReload, RandomClosesSavesReloadsAndEditsKeepEveryBalanceSigned)
{
    // KX_SEED repeats a run that failed.
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                                : QRandomGenerator::global()->generate() % 100000;
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    std::printf("seed %u\n", seed);
    QRandomGenerator rng(seed);
    ReloadBook b(GetParam(), QString());
    QDate day(2025, 1, 20);
    const int steps = GetParam() == Engine::Sqlite ? 300 : 120;
    for (int step = 0; step < steps; ++step) {
        kx::Sheet *g = kx::Sheet::of(b.journal->Grid());
        const int rows = g->rows();
        const int op = int(rng.bounded(8));
        const QString amount = QString::number(int(rng.bounded(1, 3000)));
        switch (op) {
        case 0: b.journal->CloseBook(); break;
        case 1: b.journal->Save(); break;
        case 2: b.journal->Load(b.book); break;
        case 3:
        case 4: {
            // A new record on the waiting empty row, a few days on.
            day = std::min(day.addDays(int(rng.bounded(0, 12))), QDate(2025, 12, 31));
            const int row = rows - 1;
            b.type(row, "ShowName", day.toString(Qt::ISODate));
            b.type(row, rng.bounded(2) ? "Debit" : "Credit", amount);
            break;
        }
        case 5:
            b.type(int(rng.bounded(g->fixedRows(), rows)), rng.bounded(2) ? "Debit" : "Credit", amount);
            break;
        case 6: b.journal->InsSumRow(int(rng.bounded(g->fixedRows(), rows))); break;
        default: b.journal->RemoveSumRow(int(rng.bounded(g->fixedRows(), rows))); break;
        }
        const QString why = wrongBalance(*b.journal, true, false);
        ASSERT_TRUE(why.isEmpty()) << qPrintable(why) << " after op " << op << " at step " << step;
        if (op == 1 && !b.journal->IsDirty()) {
            // What the save stored, read back by another control.
            auto acc = b.open();
            auto other = b.control(acc.get());
            const QString stored = wrongBalance(*other, true, false);
            ASSERT_TRUE(stored.isEmpty()) << "stored: " << qPrintable(stored) << " at step " << step;
        }
    }
}

TEST_P(BalanceAcrossReload, ADebitBookHighlightsExactlyItsOwnSide)
{
    ReloadBook b(GetParam(), QStringLiteral("借"));
    kx::Sheet *g = kx::Sheet::of(b.journal->Grid());
    ASSERT_TRUE(b.type(g->rows() - 1, "ShowName", QStringLiteral("2025-01-20")));
    ASSERT_TRUE(b.type(g->rows() - 2, "Debit", QStringLiteral("3000")));
    EXPECT_EQ(wrongBalance(*b.journal, false, true), QString());
    EXPECT_EQ(g->text(g->rows() - 2, QStringLiteral("Balance")), QStringLiteral("2250"));
}

INSTANTIATE_TEST_SUITE_P(Engines, BalanceAcrossReload, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });
