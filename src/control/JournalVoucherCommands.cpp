#include "control/JournalVoucherCommands.h"

#include "control/JournalPrivate.h"
#include "control/VoucherController.h"
#include "grid/Sheet.h"
#include "kxjournal/Journal.h"
#include "voucher/VoucherLink.h"

namespace kx {

void JournalVoucherCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;

    r.bind(CommandId::AccDoc, [p](const QString &) { p->vouchers->lookAt(); });
    r.bind(CommandId::DocSelect, [p](const QString &) { p->vouchers->openPicker(p->grid->row(), p->grid->col()); });
    r.bind(CommandId::RemoveDoc, [p](const QString &) {
        p->exclusive(QStringLiteral("RemoveDoc"), false, [p] {
            return p->settleEditor() && VoucherLink(p->book).removeLinks();
        });
    });
    r.bind(CommandId::MakeDoc, [p](const QString &) { p->q->Make(); });
}

} // namespace kx
