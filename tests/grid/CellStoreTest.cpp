// The typed store must be invisible: whatever text goes in comes out, and
// the typed reads agree with what the text says.
#include "grid/CellStore.h"
#include "grid/TextPool.h"
#include "grid/ColumnReader.h"

#include <grid/CellArray.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <gtest/gtest.h>
#include <iostream>

using kx::Cell;
using kx::CellStore;
using kx::Currency;
using kx::Sheet;

namespace {

// Texts near every edge of the typed forms, and plain ones.
QString randomText(QRandomGenerator &rng)
{
    static const char *const fixed[] = {
        "0", "-0", "00", "007", "-", "12", "-12", "999999999999999999", "1000000000000000000",
        "-999999999999999999", "1.5", "1.50", "-0.01", "0.0001", "0.00001", ".5", "1e5", "1,250.5", "1250.5",
        "2026-01-05", "2026-1-5", "2026-02-30", "0000-01-01", "0001-01-01", "9999-12-31", "2026-01-05 ",
        " 12", "12 ", "+12", "借", "贷", "平", "小结", "#错误的凭证链接#", "1,234.50\r\n8,000.00", "",
        "922337203685477.5807", "-922337203685477.5808", "576460752303423.4880", "１２",
    };
    const int pick = int(rng.bounded(4));
    if (pick < 2)
        return QString::fromUtf8(fixed[rng.bounded(int(std::size(fixed)))]);
    if (pick == 2) {
        // A random number in one of the forms people type.
        const qint64 units = qint64(rng.bounded(2000000)) - 1000000;
        const int frac = int(rng.bounded(10000));
        switch (rng.bounded(3)) {
        case 0: return QString::number(units);
        case 1: return QString::number(units) + QLatin1Char('.') + QString::number(frac);
        default: return QDate(2000, 1, 1).addDays(rng.bounded(20000)).toString(Qt::ISODate);
        }
    }
    QString s;
    const int len = int(rng.bounded(6));
    for (int i = 0; i < len; ++i)
        s += QChar(u"0123456789-.,: 年月日现金银行"[rng.bounded(22)]);
    return s;
}

} // namespace

TEST(CellStore, EveryTextReadsBackAsWrittenAndEqualTextsChangeNothing)
{
    QRandomGenerator rng(20261123);
    CellStore store;
    store.resizeCols(4);
    store.resizeRows(50);
    std::vector<QString> expected(200);
    for (int round = 0; round < 20000; ++round) {
        const int r = int(rng.bounded(50));
        const int c = int(rng.bounded(4));
        const QString text = randomText(rng);
        const bool changed = store.setText(r, c, text);
        QString &mine = expected[std::size_t(r * 4 + c)];
        ASSERT_EQ(changed, mine != text) << qPrintable(text) << " over " << qPrintable(mine);
        mine = text;
        ASSERT_EQ(store.text(r, c), text);
    }
    for (int r = 0; r < 50; ++r)
        for (int c = 0; c < 4; ++c)
            ASSERT_EQ(store.text(r, c), expected[std::size_t(r * 4 + c)]);
}

TEST(CellStore, TypedReadsAgreeWithTheTextAndTypedWritesWithTexts)
{
    CellStore store;
    store.resizeCols(2);
    store.resizeRows(1);
    const auto put = [&](const char *text) { store.setText(0, 0, QString::fromUtf8(text)); };

    put("1250.5");
    EXPECT_EQ(store.amount(0, 0), Currency::fromRaw(12505000));
    EXPECT_EQ(store.number(0, 0), 1250);
    put("1,250.50");  // kept as text, still an amount
    EXPECT_EQ(store.amount(0, 0), Currency::fromRaw(12505000));
    EXPECT_EQ(store.text(0, 0), QStringLiteral("1,250.50"));
    put("300\r\n1200");  // a two-line total reads by its first line
    EXPECT_EQ(store.amount(0, 0), Currency::fromUnits(300));
    put("2026-02-28");
    EXPECT_EQ(store.date(0, 0), QDate(2026, 2, 28));
    EXPECT_TRUE(store.amount(0, 0).isZero());
    put("2026-02-30");
    EXPECT_FALSE(store.date(0, 0).isValid());
    put("12.0");
    EXPECT_EQ(store.number(0, 0), 12) << "integer cells written by other tools";

    // A typed write of what the cell already says is no change at all.
    put("100");
    EXPECT_FALSE(store.setTyped(0, 0, Cell::amount(Currency::fromUnits(100))));
    EXPECT_TRUE(store.setTyped(0, 0, Cell::amount(Currency::fromRaw(1000001))));
    EXPECT_EQ(store.text(0, 0), QStringLiteral("100.0001"));
    EXPECT_FALSE(store.setText(0, 0, QStringLiteral("100.0001")));
}

TEST(CellStore, PooledTextsAreFreedWhenNoCellHoldsThemAndSurviveRowWork)
{
    CellStore store;
    store.resizeCols(3);
    store.resizeRows(4);
    for (int r = 0; r < 4; ++r)
        store.setText(r, 1, r % 2 ? QStringLiteral("工商银行") : QStringLiteral("现金"));
    store.setText(2, 2, QStringLiteral("只此一处"));
    store.moveRow(0, 3);
    store.moveCol(1, 2);
    store.insertRow(1);
    EXPECT_EQ(store.text(0, 2), QStringLiteral("工商银行"));
    EXPECT_EQ(store.text(1, 2), QString());
    EXPECT_EQ(store.text(2, 1), QStringLiteral("只此一处"));
    EXPECT_EQ(store.text(4, 2), QStringLiteral("现金"));
    store.removeRow(2);
    store.resizeCols(1);
    store.resizeCols(3);
    EXPECT_EQ(store.text(0, 2), QString()) << "columns cut away take their texts";

    kx::CellArray block(2, 3);
    block.setText(0, 1, QStringLiteral("现金"));
    block.setUtf8(1, 1, "银行", 6);
    block.setUtf8(1, 2, "2026-01-05", 10);
    store.adopt(block, 1, 0);
    EXPECT_EQ(store.rows(), 3);
    EXPECT_EQ(store.text(2, 1), QStringLiteral("银行"));
    EXPECT_EQ(store.date(2, 2), QDate(2026, 1, 5));
    EXPECT_EQ(block.rows(), 0);
}

// A fetch meets more distinct values than the interner keeps, in an order
// where they recur near each other and far apart; every id must still read
// back its own text, and nothing may stay pooled once the cells let go.
TEST(CellStore, InternedTextsKeepTheirCountsWhateverTheOrderTheyComeIn)
{
    kx::TextPool pool;
    std::vector<std::uint32_t> held;
    std::vector<QByteArray> sent;
    {
        kx::Utf8Interner interner(pool, 2);
        QRandomGenerator rng(7);
        for (int i = 0; i < 30000; ++i) {
            const int column = int(rng.bounded(2));
            const quint32 pick = rng.bounded(4) == 0 ? rng.bounded(20000u) : quint32(i / 5);
            // Some values differ only in the middle: the same first and last bytes.
            const QByteArray bytes = rng.bounded(3) == 0 ? QByteArray("凭证第") + QByteArray::number(pick) + "号"
                                                         : QByteArray("01-05记") + QByteArray::number(pick % 97) +
                                                               QByteArray::number(pick) + QByteArray("号 12");
            held.push_back(interner.intern(column, bytes.constData(), int(bytes.size())));
            sent.push_back(bytes);
        }
        for (std::size_t i = 0; i < held.size(); ++i)
            ASSERT_EQ(pool.text(held[i]), QString::fromUtf8(sent[i])) << i;
    }
    for (std::uint32_t id : held)
        pool.release(id);
    EXPECT_EQ(pool.liveCount(), 0u);

    // The same string object met again after its id went to another text.
    const QString cash = QStringLiteral("现金");
    const std::uint32_t first = pool.intern(cash);
    pool.release(first);
    const std::uint32_t other = pool.intern(QStringLiteral("银行"));
    const std::uint32_t again = pool.intern(cash);
    EXPECT_EQ(pool.text(other), QStringLiteral("银行"));
    EXPECT_EQ(pool.text(again), cash);
    EXPECT_NE(other, again);
}

TEST(Sheet, ViewsShareTheGridsOneSelection)
{
    Sheet grid;
    QAbstractItemModelTester tester(&grid, QAbstractItemModelTester::FailureReportingMode::Fatal);
    grid.setCols(5);
    grid.setRows(8);
    kx::GridView view;
    view.setGridModel(&grid);
    ASSERT_EQ(view.selectionModel(), grid.selectionModel());

    QSignalSpy moved(&grid, &Sheet::cursorChanged);
    grid.select(3, 2, 5, 4);
    EXPECT_EQ(view.currentIndex(), grid.indexAt(3, 2));
    EXPECT_EQ(view.selectionModel()->selectedIndexes().size(), 9);

    // What the user selects is what code without the view reads.
    view.setCurrentIndex(grid.indexAt(6, 1));
    int r1, c1, r2, c2;
    grid.selection(r1, c1, r2, c2);
    EXPECT_EQ(std::make_tuple(grid.row(), grid.col(), r1, c1, r2, c2), std::make_tuple(6, 1, 6, 1, 6, 1));
    EXPECT_EQ(moved.count(), 2);

    // A load replaces the rows; the cursor stays on a data cell.
    kx::CellArray rows(3, 5);
    grid.loadArray(std::move(rows), 1, 0);
    EXPECT_EQ(grid.row(), 3);
    grid.removeRowAt(3);
    EXPECT_EQ(grid.row(), 2);
    EXPECT_TRUE(grid.uniformRows());
    grid.setRowHeight(1, 40);
    EXPECT_FALSE(grid.uniformRows());
    grid.setRowHeight(1, -1);
    EXPECT_TRUE(grid.uniformRows());
}

// A column is dense or one common cell with the rows that differ listed;
// rows and columns come, go and move, blocks are adopted over the lower
// rows, columns are listed again. Against a plain table of texts every cell
// must read back, also through a reader going down the column, and a column
// nothing was written to must hold no cells. The seed is printed; KX_SEED
// repeats a run.
TEST(CellStore, DenseAndListedColumnsAgreeWithAPlainTableThroughRandomRowWork)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::global()->generate();
    std::cout << "seed " << seed << " (KX_SEED repeats it)\n";
    QRandomGenerator rng(seed);
    using Table = std::vector<std::vector<QString>>;  // [row][col]
    CellStore store;
    Table table;
    int cols = 0;
    std::vector<bool> written;  // per column: was anything ever written there
    const auto rows = [&] { return int(table.size()); };
    const auto check = [&](int step, const char *what) {
        ASSERT_EQ(store.rows(), rows()) << step << what;
        ASSERT_EQ(store.cols(), cols) << step << what;
        for (int c = 0; c < cols; ++c) {
            const kx::CellColumn &column = store.column(c);
            if (!written[std::size_t(c)])
                ASSERT_TRUE(!column.dense() && column.listed().empty() && column.common() == Cell())
                    << "column " << c << " holds cells though none was written, step " << step << what;
            kx::ColumnReader down(store, c);
            for (int r = 0; r < rows(); ++r) {
                ASSERT_EQ(store.text(r, c), table[std::size_t(r)][std::size_t(c)])
                    << "(" << r << "," << c << ") step " << step << what;
                ASSERT_EQ(down.at(r), store.cell(r, c)) << "(" << r << "," << c << ") step " << step << what;
            }
            kx::ColumnReader anyOrder(store, c);
            for (int i = 0; i < rows(); ++i) {
                const int r = int(rng.bounded(rows()));
                ASSERT_EQ(anyOrder.at(r), store.cell(r, c)) << "(" << r << "," << c << ") step " << step << what;
            }
        }
    };
    const auto resizeCols = [&](int n) {
        store.resizeCols(n);
        for (auto &row : table)
            row.resize(std::size_t(n));
        written.resize(std::size_t(n));
        cols = n;
    };
    resizeCols(6);
    for (int step = 0; step < 400; ++step) {
        const int op = int(rng.bounded(10));
        const int n = rows();
        const char *what = "";
        if (op <= 2 && n > 0 && cols > 0) {
            what = " write";
            const int r = int(rng.bounded(n)), c = int(rng.bounded(cols));
            // Columns of one value with a few others, as books have, besides random ones.
            const QString text = c % 2 ? randomText(rng) : rng.bounded(4) ? QStringLiteral("借") : randomText(rng);
            store.setText(r, c, text);
            table[std::size_t(r)][std::size_t(c)] = text;
            written[std::size_t(c)] = written[std::size_t(c)] || !text.isEmpty();
        } else if (op == 3 && n > 0 && cols > 0) {
            what = " derived";
            const int r = int(rng.bounded(n)), c = int(rng.bounded(cols));
            const Currency v = Currency::fromRaw(qint64(rng.bounded(2000000)) - 1000000);
            if (store.setDerived(r, c, Cell::amount(v)) || store.text(r, c) == v.toString()) {
                table[std::size_t(r)][std::size_t(c)] = v.toString();
                written[std::size_t(c)] = written[std::size_t(c)] || !v.isZero();
            }
        } else if (op == 4) {
            what = " insert";
            const int at = int(rng.bounded(n + 1)), count = 1 + int(rng.bounded(3));
            store.insertRows(at, count);
            table.insert(table.begin() + at, std::size_t(count), std::vector<QString>(std::size_t(cols)));
        } else if (op == 5 && n > 0) {
            what = " remove";
            const int at = int(rng.bounded(n)), count = 1 + int(rng.bounded(std::min(n - at, 3)));
            store.removeRows(at, count);
            table.erase(table.begin() + at, table.begin() + at + count);
        } else if (op == 6 && n > 1) {
            what = " move row";
            const int from = int(rng.bounded(n)), to = int(rng.bounded(n));
            store.moveRow(from, to);
            auto row = std::move(table[std::size_t(from)]);
            table.erase(table.begin() + from);
            table.insert(table.begin() + to, std::move(row));
        } else if (op == 7 && cols > 1) {
            what = " move column";
            const int from = int(rng.bounded(cols)), to = int(rng.bounded(cols));
            store.moveCol(from, to);
            for (auto &row : table) {
                QString cell = row[std::size_t(from)];
                row.erase(row.begin() + from);
                row.insert(row.begin() + to, cell);
            }
            const bool w = written[std::size_t(from)];
            written.erase(written.begin() + from);
            written.insert(written.begin() + to, w);
        } else if (op == 8) {
            what = rng.bounded(3) == 0 ? " compact" : rng.bounded(2) ? " rows" : " columns";
            if (what[1] == 'c') {
                store.compactGrown();
            } else if (what[1] == 'r') {
                const int to = int(rng.bounded(12));
                store.resizeRows(to);
                table.resize(std::size_t(to), std::vector<QString>(std::size_t(cols)));
            } else {
                resizeCols(1 + int(rng.bounded(8)));
            }
        } else {
            what = " adopt";
            // A block over the rows from firstRow on, at firstCol; whole when it
            // starts at column 0 and is as wide as the store.
            const int firstRow = int(rng.bounded(n + 1));
            const bool whole = rng.bounded(2);
            const int firstCol = whole ? 0 : int(rng.bounded(cols + 1));
            const int width = whole ? cols : 1 + int(rng.bounded(3));
            const int count = int(rng.bounded(5));
            kx::CellArray block(0, width);
            auto texts = std::vector<std::vector<QString>>(std::size_t(count), std::vector<QString>(std::size_t(width)));
            for (int r = 0; r < count; ++r) {
                block.appendRow();
                for (int c = 0; c < width; ++c)
                    if (rng.bounded(3) == 0) {
                        texts[std::size_t(r)][std::size_t(c)] = randomText(rng);
                        block.setText(r, c, texts[std::size_t(r)][std::size_t(c)]);
                    }
            }
            store.adopt(block, firstRow, firstCol);
            table.resize(std::size_t(firstRow));
            if (firstCol + width > cols) {
                for (auto &row : table)
                    row.resize(std::size_t(firstCol + width));
                written.resize(std::size_t(firstCol + width));
                cols = firstCol + width;
            }
            for (int r = 0; r < count; ++r) {
                auto row = std::vector<QString>(std::size_t(cols));
                for (int c = 0; c < width; ++c) {
                    row[std::size_t(firstCol + c)] = texts[std::size_t(r)][std::size_t(c)];
                    written[std::size_t(firstCol + c)] =
                        written[std::size_t(firstCol + c)] || !texts[std::size_t(r)][std::size_t(c)].isEmpty();
                }
                table.push_back(std::move(row));
            }
        }
        check(step, what);
        if (::testing::Test::HasFatalFailure())
            return;
        // A row copied out and put back elsewhere reads as the original did.
        if (rows() > 1 && rng.bounded(8) == 0) {
            const int from = int(rng.bounded(rows())), to = int(rng.bounded(rows()));
            store.restoreRow(to, store.copyRow(from));
            table[std::size_t(to)] = table[std::size_t(from)];
            check(step, " restore row");
            if (::testing::Test::HasFatalFailure())
                return;
        }
    }
}
