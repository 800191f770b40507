#include "DemoWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>
#include <QTimer>
#include <cstdio>

namespace {

int runDemo(QApplication &app, const QString &screenshot)
{
    DemoWindow window;
    window.show();
    if (screenshot.isEmpty())
        return app.exec();
    // Let the window lay itself out and paint once before it is captured.
    int rc = 1;
    QTimer::singleShot(300, &window, [&] {
        rc = window.grab().save(screenshot) ? 0 : 1;
        if (rc != 0)
            std::fprintf(stderr, "kxjournal: cannot write %s\n", qPrintable(screenshot));
        app.quit();
    });
    app.exec();
    return rc;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("kxjournal"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("kxAccJournal demo host and tool"));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("demo (the default)"));
    QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                  QStringLiteral("Write a PNG of the window to FILE and quit."),
                                  QStringLiteral("FILE"));
    parser.addOption(screenshot);
    parser.process(app);
    const QStringList args = parser.positionalArguments();
    const QString command = args.isEmpty() ? QStringLiteral("demo") : args.first();
    if (command == QLatin1String("demo"))
        return runDemo(app, parser.value(screenshot));
    std::fprintf(stderr, "kxjournal: unknown command '%s'\n", qPrintable(command));
    return 2;
}
