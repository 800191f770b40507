// Recording what changes a grid and putting it back.
#include "QtPrinters.h"

#include <grid/GridChanges.h>
#include "grid/Sheet.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <gtest/gtest.h>

using kx::GridChanges;
using kx::Sheet;

namespace {

QStringList picture(const Sheet &g)
{
    QStringList s;
    for (int r = 0; r < g.rows(); ++r) {
        s << QStringLiteral("row %1 %2 %3 sub%4 out%5 h%6 hid%7")
                 .arg(r)
                 .arg(g.rowData(r).toString(), g.rowForeColor(r).name())
                 .arg(g.isSubtotal(r))
                 .arg(g.outlineLevel(r))
                 .arg(g.rowHeight(r))
                 .arg(g.isRowHidden(r));
        for (int c = 0; c < g.cols(); ++c)
            s << g.text(r, c) + QLatin1Char('|') + g.cellForeColor(r, c).name() + QLatin1Char('|') +
                     g.cellBackColor(r, c).name() + (g.cellBold(r, c) ? QStringLiteral("|b") : QString()) +
                     QLatin1Char('|') + g.cellData(r, c).toString();
    }
    return s;
}

} // namespace

TEST(GridChanges, RandomChangesRevertAndRedoExactly)
{
    Sheet g;
    QAbstractItemModelTester tester(&g, QAbstractItemModelTester::FailureReportingMode::Warning);
    g.setCols(6);
    g.setRows(8);
    QRandomGenerator rng(5);
    const QStringList texts{QStringLiteral("12"), QStringLiteral("1250.5"), QStringLiteral("2026-01-05"),
                            QStringLiteral("摘要"), QString(), QStringLiteral("-3"), QStringLiteral("借")};
    for (int round = 0; round < 300; ++round) {
        const QStringList before = picture(g);
        g.beginChanges();
        const int n = int(rng.bounded(12));
        for (int k = 0; k < n; ++k) {
            const int r = 1 + int(rng.bounded(g.rows() - 1));
            const int c = 1 + int(rng.bounded(5));
            const int where = 1 + int(rng.bounded(g.rows() - 1));
            switch (rng.bounded(13)) {
            case 0: g.setText(r, c, texts.at(int(rng.bounded(int(texts.size()))))); break;
            case 1: g.setAmount(r, c, kx::Currency::fromRaw(qint64(rng.bounded(1000000)) - 500000)); break;
            case 2: g.setCellForeColor(r, c, QColor::fromRgb(rng.generate())); break;
            case 3: g.setRowData(r, int(rng.bounded(3))); break;
            case 4: g.setRowForeColor(r, rng.bounded(2) ? QColor(Qt::red) : QColor()); break;
            case 5: g.insertRowsAt(where, 1 + int(rng.bounded(3))); break;
            case 6: if (g.rows() > 4) g.removeRowsAt(where, 1 + int(rng.bounded(2))); break;
            case 7: g.moveRowTo(r, where); break;
            case 8: g.setSubtotal(r, rng.bounded(2)); g.setOutlineLevel(r, int(rng.bounded(3))); break;
            case 9: g.setRowHeight(r, rng.bounded(2) ? 38 : -1); g.setRowHidden(where, rng.bounded(2)); break;
            case 10: g.setCellData(r, c, rng.bounded(2) ? QVariant(QStringLiteral("1\r\n2")) : QVariant()); break;
            case 11: if (g.rows() > 5) g.setRows(g.rows() - 2); break;
            default: g.setRows(g.rows() + 1); g.setText(g.rows() - 1, c, QStringLiteral("新")); break;
            }
        }
        GridChanges made = g.endChanges();
        ASSERT_TRUE(made.isComplete());
        const QStringList after = picture(g);
        GridChanges undo = g.revertChanges(made);
        ASSERT_EQ(picture(g), before) << "round " << round;
        g.revertChanges(undo);
        ASSERT_EQ(picture(g), after) << "round " << round;
    }
}

TEST(GridChanges, ChangesThatCannotBePutBackAreMarkedAndNeverReverted)
{
    Sheet g;
    g.setCols(3);
    g.setRows(4);
    g.setText(1, 1, QStringLiteral("a"));
    const quint64 rev = g.revision();
    g.beginChanges();
    g.setText(1, 1, QStringLiteral("b"));
    g.moveColTo(1, 2);
    GridChanges made = g.endChanges();
    EXPECT_FALSE(made.isComplete());
    EXPECT_GT(g.revision(), rev);
    EXPECT_TRUE(g.revertChanges(made).isEmpty());
    EXPECT_EQ(g.text(1, 2), QStringLiteral("b"));

    g.beginChanges();
    g.beginChanges();
    g.setText(1, 1, QStringLiteral("c"));
    EXPECT_TRUE(g.endChanges().isEmpty()) << "an inner end hands nothing over";
    EXPECT_EQ(g.endChanges().size(), 1);
}
