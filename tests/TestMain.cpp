#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Widgets are driven without a screen, in CI and at test discovery alike.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
