// A record reads as the same cells whichever engine stored it: amounts,
// days, ids and texts, NULLs and empty texts, big and odd figures.
#include "QtPrinters.h"
#include "data/FetchedCell.h"
#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "grid/CellArrayData.h"
#include "ledger/BookLoader.h"
#include "support/TestDatabase.h"

#include <grid/CellArray.h>
#include <kxjournal/Database.h>
#include <kxjournal/Schema.h>

#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

const QStringList fields = {QStringLiteral("JnlDate"), QStringLiteral("AccID"),  QStringLiteral("Explain"),
                            QStringLiteral("Debit"),   QStringLiteral("Credit"), QStringLiteral("Rate"),
                            QStringLiteral("Forex"),   QStringLiteral("Balance"), QStringLiteral("JnlNo")};

// Each record's values as a program would bind them: amounts and days as
// text, ids as numbers, NULL as an invalid value.
QList<QVariantList> records()
{
    const QVariant null;
    return {
        {QStringLiteral("2025-01-05"), 3, QStringLiteral("收到货款"), QStringLiteral("1234.5678"), null,
         QStringLiteral("6.8"), QStringLiteral("8395.0"), QStringLiteral("-0.0001"), QStringLiteral("记-1")},
        {QStringLiteral("2024-12-31"), 0, QStringLiteral(""), QStringLiteral("0"), QStringLiteral("-98765432109.8765"),
         QStringLiteral("0.125"), QStringLiteral("0"), QStringLiteral("99999999999.9999"), null},
        {null, 7, QStringLiteral("中文，全角；English"), QStringLiteral("100000000000000"), QStringLiteral("-0.5"),
         QStringLiteral("1.000001"), null, QStringLiteral("-12"), QStringLiteral("")},
        {QStringLiteral("2025-02-28"), 2147483647, QStringLiteral("  带空格  "), QStringLiteral("0.0001"),
         QStringLiteral("99999999999999"), QStringLiteral("0.123456"), QStringLiteral("1"), QStringLiteral("12.34"),
         QStringLiteral("0001")},
    };
}

// A cell as comparable text: its kind and value, a text by its characters.
QString describe(kx::CellArray &cells, int row, int col)
{
    const kx::Cell cell = cells.data().at(row, col);
    if (cell.kind() == kx::Cell::Text)
        return QStringLiteral("text:") + cells.text(row, col);
    return QStringLiteral("%1:%2").arg(int(cell.kind())).arg(cell.payload());
}

QList<QStringList> readBack(Engine engine)
{
    kxtest::TestDatabase testDb(engine);
    kx::Database db = testDb.open();
    EXPECT_TRUE(kx::Schema::create(db).ok());
    int row = 0;
    for (const QVariantList &values : records()) {
        QVariantList binds{++row};
        binds << values;
        const kx::Result<void> put = kx::sqlRun(
            db, {QStringLiteral("INSERT INTO kxJournalRecs (DocID, Row, %1) VALUES (1, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
                     .arg(fields.join(QStringLiteral(", "))),
                 binds});
        EXPECT_TRUE(put.ok()) << put.error().toStdString();
    }
    kx::Result<kx::FetchedRows> fetched = kx::RecordFetcher::fetch(
        db, {QStringLiteral("SELECT %1 FROM kxJournalRecs WHERE DocID = 1 ORDER BY Row").arg(fields.join(QStringLiteral(", "))), {}},
        kx::BookLoader::amountFields());
    EXPECT_TRUE(fetched.ok()) << fetched.error().toStdString();
    QList<QStringList> out;
    if (!fetched.ok())
        return out;
    kx::CellArray cells = fetched.takeValue().cells;
    for (int r = 0; r < cells.rows(); ++r) {
        QStringList line;
        for (int c = 0; c < cells.cols(); ++c)
            line << describe(cells, r, c);
        out << line;
    }
    return out;
}

} // namespace

TEST(FetchedCell, TheSameRecordReadsAsTheSameCellsOnEveryEngine)
{
    const QList<QStringList> sqlite = readBack(Engine::Sqlite);
    const QList<QStringList> postgres = readBack(Engine::Postgres);
    ASSERT_EQ(sqlite.size(), 4);
    ASSERT_EQ(postgres.size(), 4);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < fields.size(); ++c)
            EXPECT_EQ(sqlite.at(r).at(c), postgres.at(r).at(c)) << "record " << r + 1 << " " << fields.at(c).toStdString();

    // And the cells are the right ones, not merely alike.
    const QString amount = QString::number(int(kx::Cell::Amount)) + QLatin1Char(':');
    const QString number = QString::number(int(kx::Cell::Number)) + QLatin1Char(':');
    const QString day = QString::number(int(kx::Cell::Day)) + QLatin1Char(':');
    EXPECT_EQ(sqlite.at(0).at(0), day + QString::number(QDate(2025, 1, 5).toJulianDay()));
    EXPECT_EQ(sqlite.at(0).at(3), amount + QStringLiteral("12345678"));
    EXPECT_EQ(sqlite.at(0).at(6), number + QStringLiteral("8395")) << "a whole amount is the whole number";
    EXPECT_EQ(sqlite.at(0).at(7), amount + QStringLiteral("-1"));
    EXPECT_EQ(sqlite.at(1).at(2), QStringLiteral("0:0")) << "an empty text is an empty cell";
    EXPECT_EQ(sqlite.at(1).at(4), amount + QStringLiteral("-987654321098765"));
    EXPECT_EQ(sqlite.at(1).at(7), amount + QStringLiteral("999999999999999"));
    EXPECT_EQ(sqlite.at(2).at(0), QStringLiteral("0:0"));
    EXPECT_EQ(sqlite.at(2).at(2), QStringLiteral("text:中文，全角；English"));
    EXPECT_EQ(sqlite.at(2).at(3), number + QStringLiteral("100000000000000"));
    EXPECT_EQ(sqlite.at(2).at(5), QStringLiteral("text:1.000001")) << "a rate money cannot hold keeps its digits";
    EXPECT_EQ(sqlite.at(3).at(5), QStringLiteral("text:0.123456"));
    EXPECT_EQ(sqlite.at(3).at(1), number + QStringLiteral("2147483647"));
    EXPECT_EQ(sqlite.at(3).at(2), QStringLiteral("text:  带空格  "));
    EXPECT_EQ(sqlite.at(3).at(8), QStringLiteral("text:0001"));
}

TEST(FetchedCell, EachDeclaredTypeTakesWhatEnginesHandOut)
{
    using Declared = kx::FetchedCell::Declared;
    using Raw = kx::FetchedCell::Raw;
    kx::CellArray cells(1, 1);
    kx::CellArrayData &block = cells.data();
    const auto text = [&](Declared d, const char *bytes) {
        const kx::Cell cell = kx::FetchedCell::of(block, 0, d, Raw::text(bytes, int(qstrlen(bytes))));
        block.put(0, 0, cell);
        return cells.text(0, 0);
    };
    const auto real = [&](Declared d, double v) {
        block.put(0, 0, kx::FetchedCell::of(block, 0, d, Raw::decimal(v)));
        return cells.text(0, 0);
    };
    // The same figure as a double and as text gives the same cell.
    EXPECT_EQ(real(Declared::Amount, 1234.5678), text(Declared::Amount, "1234.5678"));
    EXPECT_EQ(real(Declared::Amount, 0.123456), text(Declared::Amount, "0.123456"));
    EXPECT_EQ(real(Declared::Decimal, 0.123456), text(Declared::Decimal, "0.123456"));
    EXPECT_EQ(real(Declared::Decimal, 6.8), text(Declared::Decimal, "6.800000"));
    EXPECT_EQ(real(Declared::Any, 1e300), QStringLiteral("1e+300")) << "a number past money is not read as 0";
    EXPECT_EQ(text(Declared::Amount, "NaN"), QStringLiteral("NaN")) << "what is no amount stays its text";
    EXPECT_EQ(text(Declared::Integer, "42"), QStringLiteral("42"));
    EXPECT_EQ(text(Declared::Integer, "4x"), QStringLiteral("4x"));
    EXPECT_EQ(text(Declared::Moment, "2025-01-05 10:30:00"), QStringLiteral("2025-01-05"));
    EXPECT_EQ(text(Declared::Flag, "t"), QStringLiteral("true"));
    EXPECT_EQ(text(Declared::Day, "2025/1/5"), QStringLiteral("2025/1/5")) << "a day in another form is left as stored";
    block.put(0, 0, kx::FetchedCell::of(block, 0, Declared::Amount, Raw::null()));
    EXPECT_EQ(cells.text(0, 0), QString());
}
