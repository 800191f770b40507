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
    // How Make groups: one of three, so a click always chooses its own.
    for (const auto &[id, grouping] : {std::pair{CommandId::VoucherPerRecord, VoucherGrouping::Record},
                                       std::pair{CommandId::VoucherPerType, VoucherGrouping::Type},
                                       std::pair{CommandId::VoucherAllInOne, VoucherGrouping::All}})
        r.bind(
            id, [p, grouping = grouping](const QString &) { p->vouchers->grouping = grouping; },
            [p, grouping = grouping] { return p->vouchers->grouping == grouping; });
}

} // namespace kx
