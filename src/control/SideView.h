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
/// the one already open, which \a again may refresh. Nothing opens when the
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
        again(shown);
        shown->raise();
        shown->activateWindow();
        return shown;
    }
    View *view = make(*acc);
    view->setAttribute(Qt::WA_DeleteOnClose);
    view->show();
    return view;
}

} // namespace kx
