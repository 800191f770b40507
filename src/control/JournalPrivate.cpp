#include "control/JournalPrivate.h"

#include "control/EditingController.h"
#include "control/JournalFrame.h"
#include "control/JournalMenu.h"
#include "control/LayoutController.h"
#include "control/OutputController.h"
#include "control/RowController.h"
#include "control/VoucherController.h"
#include "editing/EditSession.h"
#include "kxjournal/GridView.h"
#include "ledger/LedgerStep.h"
#include "kxjournal/EditCycle.h"
#include "grid/Sheet.h"
#include "kxjournal/Journal.h"

#include <QCoreApplication>
#include <QGuiApplication>

namespace kx {

namespace {

QString operationText(const QString &name)
{
    if (name == QLatin1String("Load"))
        return QStringLiteral("读入记录");
    if (name == QLatin1String("Save"))
        return QStringLiteral("存储记录");
    return QStringLiteral("处理账簿");
}

bool isLong(const QString &name)
{
    return name == QLatin1String("Load") || name == QLatin1String("Save") || name == QLatin1String("MakeAccDoc") ||
           name == QLatin1String("Export") || name == QLatin1String("Print");
}

bool hasScreen()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
}

} // namespace

JournalPrivate::JournalPrivate(Journal *journal)
    : q(journal), book(*this, [this] { return context(); }), state(book.state()), grid(&book.sheet()),
      editing(std::make_unique<EditingController>(*this)), rows(std::make_unique<RowController>(*this)),
      vouchers(std::make_unique<VoucherController>(*this)), output(std::make_unique<OutputController>(*this)),
      layout(std::make_unique<LayoutController>(*this))
{
}

JournalPrivate::~JournalPrivate()
{
    if (m_kept) {
        grid->editCycle()->cancel();
        delete m_keptFrame;
        delete edit;
        delete output->printGrid;
    }
}

void JournalPrivate::controlGone()
{
    // Only the control holds this state: nothing runs, and everything goes
    // now. An editor still open is dropped first: committing it into a
    // control half destroyed would reach freed state.
    const bool running = weak_from_this().use_count() > 1;
    if (!running) {
        grid->editCycle()->cancel();
        delete frame;
    } else {
        // An operation, an edit or an event is under way below the handler
        // that deleted the control, maybe in the grid's own view: the view,
        // the grids and the edit session stay, out of sight, until it ends
        // and control is back in the event loop.
        frame->hide();
        frame->setParent(nullptr);
        m_keptFrame = frame;
    }
    QObject::disconnect(grid, nullptr, q, nullptr);
    q = nullptr;
    // The widgets go with the control; nothing may reach them from here on.
    frame = nullptr;
    view = nullptr;
    menu = nullptr;
    editing->forgetWidgets();
    vouchers->forgetWidgets();
    output->forgetWidgets();
    layout->forgetWidgets();
    if (!running) {
        delete edit;
        edit = nullptr;
        return;
    }
    m_kept = true;
    edit->setParent(nullptr);
    output->printGrid->setParent(nullptr);
    // This state is let go of once control is back in the event loop (and
    // the operation, which holds it too, has ended).
    auto *release = new QObject;
    QObject::connect(release, &QObject::destroyed, [keep = shared_from_this()] {});
    release->deleteLater();
}

void JournalPrivate::holdWhileCommandsRun()
{
    const std::weak_ptr<JournalPrivate> self = weak_from_this();
    for (const Command &bound : commands.commands()) {
        Command &command = commands.command(bound.id);
        if (!command.run)
            continue;
        command.run = [self, run = command.run](const QString &parameter) {
            const std::shared_ptr<JournalPrivate> keep = self.lock();
            if (keep && keep->alive())
                run(parameter);
        };
    }
}

bool JournalPrivate::mayStart()
{
    if (m_running.isEmpty())
        return true;
    prompt(QStringLiteral("正在%1，请等它完成后再试。").arg(operationText(m_running)), false);
    return false;
}

bool JournalPrivate::enter(const QString &name)
{
    if (!mayStart())
        return false;
    m_running = name;
    if (isLong(name) && hasScreen())
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    return true;
}

void JournalPrivate::leave(const QString &name)
{
    // The wait cursor goes even when the control went during the operation.
    m_running.clear();
    if (isLong(name) && hasScreen())
        QGuiApplication::restoreOverrideCursor();
    if (q)
        Q_EMIT q->bookChanged();
}

// Each event is raised only while the control lives, and holds this state
// while it is raised: a handler that deletes the control leaves the caller
// state to finish on.

void JournalPrivate::prompt(const QString &text, bool showBox)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        q->Prompt(text, showBox);
}

void JournalPrivate::note(const QString &text)
{
    say(text, false, Journal::ProgressMessage);
}

void JournalPrivate::failure(const QString &text, bool showBox)
{
    say(text, showBox, Journal::ErrorMessage);
}

void JournalPrivate::say(const QString &text, bool showBox, int kind)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        Q_EMIT q->Notify(text, showBox);
    if (q)
        Q_EMIT q->message(text, Journal::MessageKind(kind));
}

bool JournalPrivate::cancels(const QString &command)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (!q)
        return true;
    bool cancel = false;
    Q_EMIT q->CommandExecute(command, cancel);
    return cancel || !q;
}

bool JournalPrivate::ask(const QString &text, const QString &title)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    return q && q->ask(text, title) && q;
}

void JournalPrivate::progress(int percent)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (!q)
        return;
    Q_EMIT q->Process(percent);
    // The start of a long operation is where the screen may catch up (the
    // message just shown, the progress bar). Input waits: a click now would
    // only be refused.
    if (q && percent == 0 && hasScreen())
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void JournalPrivate::markDirty()
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        q->setIsDirty(true);
}

void JournalPrivate::saved()
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        Q_EMIT q->dirtyChanged(state.dirty);
    if (q)
        Q_EMIT q->AfterSaved();
}

void JournalPrivate::captionChanged(const QString &text)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        q->setCaption(text);
}

void JournalPrivate::layoutChanged(bool consolidated)
{
    if (frame)
        frame->setImageKey(consolidated ? QStringLiteral("Jnl1") : QStringLiteral("Jnl"));
}

bool JournalPrivate::settleEditor()
{
    // Rows are about to move under the cell being edited: what was typed
    // is stored first, or, when it is refused, the operation waits.
    if (view->activeEditor() && !view->commitEditor())
        return false;
    if (grid->editCycle()->isEditing())
        grid->editCycle()->cancel();
    editing->closePickers();
    return true;
}

bool JournalPrivate::step(const QString &name, const QString &text, const std::function<bool()> &work)
{
    return exclusive(name, false, [&] {
        // Storing the open editor raises events: the control may be gone after it.
        if (!settleEditor() || !alive())
            return false;
        return LedgerStep::record(book, &edit->history(), text, work);
    });
}

void JournalPrivate::dirtyRestored(bool dirty)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        Q_EMIT q->dirtyChanged(dirty);
    if (dirty && q)
        Q_EMIT q->DataChanged(grid->colKey(grid->col()));
}

int JournalPrivate::rowOr(int row) const
{
    return row == 0 ? grid->row() : row;
}

int JournalPrivate::instanceNumber()
{
    static int counter = 0;
    if (m_instance == 0)
        m_instance = ++counter;
    return m_instance;
}

void JournalPrivate::setSidePanel(bool visible)
{
    if (!q)
        return;
    sidePanel = visible;
    frame->setSidePanelVisible(visible);
    menu->sync();
}

void JournalPrivate::refresh()
{
    if (cancels(QStringLiteral("Refresh")) || !settleEditor())
        return;
    // Reading the book again drops what was changed since the last save:
    // the user decides first.
    if (q->IsDirty()) {
        enum { Store, Drop, Keep };
        const int answer =
            q->choose(QStringLiteral("“%1”有没有存储的修改。要先存储吗？").arg(q->Caption()),
                      {QStringLiteral("存储"), QStringLiteral("不存储"), QStringLiteral("取消")}, q->Caption());
        // A save that fails keeps the changes on screen: nothing is read over them.
        // Any of these may end with the control deleted by a host's handler.
        if (!q || answer == Keep || (answer == Store && !q->Save()) || !q)
            return;
    }
    // Reading the book again leaves nothing to save.
    q->Load();
}

void JournalPrivate::defaultFormatCommand()
{
    if (cancels(QStringLiteral("BeforeFormat")))
        return;
    q->SetDefaultFormat();
    if (q)
        cancels(QStringLiteral("AfterFormated"));
}

} // namespace kx
