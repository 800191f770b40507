// Journal: vouchers — links, the picker, making a voucher file.
#include "kxjournal/Journal.h"
#include "grid/GridViewPrivate.h"

#include "control/JournalPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/GridView.h"
#include "kxjournal/VoucherFile.h"
#include "kxjournal/VoucherPicker.h"
#include "ledger/BookRow.h"
#include "voucher/VoucherLink.h"
#include "voucher/VoucherMaker.h"

#include <QDir>

namespace kx {

void JournalPrivate::setUpVouchers()
{
    voucherPicker = new VoucherPicker(q);
    QObject::connect(voucherPicker, &VoucherPicker::voucherChosen, q, [this](int id) { q->SetDirID(id); });
    // A double-click on a linked voucher cell asks the host for the voucher's records.
    GridViewPrivate::get(view).m_doubleClick = ([this](int row, int col) {
        const JournalColumns columns(*grid);
        if (col != columns[JournalColumns::AccDoc] || BookRow::of(*grid, columns, row).dirId() <= 0)
            return false;
        if (mayStart())
            cancels(QStringLiteral("DocRecs"));
        return true;
    });
}

void JournalPrivate::openVoucherPicker(int row, int col)
{
    if (!grid->isDataRow(row))
        return;
    closePickers();
    // Read afresh each time, from the context in use now: the host may have
    // made vouchers since, or changed the context.
    voucherPicker->setContext(context());
    // A handler of the messages may delete the control.
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    note(QStringLiteral("装入会计科目..."));
    if (!alive())
        return;
    const bool loaded = voucherPicker->load();
    prompt(loaded ? QString() : QStringLiteral("不能读出凭证目录。"), false);
    if (!alive())
        return;
    pickerRow = row;
    pickerCol = col;
    place(voucherPicker, row, std::max(col, grid->fixedCols()));
    voucherPicker->setSearchText(QString());
    voucherPicker->show();
    voucherPicker->setFocus();
}

void JournalPrivate::lookAtVoucher()
{
    const JournalColumns columns(*grid);
    if (grid->isDataRow(grid->row()) && BookRow::of(*grid, columns, grid->row()).dirId() > 0)
        cancels(QStringLiteral("LookAccDoc"));
    else if (!state.isConsolidated())
        q->Make();
}

int Journal::DirID(int Row) const
{
    return VoucherLink(*d->grid, d->state, *d, d->context()).dirId(d->rowOr(Row));
}

// Each operation works through p, which it holds: a handler may delete the control.

void Journal::setDirID(int value, int Row)
{
    JournalPrivate *const p = d.get();
    p->exclusive(QStringLiteral("DirID"), false, [p, value, Row] {
        return p->settleEditor() && p->alive() &&
               VoucherLink(*p->grid, p->state, *p, p->context()).link(p->rowOr(Row), value);
    });
}

void Journal::SetDirID(int v)
{
    JournalPrivate *const p = d.get();
    p->exclusive(QStringLiteral("DirID"), 0, [p, v] {
        return p->settleEditor() && p->alive() ? VoucherLink(*p->grid, p->state, *p, p->context()).linkSelection(v) : 0;
    });
}

bool Journal::Make()
{
    const std::shared_ptr<JournalPrivate> keep = d;
    JournalPrivate *const p = keep.get();
    const QString folder = voucherFolder();
    const QString path = p->exclusive(QStringLiteral("MakeAccDoc"), QString(), [p, &folder] {
        if (!p->settleEditor() || !p->alive())
            return QString();
        const Result<QString> made = VoucherMaker(*p->grid, p->state, *p, p->context()).make(folder, p->voucherCodec);
        if (!made.ok())
            p->prompt(made.error(), false);
        return made.valueOr(QString());
    });
    // Raised once the operation is over, so the host's handler may use the control.
    if (path.isEmpty() || !p->alive())
        return !path.isEmpty();
    Q_EMIT AfterMaked(path);
    return true;
}

QString Journal::voucherFolder() const { return d->voucherFolder.isEmpty() ? QDir::tempPath() : d->voucherFolder; }
void Journal::setVoucherFolder(const QString &path) { d->voucherFolder = path; }
QString Journal::voucherCodec() const { return d->voucherCodec; }

void Journal::setVoucherCodec(const QString &name)
{
    if (VoucherFile::isKnownCodec(name))
        d->voucherCodec = name;
    else
        Prompt(QStringLiteral("不认识的编码“%1”，凭证文件仍用 %2 编码。").arg(name, d->voucherCodec));
}

VoucherPicker *Journal::voucherPicker() const { return d->voucherPicker; }

} // namespace kx
