#pragma once

#include "control/JournalPrivate.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/Journal.h"

#include <QString>
#include <memory>

namespace kx {

/// Opens the one view of kind \a View the control shows beside the journal
/// for \a command (made by \a make from the context, then shown), or raises
/// the one already open, which \a again refreshes; when \a again says it no
/// longer fits (it was opened for another book), it closes and a new one
/// opens. Nothing opens when the
/// host cancels the command, the control goes meanwhile, or there is no
/// context (said). The view, or nullptr.
template <class View, class Make, class Again>
View *openSideView(JournalPrivate &d, const QString &command, Make make, Again again)
{
    const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
    if (!d.mayStart() || d.cancels(command) || !d.alive() || !d.settleEditor() || !d.alive())
        return nullptr;
    AccContext *acc = d.context();
    if (!acc || !acc->Connection().isOpen()) {
        d.failure(QStringLiteral("没有连接到账套。"), true);
        return nullptr;
    }
    if (auto *shown = d.q->template findChild<View *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (again(shown)) {
            shown->raise();
            shown->activateWindow();
            return shown;
        }
        // Gone at the next turn of the event loop, which may be inside it
        // (a file asker it opened); out of the control's children at once.
        shown->hide();
        shown->setParent(nullptr);
        shown->deleteLater();
    }
    View *view = make(*acc);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->show();
    return view;
}

} // namespace kx
