// Picking an account by what is typed: codes, names, entry codes and the
// pinyin initials of names, best match first.
#include "QtPrinters.h"
#include "editing/AccountChart.h"
#include "editing/PinyinInitials.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

using kx::AccountChart;
using kx::PinyinInitials;

namespace {

AccountChart chart()
{
    QList<AccountChart::Account> list;
    auto add = [&](int id, const char *code, const char *name, const char *enter, int uses) {
        AccountChart::Account a;
        a.id = id;
        a.code = QString::fromUtf8(code);
        a.name = QString::fromUtf8(name);
        a.enterCode = QString::fromUtf8(enter);
        a.uses = uses;
        list << a;
    };
    add(1, "1002", "银行存款", "", 0);
    add(2, "100201", "工商银行", "", 5);
    add(3, "100202", "建设银行", "", 40);
    add(4, "1122", "应收账款", "ys", 2);
    add(5, "6602", "管理费用", "", 0);
    AccountChart c;
    c.setAccounts(list);
    return c;
}

QList<int> ids(const AccountChart &c, const char *text)
{
    QList<int> out;
    for (int i : c.match(QString::fromUtf8(text)))
        out << c.accounts().at(i).id;
    return out;
}

} // namespace

TEST(AccountChart, InitialsCodesNamesAndUseRankTheMatches)
{
    const AccountChart c = chart();
    EXPECT_EQ(ids(c, "yhck"), QList<int>{1});
    EXPECT_EQ(ids(c, "YH").value(0), 1) << "initials at the start of the name come first";
    EXPECT_EQ(ids(c, "yh"), (QList<int>{1, 3, 2})) << "then inside names, the more used first";
    EXPECT_EQ(ids(c, "1002"), (QList<int>{1, 3, 2})) << "the exact code, then longer codes";
    EXPECT_EQ(ids(c, "ys"), (QList<int>{4}));
    EXPECT_EQ(ids(c, "费用"), (QList<int>{5}));
    EXPECT_TRUE(ids(c, "zzz").isEmpty());
    EXPECT_EQ(ids(c, "").size(), 5);
}

TEST(AccountChart, ReadingsWithSeveralInitialsMatchEach)
{
    // 行 reads xing and hang; 长 chang and zhang.
    const auto masks = PinyinInitials::masksOf(u"银行行长");
    EXPECT_EQ(PinyinInitials::find(masks, u"yh"), 0);
    EXPECT_EQ(PinyinInitials::find(masks, u"yx"), 0);
    EXPECT_EQ(PinyinInitials::find(masks, u"hz"), 2);
    EXPECT_EQ(PinyinInitials::find(masks, u"hc"), 2);
    EXPECT_EQ(PinyinInitials::find(masks, u"y1"), -1);
    EXPECT_EQ(PinyinInitials::of(u"银行存款"), QStringLiteral("yhck"));
    EXPECT_EQ(PinyinInitials::of(u"A股"), QStringLiteral("ag"));
}

TEST(AccountChart, AnyTextMatchesWithoutHarm)
{
    const AccountChart c = chart();
    QRandomGenerator rng(11);
    const QString alphabet = QStringLiteral("yhckYH10.2银行存款%_'\\/ \t\u0000\U0001F600");
    for (int i = 0; i < 20000; ++i) {
        QString t;
        const int n = int(rng.bounded(12));
        for (int k = 0; k < n; ++k)
            t += alphabet.at(int(rng.bounded(int(alphabet.size()))));
        const QList<int> hits = c.match(t);
        for (int h : hits)
            ASSERT_TRUE(h >= 0 && h < c.accounts().size());
    }
}
