#pragma once

#include "kxjournal/kxjournal_export.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"

namespace kx {

/// A ready AccContext over a Database: accounts come from kxAccClass, the
/// rest is set by the host. Periods are calendar months unless the host sets
/// its own period dates.
class KXJOURNAL_EXPORT SqlAccContext : public AccContext
{
    Q_OBJECT
public:
    /// A context that owns \a db.
    explicit SqlAccContext(Database db, QObject *parent = nullptr);

    Database &Connection() override { return m_db; }
    QString UserName() override { return m_userName; }
    QString DirectorName() override { return m_directorName; }
    QString CurPeriod() override { return m_curPeriod; }
    QDate PeriodStart() override { return m_periodStart; }
    QDate PeriodEnd() override { return m_periodEnd; }
    QDate BeginDate() override { return m_beginDate; }
    QString DocTypes() override { return m_docTypes; }
    QString GetAccName(int accId, int option = 0) override;
    QString GetAccCode(int accId) override;
    QString LookupAccID(const QString &accText) override;
    QDate GetPeriodDate(const QDate &date) override;
    bool GetAccInfo(int accId, AccInfo &info) override;
    void SaveNotice(const QString &notice) override;

    /// Sets the user name.
    void setUserName(const QString &v) { m_userName = v; }
    /// Sets the director's name.
    void setDirectorName(const QString &v) { m_directorName = v; }
    /// Sets the current period, e.g. "202611".
    void setCurPeriod(const QString &v) { m_curPeriod = v; }
    /// Sets the first date of the current period.
    void setPeriodStart(const QDate &v) { m_periodStart = v; }
    /// Sets the last date of the current period.
    void setPeriodEnd(const QDate &v) { m_periodEnd = v; }
    /// Sets the date the accounts begin.
    void setBeginDate(const QDate &v) { m_beginDate = v; }
    /// Sets the voucher types ("记|收|付|转").
    void setDocTypes(const QString &v) { m_docTypes = v; }
    /// Sets the current period to the calendar month of \a date.
    void setCurrentMonth(const QDate &date);

    /// The last notice received by SaveNotice().
    QString lastSaveNotice() const { return m_lastSaveNotice; }

Q_SIGNALS:
    /// SaveNotice() was called with \a notice.
    void saveNoticed(const QString &notice);

private:
    QString accountField(int accId, const char *field);

    Database m_db;
    QString m_userName;
    QString m_directorName;
    QString m_curPeriod;
    QDate m_periodStart;
    QDate m_periodEnd;
    QDate m_beginDate;
    QString m_docTypes = QStringLiteral("记");
    QString m_lastSaveNotice;
};

} // namespace kx
