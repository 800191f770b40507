// Colours a host chooses are kept exactly, black included, and no choice is
// not black; a book's balance direction reads from its stored text and
// gives it back unchanged.
#include "editing/EditingBook.h"
#include "ledger/LedgerState.h"

#include <kxjournal/GridView.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SettingsPropertyBag.h>

#include <QImage>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

// The colour painted on \a row, the current row, in its empty Credit cell
// (the current cell itself shows the selection).
QColor paintedOnRow(EditingBook &b, int row)
{
    kx::GridView *view = b.journal->gridView();
    b.grid->setCursor(row, b.col("Explain"));
    const QImage image = view->viewport()->grab().toImage();
    const QRect cell = view->visualRect(b.grid->indexAt(row, b.col("Credit")));
    return image.pixelColor(cell.center());
}

} // namespace

TEST(HostLooks, BlackIsAColourAndNoChoiceIsNotBlack)
{
    EditingBook b;
    b.journal->resize(900, 500);
    b.journal->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(b.journal.get()));

    EXPECT_FALSE(b.journal->HotBackColor().isValid()) << "none chosen";
    EXPECT_NE(paintedOnRow(b, 2), QColor(Qt::black));
    b.journal->setHotBackColor(Qt::black);
    EXPECT_EQ(b.journal->gridView()->hotBackColor(), QColor(Qt::black));
    EXPECT_EQ(paintedOnRow(b, 2), QColor(Qt::black));
    b.journal->setWarnBackColor(Qt::black);
    EXPECT_EQ(b.journal->gridView()->warnBackColor(), QColor(Qt::black));

    // An edited cell takes the host's modified colour, black too; with none
    // chosen it keeps the grid's own.
    ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("无色")));
    EXPECT_FALSE(b.grid->cellForeColor(3, b.col("Explain")).isValid());
    b.journal->setModifiedForeColor(Qt::black);
    ASSERT_TRUE(b.type(4, "Explain", QStringLiteral("黑色")));
    EXPECT_EQ(b.grid->cellForeColor(4, b.col("Explain")), QColor(Qt::black));

    // Closed rows: the host's black, or a grey while none is chosen.
    kx::RowLooks looks;
    EXPECT_EQ(looks.lockedColor(), QColor(0x80, 0x80, 0x80));
    looks.lockedForeColor = Qt::black;
    EXPECT_EQ(looks.lockedColor(), QColor(Qt::black));

    // Through a host's settings: black comes back black, no choice comes back none.
    QTemporaryDir dir;
    QSettings settings(dir.filePath(QStringLiteral("host.ini")), QSettings::IniFormat);
    b.journal->setLockedForeColor(Qt::black);
    kx::SettingsPropertyBag(settings, QStringLiteral("journal")).saveJournal(*b.journal);
    kx::Journal back;
    kx::SettingsPropertyBag(settings, QStringLiteral("journal")).loadJournal(back);
    EXPECT_EQ(back.HotBackColor(), QColor(Qt::black));
    EXPECT_EQ(back.LockedForeColor(), QColor(Qt::black));
    kx::Journal fresh;
    kx::SettingsPropertyBag(settings, QStringLiteral("fresh")).saveJournal(fresh);
    kx::SettingsPropertyBag(settings, QStringLiteral("fresh")).loadJournal(fresh);
    EXPECT_FALSE(fresh.HotBackColor().isValid());
    EXPECT_FALSE(fresh.LockedForeColor().isValid());
}

TEST(BookDirection, TheStoredTextReadsAsTheSideAndComesBackUnchanged)
{
    kxtest::TestDatabase db(kxtest::Engine::Sqlite);
    kx::Database conn = db.open();
    ASSERT_TRUE(kx::Schema::create(conn).ok());
    kxtest::BookBuilder builder(conn);
    const int debit = builder.book(QStringLiteral("0201"), QStringLiteral("借方账"), QStringLiteral("借"));
    const int credit = builder.book(QStringLiteral("0202"), QStringLiteral("贷方账"), QStringLiteral("贷"));
    const int none = builder.book(QStringLiteral("0203"), QStringLiteral("无方向"), QString());
    for (int book : {debit, credit, none}) {
        builder.record(book, 1, {{QStringLiteral("JnlDate"), QStringLiteral("2024-12-31")},
                                 {QStringLiteral("Explain"), QStringLiteral("期初余额")}});
        builder.record(book, 2, {{QStringLiteral("JnlDate"), QStringLiteral("2025-01-05")},
                                 {QStringLiteral("Explain"), QStringLiteral("收款")},
                                 {QStringLiteral("Debit"), QStringLiteral("100")}});
    }
    kx::SqlAccContext acc(db.open());
    kx::Journal journal;
    journal.setAcc(&acc);
    const kx::Sheet *grid = kx::Sheet::of(journal.Grid());

    const struct {
        int book;
        kx::Journal::BalanceDirection side;
        const char *text;
    } books[] = {{debit, kx::Journal::DebitDirection, "借"},
                 {credit, kx::Journal::CreditDirection, "贷"},
                 {none, kx::Journal::NoDirection, ""}};
    for (const auto &c : books) {
        SCOPED_TRACE(c.text);
        ASSERT_TRUE(journal.Load(c.book));
        EXPECT_EQ(journal.balanceDirection(), c.side);
        EXPECT_EQ(journal.Direction(), QString::fromUtf8(c.text));
    }

    // Set through either public spelling, read back through both.
    for (const auto &c : books) {
        SCOPED_TRACE(c.text);
        journal.setBalanceDirection(c.side);
        EXPECT_EQ(journal.Direction(), QString::fromUtf8(c.text));
        EXPECT_EQ(grid->text(2, QStringLiteral("Dir")), QString::fromUtf8(c.text));
        journal.setDirection(QString());
        journal.setDirection(QString::fromUtf8(c.text));
        EXPECT_EQ(journal.balanceDirection(), c.side);
    }
    journal.setDirection(QStringLiteral("借方"));
    EXPECT_EQ(journal.balanceDirection(), kx::Journal::NoDirection) << "only 借 and 贷 name a side";
}
