// Journal: vouchers — links, making a voucher file. The picker and the
// voucher file's making are VoucherController's.
#include "kxjournal/Journal.h"

#include "control/JournalPrivate.h"
#include "control/VoucherController.h"
#include "kxjournal/VoucherFile.h"
#include "voucher/VoucherLink.h"

#include <QDir>

namespace kx {

int Journal::DirID(int Row) const
{
    return VoucherLink(d->book).dirId(d->rowOr(Row));
}

// Each operation works through p, which it holds: a handler may delete the control.

void Journal::setDirID(int value, int Row)
{
    JournalPrivate *const p = d.get();
    p->exclusive(QStringLiteral("DirID"), false, [p, value, Row] {
        return p->settleEditor() && p->alive() &&
               VoucherLink(p->book).link(p->rowOr(Row), value);
    });
}

void Journal::SetDirID(int v)
{
    JournalPrivate *const p = d.get();
    p->exclusive(QStringLiteral("DirID"), 0, [p, v] {
        return p->settleEditor() && p->alive() ? VoucherLink(p->book).linkSelection(v) : 0;
    });
}

bool Journal::Make()
{
    const std::shared_ptr<JournalPrivate> keep = d;
    const QStringList paths = keep->vouchers->make(voucherFolder());
    // Raised once the operation is over, so the host's handler may use the
    // control; once per file, in voucher order, while the control lives.
    for (const QString &path : paths) {
        if (!keep->alive())
            break;
        Q_EMIT AfterMaked(path);
    }
    return !paths.isEmpty();
}

QString Journal::voucherFolder() const { return d->vouchers->folder.isEmpty() ? QDir::tempPath() : d->vouchers->folder; }
void Journal::setVoucherFolder(const QString &path) { d->vouchers->folder = path; }
QString Journal::voucherCodec() const { return d->vouchers->codec; }

void Journal::setVoucherCodec(const QString &name)
{
    if (VoucherFile::isKnownCodec(name))
        d->vouchers->codec = name;
    else
        Prompt(QStringLiteral("不认识的编码“%1”，凭证文件仍用 %2 编码。").arg(name, d->vouchers->codec));
}

QString Journal::voucherGrouping() const { return VoucherPlan::nameOf(d->vouchers->grouping); }

void Journal::setVoucherGrouping(const QString &name)
{
    if (const std::optional<VoucherGrouping> g = VoucherPlan::grouping(name))
        d->vouchers->grouping = *g;
    else
        Prompt(QStringLiteral("不认识的凭证分组方式“%1”（可用 all、record、type），仍用 %2。")
                   .arg(name, VoucherPlan::nameOf(d->vouchers->grouping)));
}

VoucherPicker *Journal::voucherPicker() const { return d->vouchers->picker; }

} // namespace kx
