#pragma once

#include <QString>

namespace kx {

/// How ledger classes talk back to whoever runs them: messages, questions,
/// progress and what changed. Every member does nothing by default, so a
/// ledger class runs on a bare grid with a plain LedgerHost; the control
/// passes one that raises its events.
class LedgerHost
{
public:
    virtual ~LedgerHost();

    /// A message for the user; \a showBox asks for a message box.
    virtual void prompt(const QString &text, bool showBox);
    /// A line that says what is under way ("读入…的记录..."); by default a prompt without a box.
    virtual void note(const QString &text);
    /// Why an operation failed; by default a prompt.
    virtual void failure(const QString &text, bool showBox);
    /// Asks before \a command runs; true when the host cancels it.
    virtual bool cancels(const QString &command);
    /// A Yes/No question titled \a title, No by default; true for Yes.
    virtual bool ask(const QString &text, const QString &title = QString());
    /// Progress of a long operation: 0 to 100, -1 at the end.
    virtual void progress(int percent);
    /// The grid now holds changes not yet stored.
    virtual void markDirty();
    /// An undo or redo put the dirty flag back to \a dirty (already in the state).
    virtual void dirtyRestored(bool dirty);
    /// A save stored the book.
    virtual void saved();
    /// The book's caption changed (a load built it anew).
    virtual void captionChanged(const QString &caption);
    /// A load showed the book single (false) or consolidated (true).
    virtual void layoutChanged(bool consolidated);
    /// True once whoever runs the operation is gone (a host deleted the
    /// control from one of the handlers above): the operation stops quietly,
    /// storing nothing more. Asked after a call above may have ended it.
    virtual bool stopped() const;

    /// A host that does nothing, for callers that want no reports.
    static LedgerHost &none();
};

} // namespace kx
