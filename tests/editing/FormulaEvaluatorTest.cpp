// What a bookkeeper types into an amount cell: exact arithmetic, two places
// with halves to the even neighbour, and any other input refused, never a
// crash.
#include "QtPrinters.h"

#include "editing/FormulaEvaluator.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

using kx::FormulaEvaluator;

namespace {

QString value(const char *text)
{
    const kx::Result<kx::Currency> r = FormulaEvaluator::evaluate(QString::fromUtf8(text));
    return r.ok() ? r.value().toString() : QStringLiteral("error");
}

} // namespace

TEST(FormulaEvaluator, ArithmeticIsExactAndRoundsHalvesToEven)
{
    EXPECT_EQ(value("0.1+0.2"), QStringLiteral("0.3"));
    EXPECT_EQ(value("10/3"), QStringLiteral("3.33"));
    EXPECT_EQ(value("1/8"), QStringLiteral("0.12"));
    EXPECT_EQ(value("3/8"), QStringLiteral("0.38"));
    EXPECT_EQ(value("-1/8"), QStringLiteral("-0.12"));
    EXPECT_EQ(value("2+3*4"), QStringLiteral("14"));
    EXPECT_EQ(value("(2+3)*4"), QStringLiteral("20"));
    EXPECT_EQ(value("2-3-4"), QStringLiteral("-5"));
    EXPECT_EQ(value("100/4/5"), QStringLiteral("5"));
    EXPECT_EQ(value("-(-2)"), QStringLiteral("2"));
    EXPECT_EQ(value("--2"), QStringLiteral("2"));
    EXPECT_EQ(value(" 1 250.5 "), QStringLiteral("error")) << "a space inside a number is no number";
    EXPECT_EQ(value("1200×3÷4"), QStringLiteral("900"));
    EXPECT_EQ(value(".5*3"), QStringLiteral("1.5"));
    EXPECT_EQ(value("1/3*3"), QStringLiteral("1")) << "fractions stay exact until the end";
    EXPECT_EQ(value("12.345"), QStringLiteral("12.34"));
    EXPECT_EQ(value("12.355"), QStringLiteral("12.36"));
    EXPECT_EQ(value(""), QStringLiteral("0"));
    EXPECT_EQ(value("999999999999999*9"), QStringLiteral("error")) << "past what money holds";

    for (const char *bad : {"1/0", "1/(2-2)", "abc", "1+", "*2", "(1+2", "1+2)", "1..2", "1.2.3", "()", "2(3)",
                            "1e5", "0x10", "１２", "1,000"})
        EXPECT_EQ(value(bad), QStringLiteral("error")) << bad;
}

TEST(FormulaEvaluator, AnyInputGivesAValueOrAnErrorNeverACrash)
{
    QRandomGenerator rng(4);
    const QString alphabet = QStringLiteral("0123456789.+-*/()×÷ ,e年");
    int values = 0;
    for (int i = 0; i < 200000; ++i) {
        QString text;
        const int length = int(rng.bounded(40));
        for (int k = 0; k < length; ++k)
            text += alphabet.at(int(rng.bounded(int(alphabet.size()))));
        const kx::Result<kx::Currency> r = FormulaEvaluator::evaluate(text);
        if (r.ok()) {
            ++values;
            EXPECT_EQ(r.value().raw() % 100, 0) << "two places at most: " << text.toStdString();
        }
    }
    EXPECT_GT(values, 1000) << "the generator also makes formulas that work";

    // Machine-made extremes: very deep, very long, very large.
    EXPECT_EQ(value(QString(QStringLiteral("(")).repeated(100000).toUtf8().constData()), QStringLiteral("error"));
    EXPECT_EQ(value(QStringLiteral("-").repeated(100000).append(QLatin1Char('1')).toUtf8().constData()),
              QStringLiteral("error"));
    EXPECT_EQ(value(QStringLiteral("1+").repeated(50000).append(QLatin1Char('1')).toUtf8().constData()),
              QStringLiteral("50001"));
    EXPECT_EQ(value(QStringLiteral("9").repeated(5000).toUtf8().constData()), QStringLiteral("error"));
    EXPECT_EQ(value(QStringLiteral("1/7*").repeated(2000).append(QLatin1Char('1')).toUtf8().constData()),
              QStringLiteral("error"));
}
