// Finding rows by keywords: the host's FindMsg report, the pattern
// characters, and the find bar under the grid.
#include "editing/EditingBook.h"
#include "output/LikePattern.h"

#include <kxjournal/GridView.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>
#include <gtest/gtest.h>

using kx::LikePattern;
using kxtest::EditingBook;

namespace {

// The small bank book, with a voucher label on row 2, a JnlNo on row 3 and
// a row with no date label; the find results are kept as reported.
struct FindingBook : EditingBook {
    FindingBook()
    {
        grid->setText(2, col("AccDoc"), QStringLiteral("01-05记 12"));
        grid->setText(3, col("JnlNo"), QStringLiteral("007"));
        grid->setText(5, col("Explain"), QStringLiteral("备忘 付款"));
        QObject::connect(journal.get(), &kx::Journal::FindMsg, [this](const QString &m) { reported << m; });
    }
    // The rows of the descriptions reported between the markers.
    QList<int> rowsFound() const
    {
        QList<int> rows;
        for (const QString &m : reported)
            if (m != QLatin1String("#BEGIN#") && m != QLatin1String("#END#"))
                rows << m.section(QLatin1Char('|'), 1, 1).toInt();
        return rows;
    }
    QList<int> find(const QString &text)
    {
        reported.clear();
        journal->Find(text);
        return rowsFound();
    }
    QStringList reported;
};

} // namespace

TEST(Find, EveryKeywordMustBeInSomeShownCellOfTheRow)
{
    FindingBook b;
    EXPECT_EQ(b.find(QStringLiteral("付材料款")), QList<int>{3});
    EXPECT_EQ(b.reported.first(), QStringLiteral("#BEGIN#"));
    EXPECT_EQ(b.reported.last(), QStringLiteral("#END#"));
    EXPECT_EQ(b.said.last(), QStringLiteral("找到记录共 1 条。"));
    // Two words in different columns (explanation and account name) of one row.
    EXPECT_EQ(b.find(QStringLiteral("付材料款 应付账款")), QList<int>{3});
    EXPECT_EQ(b.find(QStringLiteral("付材料款 管理费用")), QList<int>{}) << "the words are in different rows";
    // Every separator, mixed and doubled, and one trailing.
    EXPECT_EQ(b.find(QStringLiteral("报销;差旅,费；  管理，")), QList<int>{4});
    EXPECT_EQ(b.find(QStringLiteral("货款")), QList<int>{2});
    // FromNextRow changes nothing: the whole book is searched.
    b.grid->setCursor(4, b.col("Explain"));
    b.reported.clear();
    b.journal->Find(QStringLiteral("货款"), true);
    EXPECT_EQ(b.rowsFound(), QList<int>{2});
    // The case of letters counts.
    b.grid->setText(4, b.col("Remark"), QString());
    b.grid->setText(2, b.col("Explain"), QStringLiteral("Deposit ABC"));
    EXPECT_EQ(b.find(QStringLiteral("abc")), QList<int>{});
    EXPECT_EQ(b.find(QStringLiteral("ABC")), QList<int>{2});
}

TEST(Find, RowsAreDescribedForTheHostToSplit)
{
    FindingBook b;
    b.find(QStringLiteral("收到货款"));
    ASSERT_EQ(b.reported.size(), 3);
    EXPECT_EQ(b.reported[1], QStringLiteral("2025年01月05日 [01-05记 12]|2|收到货款"));
    b.find(QStringLiteral("付材料款"));
    EXPECT_EQ(b.reported[1], QStringLiteral("2025年01月10日 007|3|付材料款"));
    b.find(QStringLiteral("备忘"));
    EXPECT_EQ(b.reported[1], QStringLiteral("[无名称] |5|备忘 付款")) << "a row without a date label";
}

TEST(Find, NothingFoundAndNothingAskedAreToldApart)
{
    FindingBook b;
    EXPECT_EQ(b.find(QStringLiteral("没有这个词")), QList<int>{});
    EXPECT_EQ(b.reported, (QStringList{QStringLiteral("#BEGIN#"), QStringLiteral("#END#")}));
    EXPECT_EQ(b.said.last(), QStringLiteral("找到记录共 0 条。"));
    for (const QString &empty : {QString(), QStringLiteral("  "), QStringLiteral(" ;,；，")}) {
        b.find(empty);
        EXPECT_TRUE(b.reported.isEmpty()) << "no FindMsg for an empty search";
        EXPECT_EQ(b.said.last(), QStringLiteral("请输入要查找的文字;"));
    }
    b.find(QStringLiteral("[abc"));
    EXPECT_TRUE(b.reported.isEmpty());
    EXPECT_TRUE(b.said.last().contains(QStringLiteral("没有配对的“]”"))) << qPrintable(b.said.last());
}

TEST(Find, HiddenColumnsAreNeverSearched)
{
    FindingBook b;
    ASSERT_TRUE(b.grid->isColHidden(b.col("AccCode")));
    b.grid->setText(3, b.col("AccCode"), QStringLiteral("2202"));
    EXPECT_EQ(b.find(QStringLiteral("2202")), QList<int>{});
    b.grid->setColHidden(b.col("AccCode"), false);
    b.grid->setColWidth(b.col("AccCode"), 60);
    EXPECT_EQ(b.find(QStringLiteral("2202")), QList<int>{3});
    // A shown column squeezed to nothing is hidden as well.
    b.grid->setColWidth(b.col("AccName"), 0);
    EXPECT_EQ(b.find(QStringLiteral("应付账款")), QList<int>{});
}

TEST(Find, AmountsAreFoundAsStoredAndAsShown)
{
    FindingBook b;
    b.grid->setColFormat(b.col("Debit"), QStringLiteral("#,##0.00"));
    b.grid->setAmount(2, b.col("Debit"), kx::Currency::fromUnits(1250));
    EXPECT_EQ(b.find(QStringLiteral("1250")), QList<int>{2});
    EXPECT_EQ(b.find(QStringLiteral("1,250.00")), QList<int>{2});
}

TEST(Find, PatternCharactersWorkInsideKeywords)
{
    FindingBook b;
    EXPECT_EQ(b.find(QStringLiteral("备忘?付款")), (QList<int>{5})) << "? is one character, the blank too";
    EXPECT_EQ(b.find(QStringLiteral("付?材料款")), (QList<int>{})) << "? is exactly one, never none";
    EXPECT_EQ(b.find(QStringLiteral("付??款")), (QList<int>{3}));
    EXPECT_EQ(b.find(QStringLiteral("收*款")), (QList<int>{2}));
    EXPECT_EQ(b.find(QStringLiteral("0#7")), (QList<int>{3})) << "# is a digit";
    EXPECT_EQ(b.find(QStringLiteral("0#a")), (QList<int>{}));
    EXPECT_EQ(b.find(QStringLiteral("[收报]")), (QList<int>{2, 4}));
    EXPECT_EQ(b.find(QStringLiteral("报销[!差]")), (QList<int>{}));
}

TEST(Find, LikePatternMatchesAsARegularExpressionWould)
{
    // Each pattern is checked against the same pattern spelled as a
    // regular expression, over random texts from a small alphabet.
    QStringList alphabet;
    for (const QChar c : QStringLiteral("ab1-*?#[]!款"))
        alphabet << QString(c);
    alphabet << QStringLiteral("𠀀") << QStringLiteral("𠀁");  // beyond the basic plane: one character each
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);
    const auto draw = [&](int maxLength) {
        QString s;
        for (int n = int(random.bounded(maxLength + 1)); n > 0; --n)
            s += alphabet[int(random.bounded(int(alphabet.size())))];
        return s;
    };
    int compared = 0;
    for (int round = 0; round < 20000; ++round) {
        const QString pattern = draw(6);
        const kx::Result<LikePattern> like = LikePattern::compile(pattern);
        QString rx;
        bool wellFormed = true;
        for (qsizetype i = 0; i < pattern.size(); ++i) {
            const QChar c = pattern[i];
            if (c.isSurrogate()) {
                rx += pattern.mid(i, 2);
                ++i;
            } else if (c == u'*') {
                rx += QStringLiteral(".*");
            } else if (c == u'?') {
                rx += QLatin1Char('.');
            } else if (c == u'#') {
                rx += QStringLiteral("[0-9]");
            } else if (c == u'[') {
                const qsizetype close = pattern.indexOf(u']', i + 1);  // never inside a pair
                if (close < 0) {
                    wellFormed = false;
                    break;
                }
                QString body = pattern.mid(i + 1, close - i - 1);
                const bool negated = body.startsWith(u'!');
                if (negated)
                    body.remove(0, 1);
                QString set;
                QStringList chars;  // by character, a surrogate pair being one
                for (qsizetype k = 0; k < body.size(); ++k) {
                    const qsizetype w = body[k].isHighSurrogate() ? 2 : 1;
                    chars << body.mid(k, w);
                    k += w - 1;
                }
                for (qsizetype k = 0; k < chars.size(); ++k) {
                    if (k + 2 < chars.size() && chars[k + 1] == u"-") {
                        set += QRegularExpression::escape(chars[k]) + u'-' + QRegularExpression::escape(chars[k + 2]);
                        k += 2;
                    } else {
                        set += QRegularExpression::escape(chars[k]);
                    }
                }
                rx += set.isEmpty() ? (negated ? QStringLiteral("[\\s\\S]") : QStringLiteral("(?!)"))
                                    : QStringLiteral("[%1%2]").arg(negated ? QStringLiteral("^") : QString(), set);
                i = close;
            } else {
                rx += QRegularExpression::escape(QString(c));
            }
        }
        const QRegularExpression re(QRegularExpression::anchoredPattern(rx),
                                    QRegularExpression::DotMatchesEverythingOption);
        // An unclosed "[" and a reversed range ("[b-#]") are refused by both.
        ASSERT_EQ(like.ok(), wellFormed && re.isValid()) << qPrintable(pattern) << " seed " << seed;
        if (!like.ok())
            continue;
        for (int t = 0; t < 5; ++t) {
            const QString text = draw(8);
            ASSERT_EQ(like.value().matches(text), re.match(text).hasMatch())
                << qPrintable(pattern) << " on " << qPrintable(text) << " seed " << seed;
            ++compared;
        }
    }
    EXPECT_GT(compared, 50000);
}

TEST(Find, TheFindBarListsHitsAndWalksThroughThem)
{
    FindingBook b;
    b.journal->resize(900, 500);
    b.journal->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(b.journal.get()));
    b.journal->gridView()->setFocus();
    QTest::keyClick(b.journal->gridView(), Qt::Key_F, Qt::ControlModifier);
    auto *text = b.journal->findChild<QLineEdit *>(QStringLiteral("findText"));
    auto *hits = b.journal->findChild<QListWidget *>(QStringLiteral("findHits"));
    ASSERT_TRUE(text && hits);
    QTRY_VERIFY(text->isVisible() && text->hasFocus());
    text->insert(QStringLiteral("款"));
    QTRY_COMPARE(hits->count(), 3);  // rows 2, 3 and 5, found as the typing pauses
    EXPECT_TRUE(b.reported.isEmpty()) << "the bar is the control's own: the host is not told";

    b.grid->setCursor(2, b.col("Explain"));
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(b.journal->Row(), 3);
    QTest::keyClick(text, Qt::Key_F3);
    EXPECT_EQ(b.journal->Row(), 5);
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(b.journal->Row(), 2) << "past the last hit it starts over";
    QTest::keyClick(text, Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(b.journal->Row(), 5);
    EXPECT_EQ(b.journal->findChild<QLabel *>(QStringLiteral("findCount"))->text(), QStringLiteral("第 3 条，共 3 条"));

    // A row inserted above moves the hits (now 3, 4 and 6); the bar looks
    // again before it goes.
    b.grid->setCursor(2, b.col("Explain"));
    ASSERT_TRUE(b.journal->InsertRows());
    b.grid->setCursor(3, b.col("Explain"));
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(b.journal->Row(), 4);

    text->setText(QStringLiteral("[坏"));
    QTest::keyClick(text, Qt::Key_Return);
    EXPECT_EQ(hits->count(), 0);
    EXPECT_TRUE(b.journal->findChild<QLabel *>(QStringLiteral("findCount"))->text().contains(QStringLiteral("]")));

    QTest::keyClick(text, Qt::Key_Escape);
    EXPECT_FALSE(text->isVisible());
    EXPECT_TRUE(b.journal->gridView()->hasFocus());
}
