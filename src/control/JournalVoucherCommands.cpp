#include "control/JournalVoucherCommands.h"

#include "control/JournalPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/Journal.h"
#include "voucher/VoucherLink.h"

namespace kx {

void JournalVoucherCommands::offer(JournalPrivate &d)
{
    CommandRegistry &r = d.commands;
    JournalPrivate *p = &d;
    const QString voucher = QStringLiteral("voucher");

    r.add({QStringLiteral("mnuAccDoc"), {}, QStringLiteral("查看凭证"), voucher, [p](const QString &) { p->lookAtVoucher(); },
           {}, {}});
    r.add({QStringLiteral("mnuDocSelect"), {}, QStringLiteral("选择凭证..."), voucher,
           [p](const QString &) { p->openVoucherPicker(p->grid->row(), p->grid->col()); }, {}, {}});
    r.add({QStringLiteral("mnuRemoveDoc"), {}, QStringLiteral("删除凭证链接"), voucher,
           [p](const QString &) {
               p->exclusive(QStringLiteral("RemoveDoc"), false, [p] {
                   return p->settleEditor() && VoucherLink(*p->grid, p->state, *p, p->context()).removeLinks();
               });
           },
           {}, {}});
    r.add({QStringLiteral("mnuMakeDoc"), {}, QStringLiteral("生成凭证"), voucher, [p](const QString &) { p->q->Make(); },
           {}, {}});
}

} // namespace kx
