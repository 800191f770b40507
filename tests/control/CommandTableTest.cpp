// The command table: names a host uses resolve, keys are bound exactly as
// the menu shows them, and pressing them runs the command.
#include "editing/EditingBook.h"
#include "ledger/CommandRegistry.h"

#include <kxjournal/GridView.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QFile>
#include <QLineEdit>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QShortcut>
#include <QTest>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

// The names of README's DoCommand table, each with whether it does something.
QMap<QString, bool> readmeCommands()
{
    QFile file(QStringLiteral(KX_README));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    const qsizetype from = text.indexOf(QStringLiteral("**`DoCommand` names**"));
    if (from < 0)
        return {};
    QMap<QString, bool> names;
    static const QRegularExpression line(QStringLiteral("^\\| `([A-Za-z]+)` \\| ([^|]*)\\|"),
                                         QRegularExpression::MultilineOption);
    auto it = line.globalMatch(text.mid(from, text.indexOf(QStringLiteral("\n\n"), text.indexOf(QStringLiteral("|---"), from)) - from));
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        names.insert(m.captured(1), !m.captured(2).trimmed().startsWith(QStringLiteral("nothing")));
    }
    return names;
}

} // namespace

TEST(CommandTable, EveryLineIsReachableOnceByEachOfItsNamesAndKeys)
{
    QSet<QString> names, commands, keys;
    const std::vector<kx::CommandSpec> &table = kx::CommandRegistry::table();
    for (std::size_t i = 0; i < table.size(); ++i) {
        const kx::CommandSpec &line = table[i];
        const QString name = QString::fromUtf8(line.name), command = QString::fromUtf8(line.command),
                      key = QString::fromUtf8(line.keys);
        SCOPED_TRACE(i);
        EXPECT_EQ(std::size_t(line.id), i) << "an id is its line's index";
        EXPECT_FALSE(name.isEmpty() && command.isEmpty() && key.isEmpty()) << "nothing reaches the line";
        if (!name.isEmpty()) {
            EXPECT_FALSE(names.contains(name)) << name.toStdString();
            EXPECT_TRUE(name.startsWith(QLatin1String("mnu"))) << name.toStdString();
            EXPECT_FALSE(QString::fromUtf8(line.text).isEmpty() || QString::fromUtf8(line.group).isEmpty());
            names.insert(name);
        }
        if (!command.isEmpty()) {
            EXPECT_FALSE(commands.contains(command)) << command.toStdString();
            commands.insert(command);
        }
        if (!key.isEmpty()) {
            const QKeySequence sequence(key);
            EXPECT_EQ(sequence.count(), 1) << key.toStdString();
            EXPECT_EQ(sequence.toString(QKeySequence::PortableText), key) << "the keys read back as written";
            EXPECT_FALSE(keys.contains(key)) << key.toStdString();
            keys.insert(key);
        }
    }

    const QMap<QString, bool> readme = readmeCommands();
    EXPECT_GE(readme.size(), 8) << "the README's table was found";
    const kx::CommandRegistry registry;
    for (auto it = readme.cbegin(); it != readme.cend(); ++it)
        EXPECT_EQ(registry.byCommand(it.key()) != nullptr, it.value()) << it.key().toStdString();

    EditingBook b;
    for (const char *name :
         {"mnuAccDoc", "mnuDocSelect", "mnuRemoveDoc", "mnuPackJnl", "mnuSideTask", "mnuCopy", "mnuCut", "mnuPaste",
          "mnuClear", "mnuInsertRows", "mnuDeleteRows", "mnuRenumber", "mnuDelHistory", "mnuInsSumRow",
          "mnuRemoveSumRow", "mnuStatistics", "mnuCloseBook", "mnuCheckBook", "mnuRecalc", "mnuMakeDoc", "mnuFind",
          "mnuExport", "mnuPrint", "mnuRefresh", "mnuDefaultFormat", "mnuFieldShow"})
        EXPECT_NE(b.journal->menuAction(QLatin1String(name)), nullptr) << name;
}

TEST(CommandTable, KeysAreBoundAsTheMenuShowsThemAndRunTheirCommand)
{
    EditingBook b;
    b.journal->setAsker([](const QString &, const QString &) { return true; });
    b.journal->resize(900, 500);
    b.journal->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(b.journal.get()));

    // The control-wide keys: one binding per line, the same keys the menu
    // item shows, and no key answered that the table does not list.
    const QList<QShortcut *> shortcuts = b.journal->findChildren<QShortcut *>();
    QSet<QString> bound;
    for (const QShortcut *s : shortcuts)
        bound.insert(s->key().toString(QKeySequence::PortableText));
    EXPECT_EQ(int(bound.size()), int(shortcuts.size())) << "a key bound twice";
    for (const kx::CommandSpec &line : kx::CommandRegistry::table()) {
        const QString key = QString::fromUtf8(line.keys);
        if (*line.name)
            EXPECT_EQ(b.journal->menuAction(QString::fromUtf8(line.name))->shortcut(), QKeySequence(key)) << line.name;
        if (!key.isEmpty() && line.scope == kx::KeyScope::Journal)
            EXPECT_TRUE(bound.remove(key)) << key.toStdString() << " is not bound";
    }
    EXPECT_TRUE(bound.isEmpty()) << "bound outside the table: " << bound.values().join(u' ').toStdString();

    kx::GridView *view = b.journal->gridView();
    view->setFocus();
    b.grid->setCursor(3, b.col("Explain"));

    // Journal-wide keys: F5 asks the host before reading the book again.
    QStringList asked;
    QObject::connect(b.journal.get(), &kx::Journal::CommandExecute, b.journal.get(),
                     [&](const QString &name, bool &cancel) {
                         asked << name;
                         cancel = true;
                     });
    QTest::keyClick(view, Qt::Key_F5);
    EXPECT_EQ(asked, QStringList{QStringLiteral("Refresh")});

    // The grid's keys run on the grid, and leave a cell being edited alone.
    const int rows = b.grid->rows();
    QTest::keyClick(view, Qt::Key_Insert);
    EXPECT_EQ(b.grid->rows(), rows + 1);
    EXPECT_TRUE(b.text(3, "Explain").isEmpty());
    QTest::keyClick(view, Qt::Key_Delete);
    EXPECT_EQ(b.grid->rows(), rows);
    b.grid->select(2, b.col("Explain"), 2, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_X, Qt::ControlModifier);
    EXPECT_TRUE(b.text(2, "Explain").isEmpty());
    b.grid->setCursor(4, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(b.text(4, "Explain"), QStringLiteral("收到货款"));
    b.grid->select(4, b.col("Explain"), 4, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), b.journal->copyText());
    EXPECT_TRUE(b.journal->copyText().startsWith(QStringLiteral("收到货款")));

    b.grid->setCursor(2, b.col("Explain"));
    QTest::keyClick(view, Qt::Key_F2);
    ASSERT_NE(view->activeEditor(), nullptr);
    QTest::keyClick(view->activeEditor(), Qt::Key_Insert);
    QTest::keyClick(view->activeEditor(), Qt::Key_Delete);
    EXPECT_EQ(b.grid->rows(), rows);
    QTest::keyClick(view->activeEditor(), Qt::Key_Escape);

    // Ctrl+F opens the find bar.
    view->setFocus();
    QTest::keyClick(view, Qt::Key_F, Qt::ControlModifier);
    auto *text = b.journal->findChild<QLineEdit *>(QStringLiteral("findText"));
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(text->isVisible());
}
