// The control's layout and looks on a real sample book: figures never cut,
// two decimals by default, the show-fields list, frozen columns, split panes
// and the colours of a dark palette.
#include "support/BookBuilder.h"
#include "grid/GridViewPrivate.h"
#include "support/TestDatabase.h"
#include "data/SqlAccess.h"

#include <kxjournal/EditCycle.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/PropertyBag.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSplitter>
#include <QToolButton>
#include <gtest/gtest.h>

namespace {

struct SampleJournal {
    explicit SampleJournal(int records = 600)
        : db(kxtest::Engine::Sqlite)
    {
        kx::Database conn = db.open();
        book = kxtest::fillSampleBooks(conn, records, 1);
        acc = std::make_unique<kx::SqlAccContext>(db.open());
        acc->setBeginDate(QDate(2025, 1, 1));
        journal = std::make_unique<kx::Journal>();
        journal->setAcc(acc.get());
        journal->resize(900, 500);
    }
    bool load() { return journal->Load(book); }
    kx::Sheet *grid() const { return kx::Sheet::of(journal->Grid()); }
    int col(const char *key) const { return grid()->colIndex(QLatin1String(key)); }

    kxtest::TestDatabase db;
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::Journal> journal;
    int book = 0;
};

QAction *fieldItem(kx::Journal &journal, const QString &key)
{
    QMenu *fields = journal.menuAction(QStringLiteral("mnuFieldShow"))->menu();
    Q_EMIT fields->aboutToShow();
    return fields->findChild<QAction *>(QStringLiteral("fld") + key);
}

} // namespace

TEST(Layout, NoFigureOfTheSampleBookIsCutAndTwoDecimalsShowByDefault)
{
    SampleJournal s;
    ASSERT_TRUE(s.load());
    kx::Sheet *g = s.grid();
    QAbstractItemModelTester tester(g, QAbstractItemModelTester::FailureReportingMode::Warning);
    kx::GridView *view = s.journal->gridView();
    const int margin = 2 * (view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1);
    int checked = 0;
    for (const char *key : {"Debit", "Credit", "Balance"}) {
        const int c = s.col(key);
        const int width = view->columnWidth(c - g->fixedCols());
        for (int r = g->fixedRows(); r < g->rows(); ++r) {
            const QModelIndex at = g->indexAt(r, c);
            const QFont font = at.data(Qt::FontRole).isValid() ? at.data(Qt::FontRole).value<QFont>() : view->font();
            for (const QString &line : at.data(Qt::DisplayRole).toString().split(QLatin1Char('\n'))) {
                ASSERT_LE(QFontMetrics(font).horizontalAdvance(line) + margin, width)
                    << key << " row " << r << ": " << qPrintable(line);
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 1500);

    // The host set no format: cents and thousands show, the cell keeps the exact value.
    int r = g->fixedRows() + 1;
    while (r < g->rows() && g->amount(r, s.col("Balance")) < kx::Currency::fromText(u"1000").value())
        ++r;
    ASSERT_LT(r, g->rows());
    const QString stored = g->text(r, s.col("Balance"));
    const QString shown = g->data(g->indexAt(r, s.col("Balance"))).toString();
    EXPECT_EQ(shown, g->amount(r, s.col("Balance")).format(QStringLiteral("#,##0.00")));
    EXPECT_TRUE(shown.contains(QLatin1Char(',')) && shown.at(shown.size() - 3) == QLatin1Char('.')) << qPrintable(shown);
    EXPECT_FALSE(stored.contains(QLatin1Char(','))) << "the cell's own value stays as stored";
    EXPECT_EQ(s.journal->AccountFormat(), QString()) << "nothing was set for the host";

    // A format the host sets wins.
    s.journal->setAccountFormat(QStringLiteral("0.0"));
    s.journal->DoCommand(QStringLiteral("AfterSetFormat"));
    EXPECT_EQ(g->data(g->indexAt(r, s.col("Balance"))).toString(),
              g->amount(r, s.col("Balance")).format(QStringLiteral("0.0")));
    EXPECT_EQ(g->text(r, s.col("Balance")), stored);
}

// The widest figure of each amount column fits, whether it was stored or
// typed, and the widths follow the figures without the menu or a reload.
TEST(Layout, ColumnsGrowToTheirWidestFigure)
{
    kxtest::TestDatabase db(kxtest::Engine::Sqlite);
    kx::Database conn = db.open();
    ASSERT_TRUE(kx::Schema::create(conn).ok());
    kxtest::BookBuilder b(conn);
    const int book = b.book(QStringLiteral("0201"), QStringLiteral("基本户"));
    b.record(book, 1, {{QStringLiteral("JnlDate"), QStringLiteral("2024-12-31")},
                       {QStringLiteral("Explain"), QStringLiteral("期初余额")},
                       {QStringLiteral("Debit"), QStringLiteral("1000")}});
    b.record(book, 2, {{QStringLiteral("JnlDate"), QStringLiteral("2025-01-05")},
                       {QStringLiteral("Explain"), QStringLiteral("大额")},
                       {QStringLiteral("Credit"), QStringLiteral("987654321098.76")}});
    kx::SqlAccContext acc(db.open());
    acc.setBeginDate(QDate(2025, 1, 1));
    kx::Journal journal;
    journal.setAcc(&acc);
    ASSERT_TRUE(journal.Load(book));
    kx::Sheet *g = kx::Sheet::of(journal.Grid());
    kx::GridView *view = journal.gridView();
    const auto fits = [&](int row, const char *key) {
        const int c = g->colIndex(QLatin1String(key));
        const QModelIndex at = g->indexAt(row, c);
        const int need = QFontMetrics(at.data(Qt::FontRole).value<QFont>()).horizontalAdvance(at.data().toString());
        return need < view->columnWidth(c - g->fixedCols()) - 4;
    };
    EXPECT_TRUE(fits(2, "Credit"));
    EXPECT_TRUE(fits(2, "Balance")) << "-987,654,320,098.76 with its sign";

    // Widths a bag brings back never cut a figure either.
    kx::PropertyBag narrow;
    narrow.write(QStringLiteral("ColumnWidths"), QStringLiteral("Credit=40"));
    journal.ReadProperties(narrow);
    EXPECT_TRUE(fits(2, "Credit"));

    // 8,999,999,999,999.91: fifteen digits, as many as SQLite keeps exactly.
    ASSERT_TRUE(g->editCycle()->editCell(3, g->colIndex(QStringLiteral("Debit")), QStringLiteral("=999999999999.99*9")));
    QCoreApplication::processEvents();
    EXPECT_TRUE(fits(3, "Debit"));
    EXPECT_TRUE(fits(3, "Balance"));
}

TEST(Layout, ShowFieldsHidesAndRestoresAColumnAndTheChoiceTravelsInTheBag)
{
    SampleJournal s;
    ASSERT_TRUE(s.load());
    QStringList commands;
    QObject::connect(s.journal.get(), &kx::Journal::CommandExecute,
                     [&](const QString &name, bool &) { commands << name; });

    s.journal->show();
    QCoreApplication::processEvents();
    kx::PropertyBag fresh;
    s.journal->WriteProperties(fresh);
    EXPECT_EQ(fresh.read(QStringLiteral("ColumnWidths"), QStringLiteral("?")).toString(), QString())
        << "no width is the user's until the user drags one";

    QAction *explain = fieldItem(*s.journal, QStringLiteral("Explain"));
    ASSERT_NE(explain, nullptr);
    EXPECT_TRUE(explain->isChecked());
    EXPECT_EQ(fieldItem(*s.journal, QStringLiteral("RecID")), nullptr) << "bookkeeping columns are not offered";
    EXPECT_EQ(fieldItem(*s.journal, QStringLiteral("AssistName")), nullptr) << "not on a single book";
    ASSERT_NE(fieldItem(*s.journal, QStringLiteral("Field3")), nullptr);
    EXPECT_EQ(fieldItem(*s.journal, QStringLiteral("Field3"))->text(), QStringLiteral("字段三")) << "its own name, no key beside it";

    fieldItem(*s.journal, QStringLiteral("Explain"))->trigger();
    EXPECT_TRUE(s.grid()->isColHidden(s.col("Explain")));
    EXPECT_TRUE(s.journal->gridView()->isColumnHidden(s.col("Explain") - 1));
    EXPECT_EQ(commands, QStringList{QStringLiteral("AfterFieldShow")});
    fieldItem(*s.journal, QStringLiteral("Remark"))->trigger();
    EXPECT_FALSE(s.grid()->isColHidden(s.col("Remark")));
    s.journal->gridView()->horizontalHeader()->resizeSection(s.col("AccName") - 1, 177);
    EXPECT_EQ(s.grid()->colWidth(s.col("AccName")), 177);

    // A load lays the columns down again: the user's choices stay.
    ASSERT_TRUE(s.load());
    EXPECT_TRUE(s.grid()->isColHidden(s.col("Explain")));
    EXPECT_FALSE(s.grid()->isColHidden(s.col("Remark")));
    EXPECT_EQ(s.grid()->colWidth(s.col("AccName")), 177);

    kx::PropertyBag bag;
    s.journal->WriteProperties(bag);
    kx::Journal other;
    other.setAcc(s.acc.get());
    other.ReadProperties(bag);
    ASSERT_TRUE(other.Load(s.book));
    EXPECT_TRUE(other.Grid()->isColHidden(s.col("Explain")));
    EXPECT_FALSE(other.Grid()->isColHidden(s.col("Remark")));
    EXPECT_EQ(other.Grid()->colWidth(s.col("AccName")), 177);
    fieldItem(other, QStringLiteral("Explain"))->trigger();
    EXPECT_FALSE(other.Grid()->isColHidden(s.col("Explain"))) << "shown again";

    // The default format forgets every choice.
    other.SetDefaultFormat();
    EXPECT_TRUE(other.Grid()->isColHidden(s.col("Remark")));
    EXPECT_NE(other.Grid()->colWidth(s.col("AccName")), 177);

    // A bag written by hand with nonsense in it changes nothing it cannot read.
    kx::PropertyBag odd;
    odd.write(QStringLiteral("FieldShow"), QStringLiteral("Explain=x|=1|Debit"));
    odd.write(QStringLiteral("ColumnWidths"), QStringLiteral("Debit=-5|Credit=99999999999"));
    odd.write(QStringLiteral("LayoutSizes"), QStringLiteral("a,b;;"));
    other.ReadProperties(odd);
    EXPECT_FALSE(other.Grid()->isColHidden(s.col("Explain")));
    EXPECT_GT(other.Grid()->colWidth(s.col("Debit")), 0);
}

TEST(Layout, TheFrozenDateAndNumberScrollInStepWithTheBook)
{
    SampleJournal s(3000);
    s.journal->resize(520, 320);
    s.journal->show();
    ASSERT_TRUE(s.load());
    QCoreApplication::processEvents();
    kx::GridView *view = s.journal->gridView();
    QTableView *frozen = kx::GridViewPrivate::get(view).frozenView();
    ASSERT_NE(frozen, nullptr);
    EXPECT_EQ(frozen->model(), view->model());
    EXPECT_EQ(frozen->selectionModel(), view->selectionModel()) << "one selection for both";
    const int date = s.col("ShowName") - 1;
    const int number = s.col("JnlNo") - 1;
    EXPECT_FALSE(frozen->isColumnHidden(date));
    EXPECT_FALSE(frozen->isColumnHidden(number));
    EXPECT_TRUE(frozen->isColumnHidden(s.col("Explain") - 1));

    view->verticalScrollBar()->setValue(view->verticalScrollBar()->maximum() / 2);
    EXPECT_EQ(frozen->verticalScrollBar()->value(), view->verticalScrollBar()->value());
    const int top = view->rowAt(5);
    EXPECT_EQ(frozen->rowAt(5), top);
    EXPECT_EQ(frozen->visualRect(frozen->model()->index(top + 3, date)).top(),
              view->visualRect(view->model()->index(top + 3, date)).top());

    // Sideways the book slides under the frozen part, which stays where it is.
    const QRect before = frozen->geometry();
    view->horizontalScrollBar()->setValue(view->horizontalScrollBar()->maximum());
    EXPECT_GT(view->horizontalScrollBar()->value(), 0);
    EXPECT_EQ(frozen->geometry(), before);
    EXPECT_EQ(frozen->columnWidth(date), view->columnWidth(date));
    // A cell scrolled to lands clear of the frozen part.
    view->scrollTo(view->model()->index(top + 2, s.col("AccName") - 1));
    EXPECT_GE(view->visualRect(view->model()->index(top + 2, s.col("AccName") - 1)).left(), before.width() - 1);

    // The other way, a wheel over the frozen part scrolls the book.
    frozen->verticalScrollBar()->setValue(10);
    EXPECT_EQ(view->verticalScrollBar()->value(), 10);
    // A click in the frozen part moves the shared cursor.
    s.grid()->setCursor(s.grid()->fixedRows() + 12, s.col("Explain"));
    frozen->setCurrentIndex(frozen->model()->index(40, date));
    EXPECT_EQ(s.grid()->row(), s.grid()->fixedRows() + 40);
}

namespace {

// The first pixel line across the book where the frozen date and number
// stand beside another row than the amounts (empty when none).
QString frozenLineOff(kx::GridView *view)
{
    QTableView *frozen = kx::GridViewPrivate::get(view).frozenView();
    const int x = frozen->columnViewportPosition(0) + 1;
    for (int y = 0; y < view->viewport()->height(); ++y) {
        const QPoint there = frozen->viewport()->mapFrom(view, view->viewport()->mapTo(view, QPoint(x, y)));
        if (frozen->rowAt(there.y()) != view->rowAt(y) || there.y() >= frozen->viewport()->height())
            return QStringLiteral("line %1 at scroll %2: row %3 beside row %4")
                .arg(y)
                .arg(view->verticalScrollBar()->value())
                .arg(frozen->rowAt(there.y()))
                .arg(view->rowAt(y));
    }
    return {};
}

} // namespace

TEST(Layout, EveryFrozenDateStaysBesideItsRecord)
{
    SampleJournal s(600);
    s.journal->resize(560, 360);
    s.journal->show();
    ASSERT_TRUE(s.load());
    QCoreApplication::processEvents();
    kx::GridView *view = s.journal->gridView();
    ASSERT_NE(kx::GridViewPrivate::get(view).frozenView(), nullptr);
    kx::Sheet *g = s.grid();
    // The month totals are two lines high.
    std::vector<int> sums;
    for (int r = g->fixedRows(); r < g->rows(); ++r)
        if (g->rowHeight(r) > g->defaultRowHeight())
            sums.push_back(r - g->fixedRows());
    ASSERT_GE(sums.size(), 3u);
    g->setRowHidden(sums[1] + g->fixedRows() - 2, true);
    QCoreApplication::processEvents();

    QScrollBar *bar = view->verticalScrollBar();
    std::vector<int> stops{0, bar->maximum() / 3, bar->maximum()};
    for (int row : sums)
        stops.push_back(std::max(0, row - 4));
    for (int stop : stops) {
        bar->setValue(stop);
        EXPECT_EQ(frozenLineOff(view), QString());
    }
    // After a reload as well.
    ASSERT_TRUE(s.load());
    QCoreApplication::processEvents();
    for (int stop : stops) {
        bar->setValue(stop);
        EXPECT_EQ(frozenLineOff(view), QString()) << "after the reload";
    }
}

TEST(Layout, PanesKeepTheirSizesAndTheOptionButtonHasAPicture)
{
    SampleJournal s;
    s.journal->resize(800, 500);
    s.journal->show();
    ASSERT_TRUE(s.load());
    s.journal->DoCommand(QStringLiteral("SideVisible"), QStringLiteral("True"));
    auto *side = s.journal->findChild<QSplitter *>(QStringLiteral("sideSplitter"));
    ASSERT_NE(side, nullptr);
    QCoreApplication::processEvents();
    side->setSizes({560, 240});
    Q_EMIT side->splitterMoved(560, 1);
    kx::PropertyBag bag;
    s.journal->WriteProperties(bag);

    kx::Journal other;
    other.resize(800, 500);
    other.show();
    other.ReadProperties(bag);
    other.DoCommand(QStringLiteral("SideVisible"), QStringLiteral("True"));
    QCoreApplication::processEvents();
    auto *otherSide = other.findChild<QSplitter *>(QStringLiteral("sideSplitter"));
    EXPECT_NEAR(otherSide->sizes().value(1), side->sizes().value(1), 6);

    auto *button = s.journal->findChild<QToolButton *>(QStringLiteral("btnOpt"));
    EXPECT_TRUE(button->text().isEmpty()) << "a picture, no stray character";
    EXPECT_FALSE(button->icon().isNull());
    EXPECT_EQ(button->property("imageKey").toString(), QStringLiteral("Jnl"));
}

TEST(Layout, ColoursComeFromThePaletteUnlessTheHostSetThem)
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
    dark.setColor(QPalette::Text, QColor(0xe0, 0xe0, 0xe0));
    dark.setColor(QPalette::Button, QColor(0x35, 0x35, 0x35));
    dark.setColor(QPalette::Highlight, QColor(0x3d, 0x6d, 0xb5));
    QWidget host;
    host.setPalette(dark);
    auto *journal = new kx::Journal(&host);
    kx::GridView *view = journal->gridView();
    EXPECT_EQ(view->backColor(), dark.color(QPalette::Base));
    EXPECT_LT(view->hotBackColor().lightness(), 100) << "the current row stays dark on a dark palette";
    EXPECT_LT(view->warnBackColor().lightness(), 100);
    // Written to a bag and read back, the palette's colours stay the palette's.
    kx::PropertyBag bag;
    journal->WriteProperties(bag);
    journal->ReadProperties(bag);
    QPalette light = dark;
    light.setColor(QPalette::Base, QColor(0xfa, 0xfa, 0xfa));
    host.setPalette(light);
    EXPECT_EQ(view->backColor(), QColor(0xfa, 0xfa, 0xfa));

    journal->setBackColor(QColor(250, 250, 240));
    EXPECT_EQ(view->backColor(), QColor(250, 250, 240)) << "the host's colour wins";
    journal->setHotBackColor(QColor(255, 255, 200));
    EXPECT_EQ(view->hotBackColor(), QColor(255, 255, 200));
}

// A book kept in US dollars opens with its rate, foreign amounts and
// foreign balances in sight; a book in yuan does not; a column the user
// hid stays hidden.
TEST(Layout, AForeignCurrencyBookShowsItsForeignColumns)
{
    kxtest::TestDatabase db(kxtest::Engine::Sqlite);
    int dollars = 0, yuan = 0;
    {
        kx::Database conn = db.open();
        dollars = kxtest::fillSampleBooks(conn, 300, 5, QStringLiteral("0203"));
        yuan = kx::sqlScalar(conn, {QStringLiteral("SELECT asID FROM kxJournal WHERE AssistCode = '020101'"), {}})
                   .value()
                   .toInt();
    }
    ASSERT_GT(dollars, 0);
    ASSERT_GT(yuan, 0);
    kx::SqlAccContext acc(db.open());
    kx::Journal journal;
    journal.setAcc(&acc);
    kx::GridModel *g = journal.Grid();
    const auto hidden = [g](const char *key) { return g->isColHidden(g->colIndex(QString::fromLatin1(key))); };
    ASSERT_TRUE(journal.Load(dollars));
    EXPECT_FALSE(hidden("Rate"));
    EXPECT_FALSE(hidden("Forex"));
    EXPECT_FALSE(hidden("fxBalance"));
    ASSERT_TRUE(journal.Load(yuan));
    EXPECT_TRUE(hidden("Rate"));
    EXPECT_TRUE(hidden("Forex"));
    EXPECT_TRUE(hidden("fxBalance"));

    ASSERT_TRUE(journal.Load(dollars));
    ASSERT_TRUE(journal.setColumnVisible(QStringLiteral("Rate"), false));
    ASSERT_TRUE(journal.Load(dollars));
    EXPECT_TRUE(hidden("Rate")) << "the user's choice stands";
    EXPECT_FALSE(hidden("Forex"));
}
