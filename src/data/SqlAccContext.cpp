#include "kxjournal/SqlAccContext.h"

#include "data/SqlAccess.h"

#include <QSqlRecord>

namespace kx {

SqlAccContext::SqlAccContext(Database db, QObject *parent) : AccContext(parent), m_db(std::move(db))
{
    setCurrentMonth(QDate::currentDate());
    m_beginDate = QDate(QDate::currentDate().year(), 1, 1);
}

void SqlAccContext::setCurrentMonth(const QDate &date)
{
    m_curPeriod = date.toString(QStringLiteral("yyyyMM"));
    m_periodStart = QDate(date.year(), date.month(), 1);
    m_periodEnd = m_periodStart.addMonths(1).addDays(-1);
}

QString SqlAccContext::accountField(int accId, const char *field)
{
    Result<QSqlQuery> r = sqlExec(m_db, sqlDialect(m_db).accountById(accId));
    if (!r.ok())
        return {};
    QSqlQuery q = r.takeValue();
    return q.next() ? q.record().value(QLatin1String(field)).toString() : QString();
}

QString SqlAccContext::GetAccName(int accId, int)
{
    return accountField(accId, "AccName");
}

QString SqlAccContext::GetAccCode(int accId)
{
    return accountField(accId, "AccCode");
}

QString SqlAccContext::LookupAccID(const QString &accText)
{
    const QString text = accText.trimmed();
    if (text.isEmpty())
        return QStringLiteral("0");
    const SqlDialect &d = sqlDialect(m_db);
    // Codes first, then names, then entry codes: a text that is one
    // account's code and another's name means the code.
    for (const SqlStatement &st : {d.accountIdByCode(text), d.accountIdByName(text), d.accountIdByEnterCode(text)}) {
        const Result<QVariant> id = sqlScalar(m_db, st);
        if (id.ok() && id.value().isValid())
            return QString::number(id.value().toInt());
    }
    return QStringLiteral("0");
}

QDate SqlAccContext::GetPeriodDate(const QDate &date)
{
    if (!date.isValid())
        return {};
    if (m_periodStart.isValid() && m_periodEnd.isValid() && date >= m_periodStart && date <= m_periodEnd)
        return m_periodEnd;
    return QDate(date.year(), date.month(), 1).addMonths(1).addDays(-1);
}

bool SqlAccContext::GetAccInfo(int accId, AccInfo &info)
{
    Result<QSqlQuery> r = sqlExec(m_db, sqlDialect(m_db).accountById(accId));
    if (!r.ok())
        return false;
    QSqlQuery q = r.takeValue();
    if (!q.next())
        return false;
    const QSqlRecord rec = q.record();
    info = AccInfo();
    info.code = rec.value(QStringLiteral("AccCode")).toString();
    info.name = rec.value(QStringLiteral("AccName")).toString();
    info.direction = rec.value(QStringLiteral("AccDir")).toString();
    info.currency = rec.value(QStringLiteral("Currency")).toString();
    // The full name walks the code's prefixes: 100201 → 1002 → 10 …
    QStringList names{info.name};
    for (int len = int(info.code.size()) - 1; len > 0; --len) {
        const Result<QVariant> parent =
            sqlFirstRowField(m_db, sqlDialect(m_db).accountByCode(info.code.left(len)), QStringLiteral("AccName"));
        if (!parent.ok())
            break;
        if (parent.value().isValid())
            names.prepend(parent.value().toString());
    }
    info.fullName = names.join(QLatin1Char('\\'));
    const Result<QVariant> child = sqlScalar(m_db, sqlDialect(m_db).accountBelow(info.code));
    info.isDetail = !(child.ok() && child.value().isValid());
    return true;
}

void SqlAccContext::SaveNotice(const QString &notice)
{
    m_lastSaveNotice = notice;
    Q_EMIT saveNoticed(notice);
}

} // namespace kx
