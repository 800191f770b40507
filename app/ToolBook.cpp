#include "ToolBook.h"

#include <kxjournal/Database.h>
#include <kxjournal/Journal.h>

#include <cstdio>

bool ToolBook::open(const QString &url, const QString &code)
{
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen()) {
        std::fprintf(stderr, "kxjournal: %s\n", qPrintable(db.lastError()));
        return false;
    }
    m_bookId = db.scalar({QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {code}}).valueOr(QVariant()).toInt();
    if (m_bookId <= 0) {
        std::fprintf(stderr, "kxjournal: no book with code %s\n", qPrintable(code));
        return false;
    }
    m_context = std::make_unique<kx::SqlAccContext>(std::move(db));
    return true;
}

bool ToolBook::load(kx::Journal &journal)
{
    QObject::connect(&journal, &kx::Journal::Notify, [this](const QString &message, bool) {
        // Progress lines ("读入…的记录...") only say what is under way.
        if (!message.isEmpty() && !message.endsWith(QLatin1String("...")))
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
