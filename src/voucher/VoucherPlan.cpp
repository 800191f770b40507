#include "voucher/VoucherPlan.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "voucher/VoucherDirectory.h"
#include "voucher/VoucherLink.h"

#include <QStringList>

namespace kx {

namespace {

const QChar Receipt(u'收');
const QChar Payment(u'付');

// The first of \a docTypes whose word holds \a mark and not \a other; the
// first general type when none does, else the first type.
QString typeFor(const QString &docTypes, QChar mark, QChar other)
{
    const QStringList types = docTypes.split(QLatin1Char('|'));
    for (const QString &t : types)
        if (t.contains(mark) && !t.contains(other))
            return t;
    for (const QString &t : types)
        if (!t.isEmpty() && !t.contains(mark) && !t.contains(other))
            return t;
    return VoucherDirectory::defaultType(docTypes);
}

} // namespace

QString VoucherPlan::nameOf(VoucherGrouping grouping)
{
    switch (grouping) {
    case VoucherGrouping::Record:
        return QStringLiteral("record");
    case VoucherGrouping::Type:
        return QStringLiteral("type");
    case VoucherGrouping::All:
        break;
    }
    return QStringLiteral("all");
}

std::optional<VoucherGrouping> VoucherPlan::grouping(const QString &name)
{
    const QString n = name.trimmed().toLower();
    for (const VoucherGrouping g : {VoucherGrouping::All, VoucherGrouping::Record, VoucherGrouping::Type})
        if (n == nameOf(g))
            return g;
    return std::nullopt;
}

QString VoucherPlan::receiptType(const QString &docTypes)
{
    return typeFor(docTypes, Receipt, Payment);
}

QString VoucherPlan::paymentType(const QString &docTypes)
{
    return typeFor(docTypes, Payment, Receipt);
}

QList<VoucherPlan::Part> VoucherPlan::parts(const Sheet &grid, int first, int last, int relativeAccId, bool creditBook,
                                            VoucherGrouping grouping, const QString &docTypes)
{
    const JournalColumns columns(grid);
    const QString general = VoucherDirectory::defaultType(docTypes);
    Part all{{}, general, last - first + 1};
    Part receipts{{}, receiptType(docTypes), 0};
    Part payments{{}, paymentType(docTypes), 0};
    QList<Part> out;
    for (int r = std::max(first, grid.fixedRows()); r <= last && r < grid.rows(); ++r) {
        const BookRow row = BookRow::of(grid, columns, r);
        if (!VoucherLink::isCandidate(row, relativeAccId))
            continue;
        switch (grouping) {
        case VoucherGrouping::All:
            all.rows << r;
            break;
        case VoucherGrouping::Record:
            out << Part{{r}, general, 1};
            break;
        case VoucherGrouping::Type: {
            const bool comesIn = creditBook ? !row.credit().isZero() : !row.debit().isZero();
            (comesIn ? receipts : payments).rows << r;
            break;
        }
        }
    }
    if (!all.rows.isEmpty())
        out << all;
    for (Part *p : {&receipts, &payments})
        if (!p->rows.isEmpty()) {
            p->addQty = int(p->rows.size());
            out << *p;
        }
    return out;
}

} // namespace kx
