#include "control/JournalPrivate.h"

#include "control/JournalFrame.h"
#include "control/JournalMenu.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/Journal.h"

#include <QCoreApplication>
#include <QPrinter>
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

JournalPrivate::JournalPrivate(Journal *journal) : q(journal) {}

JournalPrivate::~JournalPrivate() = default;

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
    m_running.clear();
    if (isLong(name) && hasScreen())
        QGuiApplication::restoreOverrideCursor();
    Q_EMIT q->bookChanged();
}

void JournalPrivate::prompt(const QString &text, bool showBox)
{
    q->Prompt(text, showBox);
}

bool JournalPrivate::cancels(const QString &command)
{
    bool cancel = false;
    Q_EMIT q->CommandExecute(command, cancel);
    return cancel;
}

bool JournalPrivate::ask(const QString &text, const QString &title)
{
    return q->ask(text, title);
}

void JournalPrivate::progress(int percent)
{
    Q_EMIT q->Process(percent);
    // The start of a long operation is where the screen may catch up (the
    // message just shown, the progress bar). Input waits: a click now would
    // only be refused.
    if (percent == 0 && hasScreen())
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void JournalPrivate::markDirty()
{
    q->setIsDirty(true);
}

void JournalPrivate::saved()
{
    Q_EMIT q->dirtyChanged(false);
    Q_EMIT q->AfterSaved();
}

void JournalPrivate::captionChanged(const QString &text)
{
    q->setCaption(text);
}

void JournalPrivate::layoutChanged(bool consolidated)
{
    frame->setImageKey(consolidated ? QStringLiteral("Jnl1") : QStringLiteral("Jnl"));
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
        if (answer == Keep || (answer == Store && !q->Save()))
            return;
    }
    // The grid holds what is stored now: nothing is left to save.
    if (q->Load())
        q->setIsDirty(false);
}

void JournalPrivate::defaultFormatCommand()
{
    if (cancels(QStringLiteral("BeforeFormat")))
        return;
    q->SetDefaultFormat();
    cancels(QStringLiteral("AfterFormated"));
}

} // namespace kx
