#include "control/VoucherController.h"

#include "control/EditingController.h"
#include "control/JournalPrivate.h"
#include "grid/GridViewPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/GridView.h"
#include "kxjournal/Journal.h"
#include "kxjournal/VoucherPicker.h"
#include "ledger/BookRow.h"
#include "voucher/VoucherMaker.h"

namespace kx {

void VoucherController::setUp()
{
    picker = new VoucherPicker(d.q);
    JournalPrivate *p = &d;
    QObject::connect(picker, &VoucherPicker::voucherChosen, d.q, [p](int id) { p->q->SetDirID(id); });
    // A double-click on a linked voucher cell asks the host for the voucher's records.
    GridViewPrivate::get(d.view).m_doubleClick = ([p](int row, int col) {
        const JournalColumns columns(*p->grid);
        if (col != columns[JournalColumns::AccDoc] || BookRow::of(*p->grid, columns, row).dirId() <= 0)
            return false;
        if (p->mayStart())
            p->cancels(QStringLiteral("DocRecs"));
        return true;
    });
}

void VoucherController::openPicker(int row, int col)
{
    if (!d.grid->isDataRow(row))
        return;
    d.editing->closePickers();
    // Read afresh each time, from the context in use now: the host may have
    // made vouchers since, or changed the context.
    picker->setContext(d.context());
    // A handler of the messages may delete the control.
    const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
    d.note(QStringLiteral("装入会计科目..."));
    if (!d.alive())
        return;
    const bool loaded = picker->load();
    d.prompt(loaded ? QString() : QStringLiteral("不能读出凭证目录。"), false);
    if (!d.alive())
        return;
    d.editing->pickerRow = row;
    d.editing->pickerCol = col;
    d.editing->place(picker, row, std::max(col, d.grid->fixedCols()));
    picker->setSearchText(QString());
    picker->show();
    picker->setFocus();
}

void VoucherController::lookAt()
{
    const JournalColumns columns(*d.grid);
    if (d.grid->isDataRow(d.grid->row()) && BookRow::of(*d.grid, columns, d.grid->row()).dirId() > 0)
        d.cancels(QStringLiteral("LookAccDoc"));
    else if (!d.state.isConsolidated())
        d.q->Make();
}

QStringList VoucherController::make(const QString &into)
{
    JournalPrivate *const p = &d;
    return d.exclusive(QStringLiteral("MakeAccDoc"), QStringList(), [p, &into, this] {
        if (!p->settleEditor() || !p->alive())
            return QStringList();
        const Result<QStringList> made = VoucherMaker(p->book).make(into, codec, grouping);
        if (!made.ok())
            p->prompt(made.error(), false);
        return made.valueOr(QStringList());
    });
}

} // namespace kx
