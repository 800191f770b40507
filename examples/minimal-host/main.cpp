// A window with one journal book: minimal-host DB-URL BOOK-CODE [--quit-after-load]
#include <kxjournal/BookDirectory.h>
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QApplication>
#include <QShortcut>
#include <QTimer>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3)
        return std::fprintf(stderr, "usage: minimal-host DB-URL BOOK-CODE [--quit-after-load]\n"), 2;

    // "sqlite:FILE" or "postgresql://USER@HOST:PORT/DBNAME"; the books of the database by their codes.
    kx::Database db = kx::Database::open(args.at(1));
    const kx::Result<kx::BookDirectory> books = kx::BookDirectory::read(db);
    if (!books.ok())
        return std::fprintf(stderr, "%s\n", qPrintable(books.error())), 1;
    const kx::BookDirectory::Book *book = books.value().byCode(args.at(2));
    if (!book)
        return std::fprintf(stderr, "no book %s\n", qPrintable(args.at(2))), 1;

    // The context owns the connection; the control reads accounts and the open period through it.
    kx::SqlAccContext acc(std::move(db));
    const QDate today = QDate::currentDate();
    acc.setCurPeriod(today.toString(QStringLiteral("yyyyMM")));       // the open period: vouchers are dated in it
    acc.setPeriodStart(QDate(today.year(), today.month(), 1));        // short dates typed ("5", "3-5") read from it
    acc.setPeriodEnd(QDate(today.year(), today.month(), today.daysInMonth())); // vouchers numbered up to it
    acc.setBeginDate(QDate(today.year(), 1, 1));                      // the opening row's date; history before it

    kx::Journal journal;
    journal.resize(1100, 640);
    // Connect directly: some events carry arguments the handler writes (Cancel).
    QObject::connect(&journal, &kx::Journal::message, &journal,
                     [&](const QString &text, kx::Journal::MessageKind kind) {
                         if (kind == kx::Journal::ErrorMessage)
                             std::fprintf(stderr, "%s\n", qPrintable(text));
                         journal.setWindowTitle(book->name + QStringLiteral(" — ") + text);
                     });
    QObject::connect(&journal, &kx::Journal::AfterLoaded, &journal, [&] {
        std::printf("%s: %d rows\n", qPrintable(book->name), journal.Rows());
        if (args.contains(QStringLiteral("--quit-after-load")))
            QTimer::singleShot(0, &app, &QApplication::quit);
    });
    new QShortcut(QKeySequence::Save, &journal, [&] { journal.Save(); });
    new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_E), &journal, [&] { journal.Export(kx::Journal::ExportSpreadsheet); });

    journal.setAcc(&acc);          // the context first,
    journal.setDocID(book->id);    // then the book,
    journal.show();
    return journal.Load() ? app.exec() : 1; // then its records
}
