#pragma once

#include <kxjournal/SqlAccContext.h>

#include <QString>
#include <functional>
#include <memory>

namespace kx {
class Journal;
}

/// A book the command-line tool works on: its database, its id, and a
/// control that has it loaded. Failures are told on stderr.
class ToolBook
{
public:
    /// Opens the database at \a url and finds the book coded \a code; false when either is not there.
    bool open(const QString &url, const QString &code);
    /// The context over the opened database.
    kx::SqlAccContext &context() { return *m_context; }
    /// Keeps \a journal's messages, hands it the context and loads the book;
    /// false (the reason told) when it cannot be loaded.
    bool load(kx::Journal &journal);
    /// Tells the latest message of the control on stderr, in one line; returns 1.
    int fail() const;
    /// Loads book \a code of \a url into a control drawn nowhere and returns
    /// what \a work returns on it (1 when the book cannot be loaded).
    static int run(const QString &url, const QString &code, const std::function<int(ToolBook &, kx::Journal &)> &work);

private:
    std::unique_ptr<kx::SqlAccContext> m_context;
    int m_bookId = 0;
    QString m_lastMessage;
};
