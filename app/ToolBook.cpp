#include "ToolBook.h"

#include <kxjournal/BookDirectory.h>
#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <cstdio>

bool ToolBook::open(const QString &url, const QString &code)
{
    // SQLite makes a file it is asked to open; a mistyped name would leave
    // an empty database behind. Only a file that is there is opened.
    if (url.startsWith(QLatin1String("sqlite:")) && url != QLatin1String("sqlite::memory:")) {
        const QFileInfo file(url.mid(7));
        if (!file.exists()) {
            std::fprintf(stderr, "kxjournal: no database file %s\n", qPrintable(file.absoluteFilePath()));
            return false;
        }
        if (!file.isFile()) {
            std::fprintf(stderr, "kxjournal: %s is not a database file\n", qPrintable(file.absoluteFilePath()));
            return false;
        }
    }
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen()) {
        std::fprintf(stderr, "kxjournal: %s\n", qPrintable(db.lastError()));
        return false;
    }
    const kx::Result<kx::BookDirectory> books = kx::BookDirectory::read(db);
    if (!books.ok()) {
        // A file that is no database, or a database without journal books.
        std::fprintf(stderr, "kxjournal: %s is not a journal database: %s\n", qPrintable(kx::Database::shownUrl(url)),
                     qPrintable(QString(books.error()).replace(QLatin1Char('\n'), QLatin1Char(' '))));
        return false;
    }
    const kx::BookDirectory::Book *book = books.value().byCode(code);
    m_bookId = book ? book->id : 0;
    if (m_bookId <= 0) {
        std::fprintf(stderr, "kxjournal: no book with code %s\n", qPrintable(code));
        return false;
    }
    m_context = std::make_unique<kx::SqlAccContext>(std::move(db));
    return true;
}

bool ToolBook::load(kx::Journal &journal)
{
    QObject::connect(&journal, &kx::Journal::message, [this](const QString &message, kx::Journal::MessageKind kind) {
        // Progress lines ("读入…的记录...") only say what is under way.
        if (!message.isEmpty() && kind != kx::Journal::ProgressMessage)
            m_lastMessage = message;
    });
    journal.setAcc(m_context.get());
    if (journal.Load(m_bookId))
        return true;
    fail();
    return false;
}

int ToolBook::fail() const
{
    QString line = m_lastMessage.isEmpty() ? QStringLiteral("the operation failed") : m_lastMessage;
    line.replace(QLatin1Char('\n'), QLatin1Char(' ')).remove(QLatin1Char('\r'));
    std::fprintf(stderr, "kxjournal: %s\n", qPrintable(line));
    return 1;
}

int ToolBook::run(const QString &url, const QString &code, const std::function<int(ToolBook &, kx::Journal &)> &work)
{
    ToolBook book;
    if (!book.open(url, code))
        return 1;
    kx::Journal journal;
    if (!book.load(journal))
        return 1;
    return work(book, journal);
}
