#include "kxjournal/SqlAccContext.h"

#include "data/SqlAccess.h"

#include <QSqlRecord>

namespace kx {

class SqlAccContext::Private
{
public:
    explicit Private(Database connection) : db(std::move(connection)) {}
    Database db;
    QString userName;
    QString directorName;
    QString curPeriod;
    QDate periodStart;
    QDate periodEnd;
    QDate beginDate;
    QString docTypes = QStringLiteral("记");
    QString lastSaveNotice;
};

SqlAccContext::SqlAccContext(Database db, QObject *parent)
    : AccContext(parent), d(std::make_unique<Private>(std::move(db)))
{
    setCurrentMonth(QDate::currentDate());
    d->beginDate = QDate(QDate::currentDate().year(), 1, 1);
}

SqlAccContext::~SqlAccContext() = default;

Database &SqlAccContext::Connection()
{
    return d->db;
}

QString SqlAccContext::UserName()
{
    return d->userName;
}

QString SqlAccContext::DirectorName()
{
    return d->directorName;
}

QString SqlAccContext::CurPeriod()
{
    return d->curPeriod;
}

QDate SqlAccContext::PeriodStart()
{
    return d->periodStart;
}

QDate SqlAccContext::PeriodEnd()
{
    return d->periodEnd;
}

QDate SqlAccContext::BeginDate()
{
    return d->beginDate;
}

QString SqlAccContext::DocTypes()
{
    return d->docTypes;
}

void SqlAccContext::setUserName(const QString &v)
{
    d->userName = v;
}

void SqlAccContext::setDirectorName(const QString &v)
{
    d->directorName = v;
}

void SqlAccContext::setCurPeriod(const QString &v)
{
    d->curPeriod = v;
}

void SqlAccContext::setPeriodStart(const QDate &v)
{
    d->periodStart = v;
}

void SqlAccContext::setPeriodEnd(const QDate &v)
{
    d->periodEnd = v;
}

void SqlAccContext::setBeginDate(const QDate &v)
{
    d->beginDate = v;
}

void SqlAccContext::setDocTypes(const QString &v)
{
    d->docTypes = v;
}

QString SqlAccContext::lastSaveNotice() const
{
    return d->lastSaveNotice;
}

void SqlAccContext::setCurrentMonth(const QDate &date)
{
    d->curPeriod = date.toString(QStringLiteral("yyyyMM"));
    d->periodStart = QDate(date.year(), date.month(), 1);
    d->periodEnd = d->periodStart.addMonths(1).addDays(-1);
}

QString SqlAccContext::accountField(int accId, const char *field)
{
    Result<QSqlQuery> r = sqlExec(d->db, sqlDialect(d->db).accountById(accId));
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
    const SqlDialect &dialect = sqlDialect(d->db);
    // Codes first, then names, then entry codes: a text that is one
    // account's code and another's name means the code.
    for (const SqlStatement &st :
         {dialect.accountIdByCode(text), dialect.accountIdByName(text), dialect.accountIdByEnterCode(text)}) {
        const Result<QVariant> id = sqlScalar(d->db, st);
        if (id.ok() && id.value().isValid())
            return QString::number(id.value().toInt());
    }
    return QStringLiteral("0");
}

QDate SqlAccContext::GetPeriodDate(const QDate &date)
{
    if (!date.isValid())
        return {};
    if (d->periodStart.isValid() && d->periodEnd.isValid() && date >= d->periodStart && date <= d->periodEnd)
        return d->periodEnd;
    return QDate(date.year(), date.month(), 1).addMonths(1).addDays(-1);
}

bool SqlAccContext::GetAccInfo(int accId, AccInfo &info)
{
    Result<QSqlQuery> r = sqlExec(d->db, sqlDialect(d->db).accountById(accId));
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
            sqlFirstRowField(d->db, sqlDialect(d->db).accountByCode(info.code.left(len)), QStringLiteral("AccName"));
        if (!parent.ok())
            break;
        if (parent.value().isValid())
            names.prepend(parent.value().toString());
    }
    info.fullName = names.join(QLatin1Char('\\'));
    const Result<QVariant> child = sqlScalar(d->db, sqlDialect(d->db).accountBelow(info.code));
    info.isDetail = !(child.ok() && child.value().isValid());
    return true;
}

void SqlAccContext::SaveNotice(const QString &notice)
{
    d->lastSaveNotice = notice;
    Q_EMIT saveNoticed(notice);
}

} // namespace kx
