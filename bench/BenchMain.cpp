#include <QGuiApplication>
#include <benchmark/benchmark.h>

int main(int argc, char **argv)
{
    // Laying out pages measures text, which needs fonts but no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
