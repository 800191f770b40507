// The same text typed into a cell, chosen in a picker or pasted ends the
// same: the row's cells, its change mark, the cell's colour, the book's dirty
// flag and the reason of a refusal.
#include "QtPrinters.h"
#include "editing/EditSession.h"
#include "editing/EditingBook.h"

#include <kxjournal/EditCycle.h>

#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

enum class Path { Typing, Picker, Paste };

const char *pathName(Path p)
{
    return p == Path::Typing ? "typed" : p == Path::Picker ? "picked" : "pasted";
}

struct Outcome {
    QStringList cells;  ///< the row's texts by meaning
    int rows = 0;
    int mark = 0;
    QColor colour;
    bool dirty = false;
    QString message;
};

// One cell as a spreadsheet puts it on the clipboard: quoted when it holds
// a tab, a line break or a quote, and ended by a line break (so an empty
// cell is one empty field).
QString clipboardField(const QString &text)
{
    const QString crlf = QStringLiteral("\r\n");
    if (!text.contains(QLatin1Char('\t')) && !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')) &&
        !text.contains(QLatin1Char('"')))
        return text + crlf;
    return QLatin1Char('"') + QString(text).replace(QLatin1String("\""), QLatin1String("\"\"")) + QLatin1Char('"') + crlf;
}

// The reasons a paste gives for its refused cells, each without the
// "第3行 日期“…”：" that names the cell.
QString pasteReasons(const QStringList &boxes)
{
    QStringList reasons;
    for (const QString &box : boxes) {
        const QStringList lines = box.split(QStringLiteral("\r\n"));
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype at = lines.at(i).indexOf(QStringLiteral("”："));
            reasons << (at < 0 ? lines.at(i) : lines.at(i).mid(at + 2));
        }
    }
    return reasons.join(QLatin1Char('\n'));
}

Outcome enter(EditingBook &b, Path path, int row, const char *key, const QString &text)
{
    EXPECT_TRUE(b.journal->Load(b.book));
    // Every path starts from the balances worked out, so each shows only
    // what the entry itself moved.
    kxtest::runMenuItem(*b.journal, "mnuRecalc");
    b.said.clear();
    b.boxes.clear();
    const int col = b.col(key);
    switch (path) {
    case Path::Typing:
        b.type(row, key, text);
        break;
    case Path::Picker: {
        auto *session = b.journal->findChild<kx::EditSession *>();
        EXPECT_NE(session, nullptr);
        if (session)
            session->applyChosen(row, col, text);
        break;
    }
    case Path::Paste:
        b.grid->setCursor(row, col);
        b.journal->pasteText(clipboardField(text));
        break;
    }
    Outcome out;
    for (const char *k : {"ShowName", "JnlDate", "AccName", "AccCode", "AccID", "Explain", "Debit", "Credit", "Rate",
                          "Forex", "Balance"})
        out.cells << b.text(row, k);
    out.rows = b.grid->rows();
    out.mark = b.grid->rowData(row).toInt();
    out.colour = b.grid->cellForeColor(row, col);
    out.dirty = b.journal->IsDirty();
    out.message = path == Path::Paste ? pasteReasons(b.boxes) : b.said.join(QLatin1Char('\n'));
    return out;
}

enum Expect { Stored, Unchanged, Refused };

struct Case {
    const char *key;
    QString text;
    Expect expect;
    bool pickerSkipsBounds = false;  ///< a picked date is not held to the open months
};

} // namespace

TEST(OneEditPath, TypedPickedAndPastedTextsEndTheSame)
{
    EditingBook b;
    b.journal->setModifiedForeColor(QColor(200, 0, 0));
    ASSERT_TRUE(b.journal->setColumnVisible(QStringLiteral("Rate"), true));
    // Row 3 as loaded: 2025-01-10, 应付账款, "付材料款", credit 200.
    const int row = 3;
    const std::vector<Case> cases = {
        {"ShowName", QStringLiteral("2025-01-20"), Stored},
        {"ShowName", QStringLiteral("0120"), Stored},
        {"ShowName", QStringLiteral("20"), Stored},
        {"ShowName", QStringLiteral("2025年1月20日"), Stored},
        {"ShowName", QStringLiteral(" 2025/1/20 "), Stored},
        {"ShowName", QStringLiteral("2025-01-10"), Unchanged},
        {"ShowName", QStringLiteral("2026-03-01"), Refused, true},
        {"ShowName", QStringLiteral("日期"), Refused},
        {"ShowName", QString(), Refused},
        {"ShowName", QStringLiteral("   "), Refused},
        {"AccName", QStringLiteral("1122"), Stored},
        {"AccName", QStringLiteral("管理费用"), Stored},
        {"AccName", QStringLiteral("yszk"), Stored},
        {"AccName", QStringLiteral("应付账款/工商银行"), Stored},
        {"AccName", QStringLiteral(" glfy "), Stored},
        {"AccName", QStringLiteral("没有这个科目"), Refused},
        {"AccName", QString(), Refused},
        {"Explain", QStringLiteral("收到"), Stored},
        {"Explain", QStringLiteral("  收到  "), Stored},
        {"Explain", QStringLiteral("收\t到\r\n货款\u0007"), Stored},
        {"Explain", QString(), Stored},
        {"Explain", QStringLiteral("   "), Stored},
        {"Explain", QStringLiteral("付材料款"), Unchanged},
        {"Credit", QStringLiteral("12*3+4"), Stored},
        {"Credit", QStringLiteral("1,234.56"), Stored},
        {"Credit", QStringLiteral("0.1+0.2"), Stored},
        {"Credit", QStringLiteral("1.005"), Stored},
        {"Credit", QString(), Stored},
        {"Credit", QStringLiteral("(5"), Refused},
        {"Credit", QStringLiteral("98765432109876.5432"), Refused},
        {"Debit", QStringLiteral("100"), Stored},
        {"Rate", QStringLiteral("1/8"), Stored},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.key) + " \"" + c.text.toStdString() + "\"");
        const Outcome typed = enter(b, Path::Typing, row, c.key, c.text);
        EXPECT_EQ(typed.mark == 2, c.expect == Stored) << "typing stores it or not as the case says";
        EXPECT_EQ(typed.message.isEmpty(), c.expect != Refused) << "a refusal says why, and only a refusal";
        for (Path path : {Path::Picker, Path::Paste}) {
            if (path == Path::Picker && c.pickerSkipsBounds)
                continue;
            const Outcome other = enter(b, path, row, c.key, c.text);
            SCOPED_TRACE(pathName(path));
            EXPECT_EQ(other.cells, typed.cells);
            EXPECT_EQ(other.rows, typed.rows);
            EXPECT_EQ(other.mark, typed.mark);
            EXPECT_EQ(other.colour, typed.colour);
            EXPECT_EQ(other.dirty, typed.dirty);
            EXPECT_EQ(other.message, typed.message);
        }
    }

    // A picked date is not held to the open months; typed and pasted, it is.
    const Outcome picked = enter(b, Path::Picker, row, "ShowName", QStringLiteral("2026-03-01"));
    EXPECT_EQ(picked.cells.at(1), QStringLiteral("2026-03-01"));
    EXPECT_EQ(picked.mark, 2);
}
