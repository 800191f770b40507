#pragma once

#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <QMetaObject>
#include <QPointer>
#include <QString>
#include <QStringList>

namespace kx {

class AccContext;

/// One book opened without a control: its grid, its state, and the
/// operations a program without a screen runs on it — load, check, export,
/// print — each doing what the control does for the same request, with the
/// same files and the same messages, reported to a LedgerHost. No widget is
/// made. Fonts are measured only where a QGuiApplication runs: loading,
/// checking and delimited text need none; the spreadsheet's column widths
/// and printing do.
///
/// The book is open to the voucher and other ledger classes (a voucher is
/// made by VoucherMaker on book()).
class BookSession
{
public:
    /// Works on book \a docId of \a acc (which its owner may delete at any
    /// time), reporting to \a host; the context's announcements reach \a host
    /// as messages, as they reach the control.
    BookSession(AccContext *acc, int docId, LedgerHost &host);
    ~BookSession();
    BookSession(const BookSession &) = delete;
    BookSession &operator=(const BookSession &) = delete;

    /// Reads the book into the grid; true when it holds the book (an empty
    /// one included), false (the reason told) when it could not be read.
    /// Where fonts can be measured, the figure, date and number columns are
    /// widened to what they show, as the control's view does.
    bool load();
    /// The book check: true when the records are in order; else the finding
    /// goes to the host in a message box and the grid's cursor sits on the
    /// first offending row.
    bool check();
    /// Writes the book into \a path as kind \a type (BookExporter::Type, 0 to
    /// 3); the path written, or empty when nothing was (the reason told).
    QString exportTo(const QString &path, int type);
    /// Writes the book's pages into the PDF file \a path; false (the reason
    /// told) when nothing was written. Needs a QGuiApplication.
    bool printToPdf(const QString &path);

    /// The book's caption, as the control shows it ("流水账" before a load).
    QString caption() const { return m_caption; }
    /// The files of the SQLite database in use, which no output replaces.
    QStringList databaseFiles() const;
    /// The context, or nullptr once its owner deleted it.
    AccContext *context() const { return m_acc.data(); }
    /// Where the session reports (it passes the caption on).
    LedgerHost &host() { return m_relay; }
    /// The book: its records, its state, this session's host and context.
    Book &book() { return m_book; }
    /// The book's grid (its cursor and selection included).
    Sheet &sheet() { return m_book.sheet(); }
    /// What the ledger knows of the book beyond its cells.
    LedgerState &state() { return m_book.state(); }

private:
    // Passes every report on to the host and keeps the caption a load builds.
    class Relay : public LedgerHost
    {
    public:
        Relay(BookSession &session, LedgerHost &host) : m_session(session), m_host(host) {}
        void prompt(const QString &text, bool showBox) override { m_host.prompt(text, showBox); }
        void note(const QString &text) override { m_host.note(text); }
        void failure(const QString &text, bool showBox) override { m_host.failure(text, showBox); }
        bool cancels(const QString &command) override { return m_host.cancels(command); }
        bool ask(const QString &text, const QString &title) override { return m_host.ask(text, title); }
        void progress(int percent) override { m_host.progress(percent); }
        void markDirty() override { m_host.markDirty(); }
        void dirtyRestored(bool dirty) override { m_host.dirtyRestored(dirty); }
        void saved() override { m_host.saved(); }
        void captionChanged(const QString &caption) override;
        void layoutChanged(bool consolidated) override { m_host.layoutChanged(consolidated); }
        bool stopped() const override { return m_host.stopped(); }

    private:
        BookSession &m_session;
        LedgerHost &m_host;
    };

    void fitColumns();

    QPointer<AccContext> m_acc;
    int m_docId;
    Relay m_relay;
    Book m_book;
    Sheet m_printGrid;  ///< the lines of the latest print layout
    QString m_caption;
    QMetaObject::Connection m_announce;
};

} // namespace kx
