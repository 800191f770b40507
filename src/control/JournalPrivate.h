#pragma once

#include "kxjournal/AccContext.h"
#include "ledger/Book.h"
#include "ledger/CommandRegistry.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <QPointer>
#include <QString>
#include <functional>
#include <memory>

namespace kx {

class EditSession;
class EditingController;
class GridView;
class Journal;
class JournalFrame;
class JournalMenu;
class LayoutController;
class OutputController;
class RowController;
class Sheet;
class VoucherController;

/// The control's state and the host its ledger classes report to: messages,
/// questions and progress become the control's events. It also keeps one
/// operation at a time: a load, save or command asked for while another
/// runs (a host's event handler may let events run) is refused with a
/// message, so nothing is freed or rewritten under a running operation.
/// Each feature's code and widgets live in its own controller (editing,
/// rows, vouchers, output, layout), which works on this shared state.
///
/// Lifetime: the Journal owns this state through a shared pointer, and every
/// operation and every event raised holds it too. A host may delete the
/// control inside any handler: q becomes nullptr, the grid and the edit
/// session stay with this state until the last holder lets go, each event
/// after that is raised to nobody (a question is answered No, a command is
/// cancelled, stopped() is true), and the operation ends without touching
/// the widget. Code here checks alive() after every call that raises an
/// event before it touches q or a widget.
class JournalPrivate : public LedgerHost, public std::enable_shared_from_this<JournalPrivate>
{
public:
    /// The state of \a journal.
    explicit JournalPrivate(Journal *journal);
    ~JournalPrivate() override;

    void prompt(const QString &text, bool showBox) override;
    void note(const QString &text) override;
    void failure(const QString &text, bool showBox) override;
    /// Raises Notify and, unless a handler of it deleted the control, message
    /// with \a kind (a Journal::MessageKind).
    void say(const QString &text, bool showBox, int kind);
    bool cancels(const QString &command) override;
    bool ask(const QString &text, const QString &title = QString()) override;
    void progress(int percent) override;
    void markDirty() override;
    void saved() override;
    void captionChanged(const QString &caption) override;
    void layoutChanged(bool consolidated) override;
    void dirtyRestored(bool dirty) override;
    bool stopped() const override { return !q; }

    /// False once the host deleted the control.
    bool alive() const { return q != nullptr; }
    /// Called by the dying control: what an operation or edit still running
    /// works on (the frame with the grid's view, the grids, the edit session)
    /// stays until it ends and control is back in the event loop.
    void controlGone();
    /// Makes every command hold this state while it runs, and run only
    /// while the control lives.
    void holdWhileCommandsRun();

    /// Runs \a work as operation \a name unless another one runs; then says
    /// so and returns \a refused. Long operations show the wait cursor.
    template <typename T, typename Work>
    T exclusive(const QString &name, T refused, Work work)
    {
        const std::shared_ptr<JournalPrivate> keep = shared_from_this();
        if (!enter(name))
            return refused;
        Leave leave{this, name};
        return work();
    }
    /// True when no operation runs; otherwise says so to the user.
    bool mayStart();

    /// The context, or nullptr when none is set or the host deleted it.
    AccContext *context() const { return m_acc.data(); }
    /// Sets the context (it may be deleted by its owner at any time).
    void setContext(AccContext *acc) { m_acc = acc; }

    /// The current row when \a row is 0.
    int rowOr(int row) const;
    /// A number that tells this control from the others in the process.
    int instanceNumber();
    /// Shows or hides the side panel.
    void setSidePanel(bool visible);
    /// Reloads the book after asking the host.
    void refresh();
    /// Lays the columns down again after asking the host.
    void defaultFormatCommand();
    /// Stores what the open editor holds and closes the pickers, before rows
    /// move; false when the editor's text was refused (it stays open).
    bool settleEditor();
    /// Runs \a work as operation \a name and as the undo step \a text.
    bool step(const QString &name, const QString &text, const std::function<bool()> &work);

    Journal *q;  ///< nullptr once the host deleted the control
    /// The book shown: its records in the grid's store, its state; it
    /// reports here and reads the context set here.
    Book book;
    LedgerState &state;  ///< book.state()
    CommandRegistry commands;
    Sheet *const grid;   ///< book.sheet(): the model the view shows
    GridView *view = nullptr;
    JournalFrame *frame = nullptr;
    JournalMenu *menu = nullptr;
    EditSession *edit = nullptr;
    // Each feature's own code and widgets.
    std::unique_ptr<EditingController> editing;
    std::unique_ptr<RowController> rows;
    std::unique_ptr<VoucherController> vouchers;
    std::unique_ptr<OutputController> output;
    std::unique_ptr<LayoutController> layout;
    QString message;
    QString caption;
    bool sidePanel = false;
    std::function<bool(const QString &, const QString &)> asker;
    std::function<int(const QString &, const QString &, const QStringList &)> choiceAsker;
    int lastRow = -1;
    int lastCol = -1;

private:
    struct Leave {
        JournalPrivate *d;
        QString name;
        ~Leave() { d->leave(name); }
    };
    bool enter(const QString &name);
    void leave(const QString &name);

    QPointer<AccContext> m_acc;
    bool m_kept = false;            ///< the view, the grids and the edit session outlived the control: deleted here
    QWidget *m_keptFrame = nullptr;  ///< the frame (with the grid's view) kept past the control
    QString m_running;
    int m_instance = 0;
};

} // namespace kx
