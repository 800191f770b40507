// The looks, key lists and formats a form gives the control (Designer's
// property editor, a .ui file, or a host's own setProperty calls before any
// book is chosen) are the ones it shows once a book is loaded.
#include "support/TestDatabase.h"

#include <kxjournal/GridModel.h>
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QApplication>
#include <QFont>
#include <QImage>
#include <QHeaderView>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

TEST(DesignTimeLooks, WhatTheFormSetBeforeAnyBookSurvivesSetAccAndLoad)
{
    kxtest::TestDatabase db(kxtest::Engine::Sqlite);
    kx::Database conn = db.open();
    const int book = kxtest::fillSampleBooks(conn, 300, 1);
    ASSERT_GT(book, 0);
    kx::SqlAccContext acc(db.open());

    QFont font(QStringLiteral("Noto Sans CJK SC"), 12);
    const std::vector<std::pair<const char *, QVariant>> form = {
        {"BorderColor", QColor(0x20, 0x40, 0x60)},
        {"BackColor", QColor(0xfa, 0xf0, 0xe6)},
        {"BackColorFixed", QColor(0xdd, 0xee, 0xcc)},
        {"BackColorBkg", QColor(0x70, 0x70, 0x90)},
        {"GridColor", QColor(0x99, 0x33, 0x33)},
        {"GridColorFixed", QColor(0x33, 0x99, 0x33)},
        {"HotBackColor", QColor(0xff, 0xff, 0xc0)},
        {"WarnBackColor", QColor(0xff, 0xa0, 0xa0)},
        {"LockedForeColor", QColor(0x60, 0x60, 0xc0)},
        {"ModifiedForeColor", QColor(0xc0, 0x30, 0x30)},
        {"RowHeightMin", 30},
        {"RowHeightMax", 40},
        {"AccountFormat", QStringLiteral("#,##0.000")},
        {"RateFormat", QStringLiteral("0.0000")},
        {"PriceFormat", QStringLiteral("0.00")},
        {"QuantityFormat", QStringLiteral("0")},
        {"DateFormat", QStringLiteral("yyyy.MM.dd")},
        {"ColsFilter", QStringLiteral("|DocID|RecID|")},
        {"OutlineKey", QStringLiteral("Explain")},
        {"ListFields", QStringLiteral("|Field1|")},
        {"NumericFields", QStringLiteral("|Rate|")},
        {"EditFields", QStringLiteral("|Explain|Debit|Credit|")},
        {"DateFields", QStringLiteral("|JnlDate|")},
        {"Font", font},
    };
    kx::Journal journal;
    journal.resize(900, 500);
    for (const auto &[name, value] : form)
        ASSERT_TRUE(journal.setProperty(name, value)) << name;
    journal.setAcc(&acc);
    ASSERT_TRUE(journal.Load(book));

    for (const auto &[name, value] : form)
        EXPECT_EQ(journal.property(name), value) << name << " was reset by the load";

    // Not only kept: what the grid paints with.
    kx::GridView *view = journal.gridView();
    EXPECT_EQ(view->backColor(), QColor(0xfa, 0xf0, 0xe6));
    EXPECT_EQ(view->backColorFixed(), QColor(0xdd, 0xee, 0xcc));
    EXPECT_EQ(view->backColorBkg(), QColor(0x70, 0x70, 0x90));
    EXPECT_EQ(view->gridColor(), QColor(0x99, 0x33, 0x33));
    EXPECT_EQ(view->gridColorFixed(), QColor(0x33, 0x99, 0x33));
    EXPECT_EQ(view->hotBackColor(), QColor(0xff, 0xff, 0xc0));
    EXPECT_EQ(view->warnBackColor(), QColor(0xff, 0xa0, 0xa0));
    kx::GridModel *g = journal.Grid();
    EXPECT_EQ(g->font().family(), font.family());
    EXPECT_EQ(g->font().pointSize(), 12);

    // The cells as drawn: an ordinary row's background and grid line, and
    // the current row's background, away from the current cell.
    journal.show();
    // The book opens at its last row; the rows looked at are at the top.
    view->scrollToTop();
    QApplication::processEvents();
    const QImage drawn = view->viewport()->grab().toImage();
    const int explain = g->colIndex(QStringLiteral("Explain"));
    const int remark = g->colIndex(QStringLiteral("Remark"));
    const auto isOrdinary = [g](int r) { return r < g->rows() && !g->isSubtotal(r) && !g->isRowHidden(r); };
    int plain = g->fixedRows();
    while (plain < g->rows() && !(plain != g->row() && plain + 1 != g->row() && isOrdinary(plain) && isOrdinary(plain + 1)))
        ++plain;
    ASSERT_LT(plain, g->rows());
    const QRect cell = view->visualRect(g->indexAt(plain, explain));
    ASSERT_TRUE(view->viewport()->rect().contains(cell)) << "row " << plain << " is in sight";
    EXPECT_EQ(drawn.pixelColor(cell.topLeft() + QPoint(1, 1)), QColor(0xfa, 0xf0, 0xe6));
    // The grid line runs just right of the cell's rectangle.
    EXPECT_EQ(drawn.pixelColor(cell.right() + 1, cell.center().y()), QColor(0x99, 0x33, 0x33));
    journal.setRow(plain + 1);
    QApplication::processEvents();
    const QImage withHotRow = view->viewport()->grab().toImage();
    // Any cell of the current row but the current cell (drawn selected).
    const int other = g->col() == explain ? remark : explain;
    const QRect hot = view->visualRect(g->indexAt(plain + 1, other));
    EXPECT_EQ(withHotRow.pixelColor(hot.topLeft() + QPoint(1, 1)), QColor(0xff, 0xff, 0xc0));

    // Every row lies between the form's heights: ordinary rows (22 high by
    // default) are raised to 30, summary rows (38) stay.
    int ordinary = 0, summary = 0;
    for (int r = g->fixedRows(); r < g->rows(); ++r) {
        if (g->isRowHidden(r))
            continue;
        const int h = view->rowHeight(r - g->fixedRows());
        ASSERT_GE(h, 30) << "row " << r;
        ASSERT_LE(h, 40) << "row " << r;
        (g->isSubtotal(r) ? summary : ordinary) += 1;
    }
    EXPECT_GT(ordinary, 100);
    EXPECT_GT(summary, 0);

    // The amounts show in the form's format; the cells keep the exact value.
    const int balance = g->colIndex(QStringLiteral("Balance"));
    int r = g->fixedRows() + 1;
    while (r < g->rows() && g->amount(r, balance) < kx::Currency::fromText(u"1000").value())
        ++r;
    ASSERT_LT(r, g->rows());
    const QString shown = g->data(g->indexAt(r, balance)).toString();
    EXPECT_EQ(shown, g->amount(r, balance).format(QStringLiteral("#,##0.000")));
    EXPECT_EQ(shown.size() - shown.indexOf(QLatin1Char('.')), 4) << qPrintable(shown);

    // The default format is asked for by name: the key lists and the font
    // go back to the defaults, the colours stay.
    journal.SetDefaultFormat();
    EXPECT_EQ(journal.EditFields(),
              QStringLiteral("|ShowName|JnlNo|AccName|AccDoc|Explain|Debit|Credit|Rate|Forex|Field1|Field2|Field3|Field4|Remark|"));
    EXPECT_EQ(journal.ColsFilter(), QStringLiteral("|DocID|DirID|RecID|Tag|AccID|AccCode|Flag|JnlDate|Locked|Row|AssistName|"));
    EXPECT_NE(g->font().family(), font.family());
    EXPECT_EQ(journal.GridColor(), QColor(0x99, 0x33, 0x33));
}
