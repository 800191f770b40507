// The fetch reads the engine on one thread and types the values on another;
// whatever the mix of values and however many runs they span, the cells must
// say what the table holds, and an engine error half-way must come back as
// an error, not a short book.
#include "data/PgRowReader.h"
#include "data/RawRowQueue.h"
#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include <grid/CellArray.h>
#include <kxjournal/Currency.h>

#include <QRandomGenerator>
#include <gtest/gtest.h>
#include <thread>

using kxtest::Engine;

namespace {

struct Stored {
    QVariant number, amount, text;
};

} // namespace

TEST(RecordFetcher, EveryValueOfALongResultArrivesTypedAndInOrder)
{
    kxtest::TestDatabase testDb(Engine::Sqlite);
    kx::Database db = testDb.open();
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TABLE t (k INTEGER PRIMARY KEY, n INTEGER, a REAL, s TEXT)"), {}}).ok());
    static const char *const texts[] = {"现金", "007", "2026-01-05", "a\tb\nc", "12.50", "", "-0", "期初余额"};
    QRandomGenerator rng(11);
    std::vector<Stored> rows;
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("BEGIN"), {}}).ok());
    for (int k = 1; k <= 5000; ++k) {
        Stored row;
        if (rng.bounded(5) != 0)
            row.number = qint64(rng.bounded(2000000)) - 1000000;
        if (rng.bounded(4) != 0)
            row.amount = double(qint64(rng.bounded(100000000)) - 50000000) / 100.0;
        if (rng.bounded(3) != 0)
            row.text = QString::fromUtf8(texts[rng.bounded(int(std::size(texts)))]) + QString::number(k % 7);
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("INSERT INTO t VALUES (?,?,?,?)"),
                            {k, row.number, row.amount, row.text}})
                        .ok());
        rows.push_back(row);
    }
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("COMMIT"), {}}).ok());

    kx::Result<kx::FetchedRows> fetched = kx::RecordFetcher::fetch(
        db, {QStringLiteral("SELECT n, a, s FROM t ORDER BY k"), {}}, {QStringLiteral("a")}, 0, 2);
    ASSERT_TRUE(fetched.ok()) << fetched.error().toStdString();
    const kx::CellArray &cells = fetched.value().cells;
    ASSERT_EQ(cells.rows(), 5000);
    ASSERT_EQ(cells.cols(), 5);
    for (int r = 0; r < 5000; ++r) {
        const Stored &row = rows[std::size_t(r)];
        EXPECT_EQ(cells.text(r, 0), QString());
        EXPECT_EQ(cells.text(r, 2), row.number.isNull() ? QString() : QString::number(row.number.toLongLong())) << r;
        const QString amount =
            row.amount.isNull() ? QString() : kx::Currency::fromDouble(row.amount.toDouble()).value().toString();
        EXPECT_EQ(cells.text(r, 3), amount) << r;
        EXPECT_EQ(cells.text(r, 4), row.text.toString()) << r;
    }
}

TEST(RecordFetcher, AnEngineErrorAfterManyRowsIsAnErrorNotAShortResult)
{
    kxtest::TestDatabase testDb(Engine::Sqlite);
    kx::Database db = testDb.open();
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TABLE t (k INTEGER PRIMARY KEY)"), {}}).ok());
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c WHERE x<4000) "
                                       "INSERT INTO t SELECT x FROM c"),
                        {}})
                    .ok());
    // abs() of the smallest integer overflows while the rows are being read.
    const kx::Result<kx::FetchedRows> fetched = kx::RecordFetcher::fetch(
        db, {QStringLiteral("SELECT CASE WHEN k=3500 THEN abs(-9223372036854775807-1) ELSE k END FROM t ORDER BY k"), {}},
        {});
    ASSERT_FALSE(fetched.ok());
    EXPECT_TRUE(fetched.error().contains(QStringLiteral("overflow"))) << fetched.error().toStdString();

    // The connection is still usable afterwards.
    const kx::Result<kx::FetchedRows> again = kx::RecordFetcher::fetch(db, {QStringLiteral("SELECT k FROM t"), {}}, {});
    ASSERT_TRUE(again.ok());
    EXPECT_EQ(again.value().cells.rows(), 4000);
}

// A keeping thread that gives up half-way (out of memory while typing) must
// not leave the reader waiting on a full queue for ever.
TEST(RecordFetcher, AReaderIsReleasedWhenTheKeeperGivesUp)
{
    kx::RawRowQueue queue(2);
    int pushed = 0;
    std::thread reader([&] {
        while (!queue.cancelled()) {
            kx::RawRows raw = queue.take();
            raw.rows = 1;
            raw.types.push_back(1);
            queue.push(std::move(raw));
            ++pushed;
        }
        queue.close();
    });
    kx::RawRows got;
    ASSERT_TRUE(queue.pop(got));
    queue.recycle(std::move(got));
    queue.cancel();
    reader.join();
    EXPECT_GE(pushed, 1);
    EXPECT_TRUE(queue.cancelled());
}

// On PostgreSQL values travel as parameters: a question mark or a quote in a
// bound text, or in a literal of the statement, is data, never a placeholder.
TEST(RecordFetcher, PostgresBindsValuesAndLeavesQuotedQuestionMarksAlone)
{
    EXPECT_EQ(kx::PgRowReader::numberedPlaceholders(QStringLiteral("a=? and b='?''x?' and c=?")),
              QByteArray("a=$1 and b='?''x?' and c=$2"));
    kxtest::TestDatabase testDb(Engine::Postgres);
    kx::Database db = testDb.open();
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("CREATE TABLE t (k integer, s text, a numeric(19,4), d date)"), {}}).ok());
    const QString odd = QStringLiteral("它's ? 号; DROP TABLE t; --");
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("INSERT INTO t VALUES (1, ?, 12.5, '2026-01-05'), (2, 'x', NULL, NULL)"), {odd}})
                    .ok());
    const kx::Result<kx::FetchedRows> fetched = kx::RecordFetcher::fetch(
        db, {QStringLiteral("SELECT k, s, a, d, '?' AS q FROM t WHERE s=? OR k=? ORDER BY k"), {odd, 2}},
        {QStringLiteral("a")});
    ASSERT_TRUE(fetched.ok()) << fetched.error().toStdString();
    const kx::CellArray &cells = fetched.value().cells;
    ASSERT_EQ(cells.rows(), 2);
    EXPECT_EQ(cells.text(0, 1), odd);
    EXPECT_EQ(cells.text(0, 2), QStringLiteral("12.5"));
    EXPECT_EQ(cells.text(0, 3), QStringLiteral("2026-01-05"));
    EXPECT_EQ(cells.text(0, 4), QStringLiteral("?"));
    EXPECT_EQ(cells.text(1, 2), QString());
    EXPECT_EQ(cells.text(1, 3), QString());
}
