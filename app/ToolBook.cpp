#include "ToolBook.h"

#include <kxjournal/BookDirectory.h>
#include <kxjournal/Database.h>

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <cstdio>
#include <utility>

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

bool ToolBook::load()
{
    m_session = std::make_unique<kx::BookSession>(m_context.get(), m_bookId, m_host);
    if (m_session->load())
        return true;
    fail();
    return false;
}

int ToolBook::fail() const
{
    QString line = m_host.lastMessage().isEmpty() ? QStringLiteral("the operation failed") : m_host.lastMessage();
    line.replace(QLatin1Char('\n'), QLatin1Char(' ')).remove(QLatin1Char('\r'));
    std::fprintf(stderr, "kxjournal: %s\n", qPrintable(line));
    return 1;
}

int ToolBook::run(const QString &url, const QString &code, const std::function<int(ToolBook &)> &work)
{
    ToolBook book;
    if (!book.open(url, code) || !book.load())
        return 1;
    return work(book);
}

void ToolHost::hear(const QString &text, bool showBox)
{
    if (!text.isEmpty())
        m_last = text;
    if (showBox)
        m_boxes << text;
}

QStringList ToolHost::takeBoxes()
{
    return std::exchange(m_boxes, {});
}
