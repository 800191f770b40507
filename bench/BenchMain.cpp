#include <QApplication>
#include <benchmark/benchmark.h>

int main(int argc, char **argv)
{
    // Laying out pages measures text, and the control is a widget: fonts and
    // widgets, but no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
