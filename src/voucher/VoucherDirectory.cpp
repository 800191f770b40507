#include "voucher/VoucherDirectory.h"

#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "data/SqlDialect.h"
#include "kxjournal/Database.h"

#include <QDateTime>

namespace kx {

namespace {
// Without a period to bound it, the list shows this many of the newest.
constexpr int UnboundedList = 2000;
constexpr int LargestNumber = 32767;
} // namespace

QDate VoucherDirectory::dateOf(const QVariant &value)
{
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().date();
    const QString text = value.toString().trimmed();
    return QDate::fromString(text.left(10), Qt::ISODate);
}

QString VoucherDirectory::defaultType(const QString &docTypes)
{
    return docTypes.section(QLatin1Char('|'), 0, 0);
}

QString VoucherDirectory::label(int docId) const
{
    if (docId <= 0)
        return {};
    Result<FetchedRows> fetched = RecordFetcher::fetch(m_db, sqlDialect(m_db).voucherById(docId), {});
    if (!fetched.ok() || fetched.value().cells.rows() == 0)
        return {};
    const FetchedRows &got = fetched.value();
    // Engines that fold names hand them back in lower case.
    const auto field = [&](const char *name) {
        for (int c = 0; c < got.fieldNames.size(); ++c)
            if (got.fieldNames.at(c).compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
                return got.cells.text(0, c);
        return QString();
    };
    const QDate day = dateOf(field("DocDate"));
    return (day.isValid() ? day.toString(QStringLiteral("MM-dd")) : QString()) + field("DocType") + QLatin1Char(' ') +
           field("DocNo");
}

Result<QDate> VoucherDirectory::nextDate(const QString &period, const QDate &periodEnd) const
{
    const Result<QVariant> got = sqlScalar(m_db, sqlDialect(m_db).voucherDateOfPeriod(period));
    if (!got.ok())
        return Error(got.error());
    const QDate day = dateOf(got.value());
    return day.isValid() ? day : periodEnd;
}

Result<int> VoucherDirectory::nextNumber(const QString &type, const QDate &start, const QDate &end) const
{
    const Result<QVariant> got = sqlScalar(m_db, sqlDialect(m_db).highestVoucherNo(type, start, end));
    if (!got.ok())
        return Error(got.error());
    if (!got.value().isValid() || got.value().toString().isEmpty())
        return 1;
    bool ok = false;
    const qlonglong highest = got.value().toString().toLongLong(&ok);
    if (!ok)
        return Error(QStringLiteral("凭证号“%1”不是整数。").arg(got.value().toString()));
    if (highest >= LargestNumber)
        return Error(QStringLiteral("本期%1凭证已编到 %2 号，凭证号不能超过 %2，未能生成记账凭证。")
                         .arg(type.isEmpty() ? QString() : QStringLiteral("“%1”字").arg(type))
                         .arg(LargestNumber));
    return int(std::max<qlonglong>(highest, 0) + 1);
}

Result<QList<VoucherPicker::Entry>> VoucherDirectory::vouchers(const QDate &start, const QDate &end) const
{
    Result<FetchedRows> fetched =
        RecordFetcher::fetch(m_db, sqlDialect(m_db).vouchersBetween(start, end, UnboundedList), {});
    if (!fetched.ok())
        return Error(fetched.error());
    const CellArray &cells = fetched.value().cells;
    QList<VoucherPicker::Entry> out;
    out.reserve(cells.rows());
    for (int r = 0; r < cells.rows(); ++r)
        out.push_back({cells.text(r, 0).toInt(), QDate::fromString(cells.text(r, 1).left(10), Qt::ISODate),
                       cells.text(r, 2), cells.text(r, 3).toInt()});
    return out;
}

} // namespace kx
