#pragma once

#include "ledger/LedgerHost.h"
#include "output/BookSession.h"

#include <kxjournal/SqlAccContext.h>

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

/// What the tool hears from the book it works on: the latest message (for
/// a failure told in one line) and the ones the control would show in a
/// box. Progress lines only say what is under way and are passed over;
/// every question is answered No, as a control nobody watches answers it.
class ToolHost : public kx::LedgerHost
{
public:
    void prompt(const QString &text, bool showBox) override { hear(text, showBox); }
    void note(const QString &) override {}
    void failure(const QString &text, bool showBox) override { hear(text, showBox); }

    /// The latest message that was not a progress line (empty: none).
    QString lastMessage() const { return m_last; }
    /// The messages meant for a box since the last call, taken away.
    QStringList takeBoxes();

private:
    void hear(const QString &text, bool showBox);

    QString m_last;
    QStringList m_boxes;
};

/// A book the command-line tool works on: its database, its id, and the book
/// loaded without a control. Failures are told on stderr.
class ToolBook
{
public:
    /// Opens the database at \a url and finds the book coded \a code; false when either is not there.
    bool open(const QString &url, const QString &code);
    /// The id of the book opened.
    int bookId() const { return m_bookId; }
    /// The context over the opened database.
    kx::SqlAccContext &context() { return *m_context; }
    /// Loads the book; false (the reason told) when it cannot be loaded.
    bool load();
    /// The loaded book.
    kx::BookSession &session() { return *m_session; }
    /// What the book said.
    ToolHost &host() { return m_host; }
    /// Tells the latest message of the book on stderr, in one line; returns 1.
    int fail() const;
    /// Loads book \a code of \a url and returns what \a work returns on it
    /// (1 when the book cannot be loaded).
    static int run(const QString &url, const QString &code, const std::function<int(ToolBook &)> &work);

private:
    std::unique_ptr<kx::SqlAccContext> m_context;
    int m_bookId = 0;
    ToolHost m_host;
    std::unique_ptr<kx::BookSession> m_session;
};
