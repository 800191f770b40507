// Which context-menu items are enabled, over the kinds of row the cursor can
// stand on and the states a book can be in. Each case lists the items that
// must be disabled; every other item must be enabled.
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"
#include "support/BookBuilder.h"

#include <kxjournal/Schema.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

QStringList itemNames(kx::Journal &journal)
{
    QStringList names;
    for (QAction *a : journal.contextMenu()->actions())
        if (!a->objectName().isEmpty())
            names << a->objectName();
    return names;
}

// The disabled items, as the menu shows them when it opens.
QStringList disabledItems(kx::Journal &journal)
{
    journal.contextMenu()->popup(QPoint(0, 0));
    QStringList off;
    for (const QString &name : itemNames(journal))
        if (!journal.menuAction(name)->isEnabled())
            off << name;
    journal.contextMenu()->hide();
    off.sort();
    return off;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

struct Case {
    const char *what;
    std::function<void(EditingBook &)> setUp;
    QStringList disabled;
};

const QStringList NothingDone{QStringLiteral("mnuUndo"), QStringLiteral("mnuRedo"), QStringLiteral("mnuSave")};

QStringList plus(QStringList a, const QStringList &b)
{
    return a << b;
}

} // namespace

TEST(MenuState, ItemsAreEnabledExactlyWhenTheyCanRunOnTheRowAndBook)
{
    QGuiApplication::clipboard()->setText(QStringLiteral("12"));
    const QList<Case> cases = {
        {"a record row",
         [](EditingBook &b) { b.grid->setCursor(2, b.col("Explain")); },
         plus(NothingDone, {QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuRemoveDoc")})},
        {"the opening row: nothing above it, no voucher for it",
         [](EditingBook &b) { b.grid->setCursor(1, b.col("Explain")); },
         plus(NothingDone, {QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuRemoveDoc"),
                            QStringLiteral("mnuInsertRows"), QStringLiteral("mnuDeleteRows"),
                            QStringLiteral("mnuInsSumRow"), QStringLiteral("mnuAccDoc"),
                            QStringLiteral("mnuDocSelect"), QStringLiteral("mnuMakeDoc"),
                            QStringLiteral("mnuCut"), QStringLiteral("mnuClear"), QStringLiteral("mnuPaste")})},
        {"a summary row",
         [](EditingBook &b) {
             ASSERT_TRUE(b.journal->InsSumRow(3));
             b.grid->setCursor(4, b.col("Explain"));
         },
         // Deleting it alone reopens the rows it closed; nothing opens above it.
         {QStringLiteral("mnuRedo"), QStringLiteral("mnuRemoveDoc"), QStringLiteral("mnuAccDoc"),
          QStringLiteral("mnuDocSelect"), QStringLiteral("mnuMakeDoc"), QStringLiteral("mnuCut"),
          QStringLiteral("mnuClear"), QStringLiteral("mnuPaste"), QStringLiteral("mnuInsertRows"),
          QStringLiteral("mnuRenumber")}},
        {"a record closed by a summary row below it",
         [](EditingBook &b) {
             ASSERT_TRUE(b.journal->InsSumRow(3));
             b.grid->setCursor(3, b.col("Explain"));
         },
         {QStringLiteral("mnuRedo"), QStringLiteral("mnuRemoveDoc"), QStringLiteral("mnuRemoveSumRow"),
          QStringLiteral("mnuCut"), QStringLiteral("mnuClear"), QStringLiteral("mnuPaste"),
          QStringLiteral("mnuInsertRows"), QStringLiteral("mnuDeleteRows"), QStringLiteral("mnuRenumber")}},
        {"closed records with the summary row below them: a summary row goes only alone",
         [](EditingBook &b) {
             ASSERT_TRUE(b.journal->InsSumRow(3));
             b.grid->select(2, b.col("Explain"), 4, b.col("Explain"));
         },
         {QStringLiteral("mnuRedo"), QStringLiteral("mnuRemoveDoc"), QStringLiteral("mnuRemoveSumRow"),
          QStringLiteral("mnuCut"), QStringLiteral("mnuClear"), QStringLiteral("mnuPaste"),
          QStringLiteral("mnuInsertRows"), QStringLiteral("mnuDeleteRows"), QStringLiteral("mnuRenumber")}},
        {"closed records and an open one: the open one can go",
         [](EditingBook &b) {
             ASSERT_TRUE(b.journal->InsSumRow(2));
             b.grid->select(2, b.col("Explain"), 4, b.col("Explain"));
         },
         {QStringLiteral("mnuRedo"), QStringLiteral("mnuRemoveDoc"), QStringLiteral("mnuRemoveSumRow"),
          QStringLiteral("mnuInsertRows"), QStringLiteral("mnuPaste")}},
        {"a record linked to a voucher",
         [](EditingBook &b) {
             b.grid->setText(2, QStringLiteral("DirID"), QStringLiteral("9"));
             b.grid->setCursor(2, b.col("Explain"));
         },
         plus(NothingDone, {QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuDocSelect"),
                            QStringLiteral("mnuMakeDoc"), QStringLiteral("mnuCut"), QStringLiteral("mnuClear"),
                            QStringLiteral("mnuPaste"), QStringLiteral("mnuDeleteRows"), QStringLiteral("mnuRenumber")})},
        {"the empty row waiting at the bottom",
         [](EditingBook &b) { b.grid->setCursor(b.grid->rows() - 1, b.col("Explain")); },
         plus(NothingDone, {QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuRemoveDoc"),
                            QStringLiteral("mnuInsSumRow"), QStringLiteral("mnuAccDoc"),
                            QStringLiteral("mnuDocSelect"), QStringLiteral("mnuMakeDoc")})},
        {"a record after an edit: undo and save",
         [](EditingBook &b) {
             ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("收到货款（改）")));
             b.grid->setCursor(2, b.col("Explain"));
         },
         {QStringLiteral("mnuRedo"), QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuRemoveDoc")}},
        {"a record while the host allows no changes",
         [](EditingBook &b) {
             b.journal->setAllowModify(false);
             b.grid->setCursor(2, b.col("Explain"));
         },
         plus(NothingDone, {QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuRemoveDoc"),
                            QStringLiteral("mnuCut"), QStringLiteral("mnuClear"), QStringLiteral("mnuPaste"),
                            QStringLiteral("mnuInsertRows"), QStringLiteral("mnuDeleteRows"),
                            QStringLiteral("mnuRenumber"), QStringLiteral("mnuDelHistory"),
                            QStringLiteral("mnuInsSumRow"), QStringLiteral("mnuCloseBook"),
                            QStringLiteral("mnuDocSelect"), QStringLiteral("mnuExplainMemo")})},
        {"an empty clipboard: paste has nothing to enter",
         [](EditingBook &b) {
             QGuiApplication::clipboard()->clear();
             b.grid->setCursor(2, b.col("Explain"));
         },
         plus(NothingDone, {QStringLiteral("mnuRemoveSumRow"), QStringLiteral("mnuRemoveDoc"),
                            QStringLiteral("mnuPaste")})},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        QGuiApplication::clipboard()->setText(QStringLiteral("12"));
        EditingBook b;
        ASSERT_GT(b.grid->rows(), 5);
        c.setUp(b);
        EXPECT_EQ(disabledItems(*b.journal), sorted(c.disabled));
    }
}

TEST(MenuState, AConsolidatedOrEmptyBookOffersOnlyWhatReadsIt)
{
    kxtest::TestDatabase db(kxtest::Engine::Sqlite);
    kx::Database conn = db.open();
    const int bottom = kxtest::fillSampleBooks(conn, 60, 2);
    ASSERT_GT(bottom, 0);
    const int parent = kx::sqlScalar(conn, {QStringLiteral("Select asID From kxJournal Where AssistCode='0201'"), {}})
                           .valueOr(QVariant())
                           .toInt();
    kxtest::BookBuilder builder(conn);
    const int empty = builder.book(QStringLiteral("0299"), QStringLiteral("空账簿"));
    kx::SqlAccContext acc(db.open());
    acc.setBeginDate(QDate(2025, 1, 1));
    kx::Journal journal;
    journal.setAcc(&acc);
    journal.setAsker([](const QString &, const QString &) { return false; });

    journal.setIsPackedJnl(true);
    ASSERT_TRUE(journal.Load(parent));
    journal.Grid()->setCursor(3, journal.Grid()->colIndex(QStringLiteral("Explain")));
    const QStringList reading{QStringLiteral("mnuCopy"),     QStringLiteral("mnuCheckBook"), QStringLiteral("mnuStatistics"),
                              QStringLiteral("mnuRecalc"),   QStringLiteral("mnuFind"),      QStringLiteral("mnuExport"),
                              QStringLiteral("mnuPrint"),    QStringLiteral("mnuPackJnl"),   QStringLiteral("mnuRefresh"),
                              QStringLiteral("mnuDefaultFormat"), QStringLiteral("mnuFieldShow"),
                              QStringLiteral("mnuSideTask"), QStringLiteral("mnuDocSelect"), QStringLiteral("mnuDailyReport"),
                              // How vouchers are grouped is a setting: it changes nothing in the book.
                              QStringLiteral("mnuVoucherPerRecord"), QStringLiteral("mnuVoucherPerType"),
                              QStringLiteral("mnuVoucherAllInOne")};
    QStringList off = itemNames(journal);
    for (const QString &on : reading)
        off.removeAll(on);
    EXPECT_EQ(disabledItems(journal), sorted(off)) << "consolidated: read-only, but a record may still be linked";

    journal.setIsPackedJnl(false);
    ASSERT_TRUE(journal.Load(empty));
    journal.Grid()->setCursor(journal.Grid()->fixedRows(), 1);
    const QStringList disabled = disabledItems(journal);
    for (const char *name : {"mnuCloseBook", "mnuCheckBook", "mnuStatistics", "mnuMakeDoc", "mnuRemoveSumRow",
                             "mnuSave", "mnuUndo"})
        EXPECT_TRUE(disabled.contains(QLatin1String(name))) << name << " on an empty book";
    for (const char *name : {"mnuFind", "mnuRefresh", "mnuDefaultFormat", "mnuFieldShow"})
        EXPECT_FALSE(disabled.contains(QLatin1String(name))) << name << " on an empty book";
}

TEST(MenuState, ItemsShowTheirKeysAndStayCurrentWithoutTheMenuShowing)
{
    EditingBook b;
    const QList<QPair<const char *, const char *>> keys = {
        {"mnuCopy", "Ctrl+C"}, {"mnuCut", "Ctrl+X"},        {"mnuPaste", "Ctrl+V"}, {"mnuDeleteRows", "Del"},
        {"mnuInsertRows", "Ins"}, {"mnuFind", "Ctrl+F"}, {"mnuSave", "Ctrl+S"},   {"mnuUndo", "Ctrl+Z"},
        {"mnuRedo", "Ctrl+Y"},   {"mnuRefresh", "F5"}};
    for (const auto &[name, key] : keys)
        EXPECT_EQ(b.journal->menuAction(QLatin1String(name))->shortcut(), QKeySequence(QLatin1String(key))) << name;

    // A host's toolbar shows the same actions: they follow the book as it changes.
    QAction *save = b.journal->menuAction(QStringLiteral("mnuSave"));
    EXPECT_FALSE(save->isEnabled());
    ASSERT_TRUE(b.type(2, "Explain", QStringLiteral("改过")));
    QCoreApplication::processEvents();
    EXPECT_TRUE(save->isEnabled());
    ASSERT_TRUE(b.journal->Save());
    QCoreApplication::processEvents();
    EXPECT_FALSE(save->isEnabled());

    // The groups, in the order a bookkeeper reads them, separated.
    QStringList groups;
    QString current;
    for (QAction *a : b.journal->contextMenu()->actions()) {
        if (a->isSeparator())
            current.clear();
        else if (current.isEmpty())
            groups << (current = a->objectName());
    }
    EXPECT_EQ(groups, (QStringList{QStringLiteral("mnuUndo"), QStringLiteral("mnuInsertRows"), QStringLiteral("mnuSave"),
                                   QStringLiteral("mnuAccDoc"), QStringLiteral("mnuFind"), QStringLiteral("mnuPackJnl")}));
}
