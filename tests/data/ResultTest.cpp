#include "QtPrinters.h"
#include "data/SqlAccess.h"

#include <kxjournal/Database.h>
#include <kxjournal/Result.h>

#include <gtest/gtest.h>
#include <type_traits>

// A failure is always spelled out: no bool, number or text passes for one.
static_assert(!std::is_convertible_v<bool, kx::Result<void>>, "false must not convert to a result");
static_assert(!std::is_convertible_v<QString, kx::Result<void>>, "a text must not convert to a result");
static_assert(!std::is_convertible_v<QString, kx::Error>, "an error is made on purpose");

TEST(Result, FailuresCarryTheirReasonAndValuesTheirValue)
{
    const kx::Result<int> good = 7;
    EXPECT_TRUE(good.ok());
    EXPECT_EQ(good.value(), 7);
    const kx::Result<int> bad = kx::Error(QStringLiteral("坏了"));
    EXPECT_FALSE(bad.ok());
    EXPECT_EQ(bad.error(), QStringLiteral("坏了"));
    EXPECT_EQ(bad.valueOr(-1), -1);
    const kx::Result<void> unnamed = kx::Error(QString());
    EXPECT_FALSE(unnamed.ok());
    EXPECT_FALSE(unnamed.error().isEmpty()) << "a failure without a reason still says something";
    EXPECT_TRUE(kx::Result<void>().ok());

    // A database that is not open fails every call with its reason.
    kx::Database closed;
    const kx::Result<void> connected = kx::ensureConnected(closed);
    EXPECT_FALSE(connected.ok());
    EXPECT_FALSE(connected.error().isEmpty());
}

// Reading the value of a failure stops the program in every build, naming the
// error that went unchecked: no default value passes for a real one.
TEST(ResultDeathTest, ReadingTheValueOfAFailureStopsTheProgram)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const kx::Result<int> bad = kx::Error(QStringLiteral("账套已关闭"));
    EXPECT_DEATH((void)bad.value(), "value\\(\\) of a failed result.*账套已关闭");
    kx::Result<QString> gone = kx::Error(QStringLiteral("找不到记录"));
    EXPECT_DEATH((void)gone.takeValue(), "takeValue\\(\\) of a failed result.*找不到记录");

    // A success reads as before, and valueOr() never stops.
    kx::Result<QString> fine = QStringLiteral("借");
    EXPECT_EQ(fine.takeValue(), QStringLiteral("借"));
    EXPECT_EQ(gone.valueOr(QStringLiteral("无")), QStringLiteral("无"));
}
