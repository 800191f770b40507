// Copying blocks out as spreadsheet text, pasting them back through the
// same checks as typing, clearing.
#include "data/SqlAccess.h"
#include "editing/EditingBook.h"
#include "rows/GridClipboard.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>

#include <QRandomGenerator>
#include <QPointer>
#include <QCoreApplication>
#include <algorithm>
#include <gtest/gtest.h>

using kxtest::EditingBook;
using kxtest::Engine;

using kxtest::pasteLine;
using kxtest::pasteLineFrom;

namespace {

// Four hundred dated lines, "粘贴0" … "粘贴399": a paste long enough to report its progress.
QStringList longPaste(const EditingBook &b)
{
    QStringList lines;
    for (int i = 0; i < 400; ++i)
        lines << pasteLine(b, {{QStringLiteral("ShowName"), QStringLiteral("2025-01-20")},
                               {QStringLiteral("AccName"), QStringLiteral("1122")},
                               {QStringLiteral("Explain"), QStringLiteral("粘贴%1").arg(i)}});
    return lines;
}

} // namespace

TEST(Clipboard, AThousandRowsPasteWithTheTwoBadCellsNamed)
{
    EditingBook b;
    QStringList lines;
    for (int i = 0; i < 1000; ++i) {
        QMap<QString, QString> cells{{QStringLiteral("ShowName"), QStringLiteral("2025-01-%1").arg(16 + i % 15)},
                                     {QStringLiteral("AccName"), i % 2 ? QStringLiteral("1122") : QStringLiteral("glfy")},
                                     {QStringLiteral("Explain"), QStringLiteral("导入%1").arg(i)},
                                     {i % 2 ? QStringLiteral("Debit") : QStringLiteral("Credit"), QStringLiteral("10+2.5")}};
        if (i == 100)
            cells[QStringLiteral("ShowName")] = QStringLiteral("2025-13-40");
        if (i == 700)
            cells[QStringLiteral("AccName")] = QStringLiteral("没有这个科目");
        lines << pasteLine(b, cells);
    }
    QList<int> progress;
    QObject::connect(b.journal.get(), &kx::Journal::Process, [&](int p) { progress << p; });
    b.grid->setCursor(5, b.col("ShowName"));
    ASSERT_TRUE(b.journal->pasteText(lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")));

    EXPECT_EQ(b.grid->rows(), 5 + 1000 + 1) << "the book grew by the block and keeps its empty row";
    EXPECT_EQ(b.text(6, "AccName"), QStringLiteral("应收账款"));
    EXPECT_EQ(b.text(6, "Debit"), QStringLiteral("12.5")) << "formulas are worked out";
    EXPECT_EQ(b.text(5, "AccName"), QStringLiteral("管理费用")) << "entry codes find accounts";
    EXPECT_TRUE(b.text(105, "JnlDate").isEmpty()) << "the refused date was not written";
    EXPECT_EQ(b.text(105, "Explain"), QStringLiteral("导入100")) << "the rest of that row was";
    ASSERT_EQ(b.boxes.size(), 1);
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("第105行"))) << qPrintable(b.boxes.first());
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("2025-13-40")));
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("第705行")));
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("没有这个科目")));
    ASSERT_FALSE(progress.isEmpty());
    EXPECT_EQ(progress.first(), 0);
    EXPECT_EQ(progress.last(), -1);

    // 1250 brought down; debits and credits of 12.5 cancel, except the credit
    // of the undated row, which no balance counts yet.
    const int last = 1004;
    EXPECT_EQ(b.grid->amount(last, b.col("Balance")), kx::Currency::fromRaw(12625000));
    EXPECT_TRUE(b.journal->IsDirty());

    // The row whose date was refused holds a record: the save stops and names it.
    b.said.clear();
    EXPECT_FALSE(b.journal->Save());
    EXPECT_TRUE(b.said.join(QLatin1Char('\n')).contains(QStringLiteral("第105行有内容但没有日期")))
        << qPrintable(b.said.join(QLatin1Char('\n')));
    kx::Database db = b.db->open();
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs"), {}}).value().toInt(), 4);
    ASSERT_TRUE(b.type(105, "ShowName", QStringLiteral("2025-01-26")));
    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs"), {}}).value().toInt(), 4 + 1000);

    ASSERT_TRUE(b.journal->Load(b.book));
    b.grid->setCursor(5, b.col("Explain"));
    const int rows = b.grid->rows();
    ASSERT_TRUE(b.journal->pasteText(QStringLiteral("改")));
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.grid->rows(), rows);
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("导入0")) << "a paste is one undo step";
}

// A host that inserts a row from a progress report of a long paste moves
// the rows under it: the paste stops there and says so, rather than going on
// into rows that are no longer the ones it was given; what it pasted is one
// undo step still, and no row it grew for lines it never reached is left.
TEST(Clipboard, ALongPasteStopsWhenTheHostMovesRowsUnderIt)
{
    EditingBook b;
    const QStringList lines = longPaste(b);
    const int rows = b.grid->rows();
    const QString above = b.text(4, "Explain");
    bool inserted = false;
    QObject::connect(b.journal.get(), &kx::Journal::Process, [&](int p) {
        if (p >= 50 && !inserted) {
            inserted = true;
            b.grid->insertRowAt(4);
        }
    });
    b.grid->setCursor(5, b.col("ShowName"));
    b.journal->pasteText(lines.join(QStringLiteral("\r\n")));
    ASSERT_TRUE(inserted);
    EXPECT_TRUE(b.boxes.join(QLatin1Char('\n')).contains(QStringLiteral("粘贴时表格被改动")))
        << qPrintable(b.boxes.join(QLatin1Char('\n')) + b.said.join(QLatin1Char('\n')));
    int pasted = 0;
    for (int r = b.grid->fixedRows(); r < b.grid->rows(); ++r)
        pasted += b.text(r, "Explain").startsWith(QStringLiteral("粘贴")) ? 1 : 0;
    EXPECT_GT(pasted, 0);
    EXPECT_LT(pasted, 400) << "nothing was pasted after the rows moved";
    // Each pasted line is where the paste put it: in order, one after another;
    // the rows grown for lines it never reached are gone again.
    int expected = 0, lastPasted = -1;
    for (int r = b.grid->fixedRows(); r < b.grid->rows(); ++r) {
        if (!b.text(r, "Explain").startsWith(QStringLiteral("粘贴")))
            continue;
        EXPECT_EQ(b.text(r, "Explain"), QStringLiteral("粘贴%1").arg(expected++)) << "row " << r;
        lastPasted = r;
    }
    EXPECT_LE(b.grid->rows(), std::max(rows + 2, lastPasted + 2)) << "rows grown for lines never pasted are left";
    EXPECT_EQ(b.text(4, "Explain"), QString()) << "the host's row";
    EXPECT_EQ(b.text(5, "Explain"), above);
    ASSERT_TRUE(b.journal->undo());
    EXPECT_EQ(b.grid->rows(), rows);

    // Changed at the first report, before a line went in: nothing is pasted.
    QObject::disconnect(b.journal.get(), &kx::Journal::Process, nullptr, nullptr);
    QObject::connect(b.journal.get(), &kx::Journal::Process, [&](int p) {
        if (p == 0)
            b.grid->insertRowAt(4);
    });
    b.boxes.clear();
    b.grid->setCursor(5, b.col("ShowName"));
    EXPECT_FALSE(b.journal->pasteText(lines.join(QStringLiteral("\r\n"))));
    EXPECT_EQ(b.boxes, QStringList{QStringLiteral("粘贴时表格被改动，没有粘贴。")});
    EXPECT_EQ(b.grid->rows(), rows + 1) << "the host's row alone";
    for (int r = b.grid->fixedRows(); r < b.grid->rows(); ++r)
        EXPECT_FALSE(b.text(r, "Explain").startsWith(QStringLiteral("粘贴"))) << "row " << r;
}

TEST(Clipboard, ClosedAndSummaryRowsAreNeverWritten)
{
    EditingBook b;
    ASSERT_TRUE(b.journal->InsSumRow(3));  // rows 1–4 closed, row 4 the sub-total
    b.grid->setCursor(3, b.col("Explain"));
    EXPECT_TRUE(b.journal->pasteText(QStringLiteral("甲\n乙\n丙")));
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));
    EXPECT_EQ(b.text(4, "Explain").right(2), QStringLiteral("小结"));
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("丙")) << "the open row below takes its line";
    EXPECT_TRUE(b.boxes.last().contains(QStringLiteral("第3行"))) << qPrintable(b.boxes.last());

    bool yes = false;
    b.journal->setAsker([&](const QString &, const QString &title) { return title == QStringLiteral("清除") && yes; });
    b.grid->select(3, b.col("Explain"), 5, b.col("Explain"));
    kxtest::runMenuItem(*b.journal, "mnuClear");
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("丙")) << "No keeps everything";
    yes = true;
    kxtest::runMenuItem(*b.journal, "mnuClear");
    EXPECT_TRUE(b.text(5, "Explain").isEmpty());
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付材料款"));
}

TEST(Clipboard, CopiedBlocksReadBackCellForCell)
{
    kx::Sheet g;
    g.setCols(6);
    g.setRows(9);
    QRandomGenerator rng(11);
    const QString alphabet = QStringLiteral("ab1 \t\n\r\"，,摘要");
    for (int round = 0; round < 300; ++round) {
        for (int r = 1; r < 9; ++r)
            for (int c = 1; c < 6; ++c) {
                QString t;
                for (int k = int(rng.bounded(6)); k > 0; --k)
                    t += alphabet.at(int(rng.bounded(int(alphabet.size()))));
                g.setText(r, c, t);
            }
        g.select(1, 1, 8, 5);
        const QList<QStringList> back = kx::GridClipboard::parse(kx::GridClipboard::selectedText(g));
        ASSERT_EQ(back.size(), 8) << "round " << round;
        for (int r = 1; r < 9; ++r)
            for (int c = 1; c < 6; ++c) {
                // A lone CR inside a cell comes back as it went.
                ASSERT_EQ(back.at(r - 1).value(c - 1), g.text(r, c)) << "round " << round << " cell " << r << "," << c;
            }
    }
    EXPECT_TRUE(kx::GridClipboard::parse(QString()).isEmpty());
    EXPECT_EQ(kx::GridClipboard::parse(QStringLiteral("a\tb\r\nc")),
              (QList<QStringList>{{QStringLiteral("a"), QStringLiteral("b")}, {QStringLiteral("c")}}));
    // Whatever a clipboard holds reads without harm.
    for (int round = 0; round < 2000; ++round) {
        QString t;
        for (int k = int(rng.bounded(40)); k > 0; --k)
            t += alphabet.at(int(rng.bounded(int(alphabet.size()))));
        kx::GridClipboard::parse(t);
    }
}

namespace {

class PastedAmounts : public ::testing::TestWithParam<Engine>
{
};


} // namespace

TEST_P(PastedAmounts, CellsThatAreNoAmountsAreNamedAndKeepWhatTheyHeld)
{
    EditingBook b(GetParam());
    b.grid->setCursor(2, b.col("Debit"));
    const QString block = pasteLineFrom(b, "Debit", {{QStringLiteral("Debit"), QStringLiteral("12元")}}) + QStringLiteral("\r\n") +
                          pasteLineFrom(b, "Debit", {{QStringLiteral("Credit"), QStringLiteral("(5")}}) + QStringLiteral("\r\n") +
                          pasteLineFrom(b, "Debit", {{QStringLiteral("Credit"), QStringLiteral("#溢出")}}) + QStringLiteral("\r\n");
    EXPECT_FALSE(b.journal->pasteText(block));
    EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("200"));
    EXPECT_EQ(b.text(4, "Credit"), QStringLiteral("50"));
    ASSERT_EQ(b.boxes.size(), 1);
    for (const char *cell : {"第2行 借方金额“12元”：公式计算错误。", "第3行 贷方金额“(5”：公式计算错误。",
                             "第4行 贷方金额“#溢出”：公式计算错误。"})
        EXPECT_TRUE(b.boxes.first().contains(QString::fromUtf8(cell))) << qPrintable(b.boxes.first());
    EXPECT_FALSE(b.journal->IsDirty());

    b.grid->setCursor(3, b.col("Debit"));
    EXPECT_TRUE(b.journal->pasteText(pasteLineFrom(b, "Debit", {{QStringLiteral("Credit"), QStringLiteral("1,234.56")}})));
    EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("1234.56")) << "a figure as spreadsheets show it";
    EXPECT_EQ(b.boxes.size(), 1);

    ASSERT_TRUE(b.journal->Save());
    EXPECT_EQ(kxtest::storedAmount(b, 2, "Debit"), kx::Currency::fromUnits(500));
    EXPECT_EQ(kxtest::storedAmount(b, 3, "Credit"), kx::Currency::fromRaw(12345600));
    EXPECT_EQ(kxtest::storedAmount(b, 4, "Credit"), kx::Currency::fromUnits(50));
}

TEST_P(PastedAmounts, FiguresTheEngineCannotHoldExactlyAreRefused)
{
    EditingBook b(GetParam());
    const bool sqlite = GetParam() == Engine::Sqlite;
    b.grid->setCursor(2, b.col("Debit"));
    // Row 2 on its own is past 15 digits; row 3's figure fits, but the
    // balance it leads to does not.
    const QString block = pasteLineFrom(b, "Debit", {{QStringLiteral("Debit"), QStringLiteral("98765432109876.5432")}}) +
                          QStringLiteral("\n") +
                          pasteLineFrom(b, "Debit", {{QStringLiteral("Debit"), QStringLiteral("99999999999.9999")}}) +
                          QStringLiteral("\n") + pasteLineFrom(b, "Debit", {{QStringLiteral("Credit"), QStringLiteral("1")}});
    b.journal->pasteText(block);
    if (sqlite) {
        EXPECT_EQ(b.text(2, "Debit"), QStringLiteral("500"));
        EXPECT_EQ(b.text(3, "Credit"), QStringLiteral("200"));
        EXPECT_EQ(b.text(3, "Debit"), QString());
        ASSERT_EQ(b.boxes.size(), 1);
        EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("第2行 借方金额“98765432109876.5432”：“98765432109876.5432”超出了"
                                                            "账簿能准确保存的位数（最多15位有效数字）。")))
            << qPrintable(b.boxes.first());
        EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("第3行 借方金额“99999999999.9999”：这样输入后，第3行的余额超出了"
                                                            "账簿能准确保存的位数（最多15位有效数字）。")))
            << qPrintable(b.boxes.first());
    } else {
        EXPECT_TRUE(b.boxes.isEmpty());
        EXPECT_EQ(b.text(3, "Debit"), QStringLiteral("99999999999.9999"));
    }
    EXPECT_EQ(b.text(4, "Credit"), QStringLiteral("1")) << "the rest of the block goes in";
    QStringList shown;
    for (int r = 1; r < b.grid->rows(); ++r)
        shown << b.text(r, "Debit") << b.text(r, "Credit") << b.text(r, "Balance");
    ASSERT_TRUE(b.journal->Save());
    ASSERT_TRUE(b.journal->Load(b.book));
    QStringList back;
    for (int r = 1; r < b.grid->rows(); ++r)
        back << b.text(r, "Debit") << b.text(r, "Credit") << b.text(r, "Balance");
    EXPECT_EQ(back, shown);
    EXPECT_TRUE(b.type(3, "Explain", QStringLiteral("改"))) << "no row comes back closed";
}

INSTANTIATE_TEST_SUITE_P(Engines, PastedAmounts, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const auto &info) { return kxtest::engineName(info.param); });

TEST(Clipboard, LineBreaksAndTabsInsideAPastedCellBecomeBlanks)
{
    EditingBook b;
    b.grid->setCursor(2, b.col("Explain"));
    ASSERT_TRUE(b.journal->pasteText(QStringLiteral("\"收到\n货款\"\r\n\"付\r\n材料\t款\"\r\n")));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收到 货款"));
    EXPECT_EQ(b.text(3, "Explain"), QStringLiteral("付 材料 款"));
    EXPECT_EQ(b.journal->ExplainHistory(), QString()) << "the typed list is not filled by a paste";
}

// An edit a host makes from the save's last progress report, or from
// its "已存储" message, is stored or leaves the book dirty, and the last
// dirtyChanged the host hears says what IsDirty() says.
TEST(Clipboard, AnEditAtTheEndOfASaveIsNotTakenForStored)
{
    for (int when = 0; when < 2; ++when) {
        SCOPED_TRACE(when == 0 ? "at Process(-1)" : "at the 已存储 message");
        EditingBook b;
        ASSERT_TRUE(b.type(3, "Explain", QStringLiteral("先改的")));
        ASSERT_TRUE(b.journal->IsDirty());
        const int key = b.text(2, "RecID").toInt();
        ASSERT_GT(key, 0);
        bool done = false, typed = false;
        const auto meddle = [&] {
            if (done)
                return;
            done = true;
            typed = b.type(2, "Explain", QStringLiteral("存储结束时改的"));
        };
        QObject::connect(b.journal.get(), &kx::Journal::Process, [&](int p) {
            if (when == 0 && p == -1)
                meddle();
        });
        QObject::connect(b.journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) {
            if (when == 1 && m.startsWith(QStringLiteral("已存储")))
                meddle();
        });
        QList<bool> heard;
        QObject::connect(b.journal.get(), &kx::Journal::dirtyChanged, [&](bool d) { heard << d; });
        ASSERT_TRUE(b.journal->Save());
        ASSERT_TRUE(done);
        ASSERT_TRUE(typed);
        const QString stored =
            kx::sqlScalar(b.acc->Connection(), {QStringLiteral("Select Explain From kxJournalRecs Where RecID=?"), {key}})
                .valueOr(QVariant())
                .toString();
        EXPECT_TRUE(stored == QStringLiteral("存储结束时改的") || b.journal->IsDirty())
            << "the edit is neither stored nor does the book say it is dirty";
        ASSERT_FALSE(heard.isEmpty());
        EXPECT_EQ(heard.last(), b.journal->IsDirty()) << "the host was last told something else than IsDirty()";
    }
}

// An edit a host makes from a load's reports after the book is in
// (progress 100, "已读入", -1) stays a change the book says it holds.
TEST(Clipboard, AnEditAtTheEndOfALoadKeepsTheBookDirty)
{
    for (int when = 0; when < 3; ++when) {
        SCOPED_TRACE(when);
        EditingBook b;
        bool done = false, typed = false;
        const auto meddle = [&] {
            if (done)
                return;
            done = true;
            typed = b.type(2, "Explain", QStringLiteral("读入时改的"));
        };
        QObject::connect(b.journal.get(), &kx::Journal::Process, [&](int p) {
            if ((when == 0 && p == 100) || (when == 2 && p == -1))
                meddle();
        });
        QObject::connect(b.journal.get(), &kx::Journal::Notify, [&](const QString &m, bool) {
            if (when == 1 && m.startsWith(QStringLiteral("已读入")))
                meddle();
        });
        QList<bool> heard;
        QObject::connect(b.journal.get(), &kx::Journal::dirtyChanged, [&](bool d) { heard << d; });
        ASSERT_TRUE(b.journal->Load(b.book));
        ASSERT_TRUE(done);
        if (b.text(2, "Explain") == QStringLiteral("读入时改的")) {
            EXPECT_TRUE(b.journal->IsDirty());
            EXPECT_TRUE(b.grid->isRowTouched(2));
            if (!heard.isEmpty())
                EXPECT_TRUE(heard.last());
        }
    }
}

// A paste that pasted nothing because the host changed the grid at
// its first report leaves no "粘贴" undo step that takes the host's change away.
TEST(Clipboard, ANoPasteLeavesNoUndoStepOfTheHostsChange)
{
    EditingBook b;
    const QStringList lines = longPaste(b);
    const int rows = b.grid->rows();
    QObject::connect(b.journal.get(), &kx::Journal::Process, [&](int p) {
        if (p == 0)
            b.grid->insertRowAt(4);
    });
    b.grid->setCursor(5, b.col("ShowName"));
    EXPECT_FALSE(b.journal->pasteText(lines.join(QStringLiteral("\r\n"))));
    ASSERT_EQ(b.grid->rows(), rows + 1);
    if (b.journal->undo())
        EXPECT_EQ(b.grid->rows(), rows + 1) << "undoing the paste that pasted nothing took the host's row away";
}

// The host deletes the control from a report in the middle or at
// the end of a long paste, a save and a load (run under ASan).
TEST(Clipboard, TheHostMayDeleteTheControlFromAnyReport)
{
    struct Run {
        const char *what;
        int at;
    };
    for (const Run run : {Run{"paste", 0}, Run{"paste", 50}, Run{"paste", -1}, Run{"save", 0}, Run{"save", 50},
                          Run{"save", -1}, Run{"load", 30}, Run{"load", 100}, Run{"load", -1}, Run{"loadmsg", 0},
                          Run{"savemsg", 0}}) {
        SCOPED_TRACE(std::string(run.what) + " " + std::to_string(run.at));
        EditingBook b;
        const QStringList lines = longPaste(b);
        const std::string what = run.what;
        if (what.rfind("save", 0) == 0) {
            b.grid->setCursor(5, b.col("ShowName"));
            ASSERT_TRUE(b.journal->pasteText(lines.join(QStringLiteral("\r\n"))));
        }
        QPointer<kx::Journal> j = b.journal.release();
        bool fired = false;
        QObject::connect(j.data(), &kx::Journal::Process, [&](int p) {
            if (!fired && p == run.at && what.find("msg") == std::string::npos) {
                fired = true;
                delete j.data();
            }
        });
        QObject::connect(j.data(), &kx::Journal::Notify, [&](const QString &m, bool) {
            if (!fired && ((what == "loadmsg" && m.startsWith(QStringLiteral("已读入"))) ||
                           (what == "savemsg" && m.startsWith(QStringLiteral("已存储"))))) {
                fired = true;
                delete j.data();
            }
        });
        if (what == "paste") {
            kx::Sheet::of(j->Grid())->setCursor(5, b.col("ShowName"));
            j->pasteText(lines.join(QStringLiteral("\r\n")));
        } else if (what.rfind("save", 0) == 0) {
            j->Save();
        } else {
            j->Load(b.book);
        }
        EXPECT_TRUE(fired);
        EXPECT_TRUE(j.isNull());
        delete j.data();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}
