#include "BankTool.h"
#include "CheckTool.h"
#include "DemoShot.h"
#include "DemoWindow.h"
#include "OutputTool.h"
#include "VoucherTool.h"

#include "SampleBooks.h"

#include <kxjournal/BookDirectory.h>
#include <kxjournal/Database.h>
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDate>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTimer>
#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>

namespace {

QString defaultDatabaseUrl()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(dir);
    return QStringLiteral("sqlite:") + dir + QStringLiteral("/journal.db");
}

bool isNewSqliteFile(const QString &url)
{
    return url.startsWith(QLatin1String("sqlite:")) && url != QLatin1String("sqlite::memory:") &&
           !QFileInfo::exists(url.mid(7));
}

// The number of books a database holds (0 when it has no book table yet).
int bookCount(const kx::Database &db)
{
    return kx::BookDirectory::read(db).valueOr(kx::BookDirectory()).count();
}

int runSample(const QString &url, int records, int books, bool append)
{
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen()) {
        std::fprintf(stderr, "kxjournal: %s\n", qPrintable(db.lastError()));
        return 1;
    }
    // Sample books beside a bookkeeper's own would mix invented records into real ones.
    if (!append && bookCount(db) > 0) {
        std::fprintf(stderr, "kxjournal: %s already holds books; add --append to write samples beside them\n",
                     qPrintable(kx::Database::shownUrl(url)));
        return 1;
    }
    kx::SampleOptions options;
    options.records = records;
    options.books = books;
    const kx::Result<void> made = kx::SampleBooks::create(db, options);
    if (!made.ok()) {
        std::fprintf(stderr, "kxjournal: %s\n", qPrintable(made.error()));
        return 1;
    }
    std::printf("kxjournal: %d records in %d books written to %s\n", records, books,
                qPrintable(kx::Database::shownUrl(url)));
    return 0;
}

// Resident memory of this process in bytes (0 where /proc is not there).
qint64 residentBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong() * 1024;
    return 0;
}

// Reports, once, how long the first frame of the grid took from start, and
// the memory the process holds then; quits when asked to.
class FirstFrameProbe : public QObject
{
public:
    FirstFrameProbe(const QElapsedTimer &clock, QWidget *watched, bool quit)
        : QObject(watched), m_clock(clock), m_quit(quit)
    {
        watched->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_done) {
            m_done = true;
            // Measured once the paint that is starting now has been done.
            QTimer::singleShot(0, this, [this] {
                std::printf("kxjournal: first frame after %lld ms, %lld MB resident\n",
                            static_cast<long long>(m_clock.elapsed()),
                            static_cast<long long>(residentBytes() / (1024 * 1024)));
                std::fflush(stdout);
                if (m_quit)
                    QCoreApplication::quit();
            });
        }
        return false;
    }

private:
    const QElapsedTimer &m_clock;
    bool m_quit;
    bool m_done = false;
};

int runDemo(QCoreApplication &app, const QString &url, const Shot &shot, const QString &book, bool packed,
            const QElapsedTimer &clock, bool firstFrame)
{
    const bool fresh = isNewSqliteFile(url);
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen()) {
        std::fprintf(stderr, "kxjournal: %s\n", qPrintable(db.lastError()));
        return 1;
    }
    if (fresh || url == QLatin1String("sqlite::memory:")) {
        kx::SampleOptions options;
        options.records = 3000;
        const kx::Result<void> made = kx::SampleBooks::create(db, options);
        if (!made.ok()) {
            std::fprintf(stderr, "kxjournal: %s\n", qPrintable(made.error()));
            return 1;
        }
    }
    // Screenshots and timings start from nothing remembered.
    DemoWindow window(shot.file.isEmpty() && !firstFrame);
    // A file that is no journal database (or not a database at all) is said
    // so before any window opens.
    if (const QString why = window.useDatabase(std::move(db), url); !why.isEmpty()) {
        std::fprintf(stderr, "kxjournal: %s is not a journal database: %s\n", qPrintable(kx::Database::shownUrl(url)),
                     qPrintable(why));
        return 1;
    }
    window.journal()->setIsPackedJnl(packed);
    window.show();
    if (!window.openBook(book)) {
        std::fprintf(stderr, "kxjournal: no book with code %s\n", qPrintable(book));
        return 1;
    }
    // Installed after the load: the frame that counts is the first one with the book in it.
    if (firstFrame)
        new FirstFrameProbe(clock, window.journal()->gridView()->viewport(), true);
    if (shot.file.isEmpty())
        return app.exec();
    int rc = 1;
    QTimer::singleShot(400, &window, [&] {
        rc = takeShot(window, shot);
        app.quit();
    });
    app.exec();
    return rc;
}

// The commands the tool knows ("demo" also when none is given).
const QStringList &knownCommands()
{
    static const QStringList commands{QStringLiteral("demo"),   QStringLiteral("sample"), QStringLiteral("voucher"),
                                      QStringLiteral("make"),   QStringLiteral("export"), QStringLiteral("print"),
                                      QStringLiteral("check"),  QStringLiteral("statement"), QStringLiteral("reconcile"),
                                      QStringLiteral("daily")};
    return commands;
}

enum class ToolNeeds { Nothing, Drawing, Screen };

// True when an export with these arguments writes a spreadsheet, whose
// column widths are measured in fonts (--type, else the extension of --out).
bool exportsSpreadsheet(const QByteArray &type, const QByteArray &out)
{
    if (!type.isEmpty())
        return type.toLower() == "xlsx";
    return out.toLower().endsWith(".xlsx");
}

// What the command line asks for needs: nothing drawn, drawing offscreen,
// or a real screen. Read before Qt starts, as that choice is made then.
ToolNeeds toolNeeds(int argc, char **argv)
{
    static const QByteArrayList valued{"--db", "--screenshot", "--records", "--books", "--book", "--picker",
                                       "--from", "--to", "--out", "--type", "--types", "--user", "--director", "--codec",
                                       "--mapping", "--per"};
    QByteArray command, type, out;
    bool screenshot = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg(argv[i]);
        if (arg == "-h" || arg == "--help" || arg == "--help-all" || arg == "-v" || arg == "--version")
            return ToolNeeds::Nothing;
        if (arg == "--screenshot" || arg.startsWith("--screenshot="))
            screenshot = true;
        if (arg.startsWith("--type="))
            type = arg.mid(7);
        if (arg.startsWith("--out="))
            out = arg.mid(6);
        if (valued.contains(arg)) {
            if (i + 1 < argc && arg == "--type")
                type = argv[i + 1];
            if (i + 1 < argc && arg == "--out")
                out = argv[i + 1];
            ++i;
        } else if (!arg.startsWith('-') && command.isEmpty()) {
            command = arg;
        }
    }
    // An unknown command is told so, with no window needed.
    if (command == "sample" || command == "voucher" ||
        (!command.isEmpty() && !knownCommands().contains(QString::fromLocal8Bit(command))))
        return ToolNeeds::Nothing;
    // A book is loaded, checked, made into a voucher or written as text
    // without fonts; a spreadsheet's widths and printed pages need them.
    if (command == "make" || command == "check" || command == "statement")
        return ToolNeeds::Nothing;
    // The daily report's pages are drawn; its spreadsheet and text need no font.
    if (command == "daily")
        return out.toLower().endsWith(".pdf") ? ToolNeeds::Drawing : ToolNeeds::Nothing;
    // The reconciliation's pages are drawn; its spreadsheet needs no font.
    if (command == "reconcile")
        return out.toLower().endsWith(".pdf") ? ToolNeeds::Drawing : ToolNeeds::Nothing;
    if (command == "export")
        return exportsSpreadsheet(type, out) ? ToolNeeds::Drawing : ToolNeeds::Nothing;
    if (command == "print")
        return ToolNeeds::Drawing;
    if ((command.isEmpty() || command == "demo") && screenshot)
        return ToolNeeds::Drawing;
    return ToolNeeds::Screen;
}

// Qt wants a private runtime folder and says so on every start where no
// session named one; the tool speaks only when something is wrong, so it
// names the folder Qt would fall back to, made private to this user.
void quietRuntimeFolder()
{
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        return;
    const QByteArray folder = QFile::encodeName(QDir::tempPath()) + "/runtime-kxjournal-" + QByteArray::number(getuid());
    struct stat seen {};
    if (mkdir(folder.constData(), 0700) != 0 && errno != EEXIST)
        return;
    if (stat(folder.constData(), &seen) != 0 || !S_ISDIR(seen.st_mode) || seen.st_uid != getuid())
        return;
    if ((seen.st_mode & 0777) != 0700 && chmod(folder.constData(), 0700) != 0)
        return;
    qputenv("XDG_RUNTIME_DIR", folder);
}

} // namespace

int main(int argc, char **argv)
{
    QElapsedTimer clock;
    clock.start();
    // Only the demo's window needs a screen. No command but the demo makes a
    // widget: help, the samples, the voucher printer, making a voucher,
    // checking and exporting text run without a GUI at all; a spreadsheet's
    // column widths and printed pages are measured in fonts, drawn offscreen.
    const ToolNeeds needs = toolNeeds(argc, argv);
    quietRuntimeFolder();
    if (needs == ToolNeeds::Drawing && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (needs == ToolNeeds::Screen && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") &&
        qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        std::fprintf(stderr, "kxjournal: the demo needs a display (or --screenshot FILE to draw it offscreen); "
                             "see kxjournal --help\n");
        return 2;
    }
    std::unique_ptr<QCoreApplication> instance(needs == ToolNeeds::Nothing ? new QCoreApplication(argc, argv)
                                                                            : new QApplication(argc, argv));
    QCoreApplication &app = *instance;
    QCoreApplication::setApplicationName(QStringLiteral("kxjournal"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("kxAccJournal demo host and tool.\n\n"
                                                    "  demo     open the demo host (the default)\n"
                                                    "  sample   write sample books into a database\n"
                                                    "  voucher FILE\n"
                                                    "           print a voucher exchange file as a table\n"
                                                    "  make     make voucher files of a book's records of some days\n"
                                                    "  export   write a book into a CSV, TSV or XLSX file\n"
                                                    "  print    write a book's printed pages into a PDF file\n"
                                                    "  check    check a book's dates and order (exit 1 with the finding)\n"
                                                    "  statement import FILE\n"
                                                    "           import a bank statement (CSV, XLSX, XLS, OFX, camt.053) into a bank book\n"
                                                    "  statement sample\n"
                                                    "           write a bank's statement of a book up to --to, for trying reconciliation\n"
                                                    "  daily    write the daily fund report of --from to --to (a book and those below it, or all)\n"
                                                    "           into a PDF, XLSX or CSV file (--rows lists the records)\n"
                                                    "  reconcile\n"
                                                    "           write a bank book's balance reconciliation on --to into a PDF or XLSX file"));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("demo, sample, voucher, make, export, print, check, statement, reconcile or daily"));
    const QCommandLineOption dbOption(QStringLiteral("db"), QStringLiteral("Database URL (sqlite:PATH, postgresql://…)."),
                                      QStringLiteral("URL"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Write a PNG of the window to FILE and quit."),
                                        QStringLiteral("FILE"));
    const QCommandLineOption records(QStringLiteral("records"), QStringLiteral("Records to write (sample)."),
                                     QStringLiteral("N"), QStringLiteral("2000"));
    const QCommandLineOption books(QStringLiteral("books"), QStringLiteral("Bottom books to fill, 1 to 5 (sample)."),
                                   QStringLiteral("K"), QStringLiteral("5"));
    const QCommandLineOption book(QStringLiteral("book"), QStringLiteral("Code of the book to open (demo)."),
                                  QStringLiteral("CODE"), QStringLiteral("020101"));
    const QCommandLineOption packed(QStringLiteral("packed"), QStringLiteral("Open the book consolidated (demo)."));
    const QCommandLineOption firstFrame(QStringLiteral("first-frame"),
                                        QStringLiteral("Print the time to the grid's first frame and the memory held, then quit (demo)."));
    const QCommandLineOption append(QStringLiteral("append"),
                                    QStringLiteral("Write samples into a database that already holds books (sample)."));
    const QCommandLineOption picker(QStringLiteral("picker"),
                                    QStringLiteral("With --screenshot: show the account picker searching TEXT (demo)."),
                                    QStringLiteral("TEXT"));
    const QCommandLineOption from(QStringLiteral("from"), QStringLiteral("First record date, yyyy-MM-dd (make)."),
                                  QStringLiteral("DATE"));
    const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("Last record date, yyyy-MM-dd (make)."),
                                QStringLiteral("DATE"));
    const QCommandLineOption out(QStringLiteral("out"),
                                 QStringLiteral("Folder the voucher file goes into (make); the file written (export, print)."),
                                 QStringLiteral("PATH"));
    const QCommandLineOption type(QStringLiteral("type"), QStringLiteral("csv, tsv or xlsx; default: by the extension (export)."),
                                  QStringLiteral("TYPE"));
    const QCommandLineOption types(QStringLiteral("types"), QStringLiteral("Voucher types, the first used (make)."),
                                   QStringLiteral("TYPES"), QStringLiteral("记|收|付|转"));
    const QCommandLineOption user(QStringLiteral("user"), QStringLiteral("Who makes the voucher (make)."),
                                  QStringLiteral("NAME"), QStringLiteral("kxjournal"));
    const QCommandLineOption director(QStringLiteral("director"), QStringLiteral("The accounting director (make)."),
                                      QStringLiteral("NAME"));
    const QCommandLineOption codec(QStringLiteral("codec"), QStringLiteral("Code page of the voucher file (voucher, make)."),
                                   QStringLiteral("NAME"), QStringLiteral("GBK"));
    const QCommandLineOption per(QStringLiteral("per"),
                                 QStringLiteral("One voucher per record, per 收/付 type, or all in one (make)."),
                                 QStringLiteral("record|type|all"), QStringLiteral("all"));
    parser.addOption(per);
    const QCommandLineOption menuShot(QStringLiteral("menu"), QStringLiteral("With --screenshot: show the context menu open (demo)."));
    const QCommandLineOption sideShot(QStringLiteral("side-panel"),
                                      QStringLiteral("With --screenshot: show the side panel and its balance chart (demo)."));
    parser.addOption(sideShot);
    const QCommandLineOption reconcileShot(QStringLiteral("reconcile-view"),
                                           QStringLiteral("With --screenshot: draw the bank reconciliation view instead (demo)."));
    parser.addOption(reconcileShot);
    const QCommandLineOption dailyShot(QStringLiteral("daily-view"),
                                       QStringLiteral("With --screenshot: draw the daily fund report window instead (demo)."));
    parser.addOption(dailyShot);
    const QCommandLineOption explainShot(QStringLiteral("explain-list"),
                                         QStringLiteral("With --screenshot: show the explanation list open on the empty row (demo)."));
    parser.addOption(explainShot);
    const QCommandLineOption dailyRows(QStringLiteral("rows"),
                                       QStringLiteral("List each bottom book's records of the days under it (daily)."));
    parser.addOption(dailyRows);
    const QCommandLineOption previewShot(QStringLiteral("preview"),
                                         QStringLiteral("With --screenshot: draw the print preview instead (demo)."));
    const QCommandLineOption mapping(QStringLiteral("mapping"),
                                     QStringLiteral("The statement layout, by name or as stored (statement import)."),
                                     QStringLiteral("NAME"));
    const QCommandLineOption autoMatch(QStringLiteral("auto"),
                                       QStringLiteral("Match the statement with the book's records first (reconcile)."));
    parser.addOptions({mapping, autoMatch});
    parser.addOptions({menuShot, previewShot, dbOption, screenshot, records, books, book, packed, firstFrame, append, picker, from, to, out, types,
                       user, director, codec, type});
    parser.process(app);
    const QStringList args = parser.positionalArguments();
    const QString command = args.isEmpty() ? QStringLiteral("demo") : args.first();
    if (command == QLatin1String("sample")) {
        if (!parser.isSet(dbOption)) {
            std::fprintf(stderr, "kxjournal: sample needs --db URL\n");
            return 2;
        }
        bool recordsOk = false, booksOk = false;
        const int recordCount = parser.value(records).toInt(&recordsOk);
        const int bookTotal = parser.value(books).toInt(&booksOk);
        if (!recordsOk || recordCount < 1 || recordCount > 10000000) {
            std::fprintf(stderr, "kxjournal: --records must be a whole number from 1 to 10000000\n");
            return 2;
        }
        if (!booksOk || bookTotal < 1 || bookTotal > 5) {
            std::fprintf(stderr, "kxjournal: --books must be a whole number from 1 to 5\n");
            return 2;
        }
        return runSample(parser.value(dbOption), recordCount, bookTotal, parser.isSet(append));
    }
    if (command == QLatin1String("voucher")) {
        if (args.size() != 2) {
            std::fprintf(stderr, "kxjournal: voucher needs the file to print\n");
            return 2;
        }
        return VoucherTool::print(args.at(1), parser.value(codec));
    }
    if (command == QLatin1String("make")) {
        VoucherTool::MakeOptions o;
        o.url = parser.value(dbOption);
        o.book = parser.value(book);
        o.from = QDate::fromString(parser.value(from), Qt::ISODate);
        o.to = QDate::fromString(parser.value(to), Qt::ISODate);
        o.out = parser.isSet(out) ? parser.value(out) : QStringLiteral(".");
        // Blank places name no type; a voucher is never made without one.
        QStringList named;
        for (const QString &t : parser.value(types).split(QLatin1Char('|')))
            if (!t.trimmed().isEmpty())
                named << t.trimmed();
        if (named.isEmpty()) {
            std::fprintf(stderr, "kxjournal: --types names no voucher type; give at least one, e.g. --types '记|收|付|转'\n");
            return 2;
        }
        o.types = named.join(QLatin1Char('|'));
        o.user = parser.value(user);
        o.director = parser.value(director);
        o.codec = parser.value(codec);
        const std::optional<kx::VoucherGrouping> grouping = kx::VoucherPlan::grouping(parser.value(per));
        if (!grouping) {
            std::fprintf(stderr, "kxjournal: --per must be record, type or all, not \"%s\"\n", qPrintable(parser.value(per)));
            return 1;
        }
        o.grouping = *grouping;
        if (o.url.isEmpty() || !o.from.isValid() || !o.to.isValid() || o.to < o.from) {
            std::fprintf(stderr, "kxjournal: make needs --db URL, --book CODE, --from DATE and --to DATE "
                                 "(yyyy-MM-dd, --from not after --to)\n");
            return 2;
        }
        return VoucherTool::make(o);
    }
    if (command == QLatin1String("export") || command == QLatin1String("print")) {
        if (!parser.isSet(dbOption) || !parser.isSet(book) || parser.value(out).isEmpty()) {
            std::fprintf(stderr, "kxjournal: %s needs --db URL, --book CODE and --out FILE\n", qPrintable(command));
            return 2;
        }
        if (command == QLatin1String("print"))
            return OutputTool::print(parser.value(dbOption), parser.value(book), parser.value(out));
        return OutputTool::exportBook(parser.value(dbOption), parser.value(book), parser.value(out), parser.value(type));
    }
    if (command == QLatin1String("check")) {
        if (!parser.isSet(dbOption) || !parser.isSet(book)) {
            std::fprintf(stderr, "kxjournal: check needs --db URL and --book CODE\n");
            return 2;
        }
        return CheckTool::check(parser.value(dbOption), parser.value(book));
    }
    if (command == QLatin1String("statement") && args.value(1) == QLatin1String("sample")) {
        const QDate until = QDate::fromString(parser.value(to), Qt::ISODate);
        if (!parser.isSet(dbOption) || !parser.isSet(book) || !until.isValid() || parser.value(out).isEmpty()) {
            std::fprintf(stderr, "kxjournal: statement sample needs --db URL, --book CODE, --to DATE and --out FILE\n");
            return 2;
        }
        return BankTool::sampleStatement(parser.value(dbOption), parser.value(book), until, parser.value(out));
    }
    if (command == QLatin1String("statement")) {
        if (args.size() != 3 || args.at(1) != QLatin1String("import") || !parser.isSet(dbOption) || !parser.isSet(book)) {
            std::fprintf(stderr, "kxjournal: statement import needs --db URL, --book CODE and the statement FILE\n");
            return 2;
        }
        return BankTool::importStatement(parser.value(dbOption), parser.value(book), args.at(2), parser.value(mapping));
    }
    if (command == QLatin1String("daily")) {
        const QDate first = QDate::fromString(parser.value(from), Qt::ISODate);
        const QDate last = QDate::fromString(parser.value(to), Qt::ISODate);
        if (!parser.isSet(dbOption) || !first.isValid() || !last.isValid() || parser.value(out).isEmpty()) {
            std::fprintf(stderr, "kxjournal: daily needs --db URL, --from DATE, --to DATE and --out "
                                 "FILE.pdf|FILE.xlsx|FILE.csv (--book CODE for one book and those below it, "
                                 "--rows to list the records)\n");
            return 2;
        }
        return BankTool::daily(parser.value(dbOption), parser.isSet(book) ? parser.value(book) : QString(), first, last,
                               parser.value(out), parser.isSet(dailyRows), parser.isSet(user) ? parser.value(user) : QString());
    }
    if (command == QLatin1String("reconcile")) {
        const QDate until = QDate::fromString(parser.value(to), Qt::ISODate);
        if (!parser.isSet(dbOption) || !parser.isSet(book) || !until.isValid() || parser.value(out).isEmpty()) {
            std::fprintf(stderr, "kxjournal: reconcile needs --db URL, --book CODE, --to DATE (yyyy-MM-dd) and --out "
                                 "FILE.pdf|FILE.xlsx\n");
            return 2;
        }
        return BankTool::reconcile(parser.value(dbOption), parser.value(book), until, parser.isSet(autoMatch),
                                   parser.value(out), parser.value(user));
    }
    if (command == QLatin1String("demo")) {
        const QString url = parser.isSet(dbOption) ? parser.value(dbOption) : defaultDatabaseUrl();
        Shot shot;
        shot.file = parser.value(screenshot);
        shot.pickerSearch = parser.isSet(picker) ? parser.value(picker) : QString();
        shot.menu = parser.isSet(menuShot);
        shot.preview = parser.isSet(previewShot);
        shot.reconcile = parser.isSet(reconcileShot);
        shot.side = parser.isSet(sideShot);
        shot.daily = parser.isSet(dailyShot);
        shot.explainList = parser.isSet(explainShot);
        return runDemo(app, url, shot, parser.value(book), parser.isSet(packed), clock, parser.isSet(firstFrame));
    }
    std::fprintf(stderr, "kxjournal: unknown command '%s'; the commands are %s (see kxjournal --help)\n",
                 qPrintable(command), qPrintable(knownCommands().join(QStringLiteral(", "))));
    return 2;
}
