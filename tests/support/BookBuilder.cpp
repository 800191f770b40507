#include "support/BookBuilder.h"
#include "data/SqlAccess.h"

#include <QStringList>
#include <stdexcept>

namespace kxtest {

int BookBuilder::insert(const QString &table, const QString &key, const QVariantMap &fields)
{
    QStringList names;
    QStringList marks;
    QVariantList values;
    for (auto it = fields.constBegin(); it != fields.constEnd(); ++it) {
        names << it.key();
        marks << QStringLiteral("?");
        values << it.value();
    }
    const kx::Result<void> s = kx::sqlRun(m_db,
                                          {QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                                               .arg(table, names.join(QLatin1Char(',')), marks.join(QLatin1Char(','))),
                                           values});
    if (!s.ok())
        throw std::runtime_error(s.error().toStdString());
    return kx::sqlScalar(m_db, {QStringLiteral("Select max(%1) From %2").arg(key, table), {}}).value().toInt();
}

int BookBuilder::account(const QString &code, const QString &name, const QString &enterCode)
{
    return insert(QStringLiteral("kxAccClass"), QStringLiteral("AccID"),
                  {{QStringLiteral("AccCode"), code}, {QStringLiteral("AccName"), name}, {QStringLiteral("EnterCode"), enterCode}});
}

int BookBuilder::book(const QString &code, const QString &name, const QString &direction, const QString &address,
                      const QString &header)
{
    return insert(QStringLiteral("kxJournal"), QStringLiteral("asID"),
                  {{QStringLiteral("AssistCode"), code}, {QStringLiteral("AssistName"), name},
                   {QStringLiteral("ZipCode"), direction}, {QStringLiteral("Address"), address},
                   {QStringLiteral("Header"), header}});
}

int BookBuilder::voucher(const QString &date, const QString &type, int number)
{
    return insert(QStringLiteral("kxDocDir"), QStringLiteral("DocID"),
                  {{QStringLiteral("DocDate"), date}, {QStringLiteral("DocType"), type}, {QStringLiteral("DocNo"), number},
                   {QStringLiteral("AccPeriod"), date.left(7).remove(QLatin1Char('-'))}});
}

int BookBuilder::record(int docId, int row, const QVariantMap &fields)
{
    QVariantMap all = fields;
    all.insert(QStringLiteral("DocID"), docId);
    all.insert(QStringLiteral("Row"), row);
    return insert(QStringLiteral("kxJournalRecs"), QStringLiteral("RecID"), all);
}

} // namespace kxtest
