#pragma once

#include "kxjournal/kxjournal_export.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"

#include <memory>

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
    ~SqlAccContext() override;

    Database &Connection() override;
    QString UserName() override;
    QString DirectorName() override;
    QString CurPeriod() override;
    QDate PeriodStart() override;
    QDate PeriodEnd() override;
    QDate BeginDate() override;
    QString DocTypes() override;
    QString GetAccName(int accId, int option = 0) override;
    QString GetAccCode(int accId) override;
    QString LookupAccID(const QString &accText) override;
    QDate GetPeriodDate(const QDate &date) override;
    bool GetAccInfo(int accId, AccInfo &info) override;
    void SaveNotice(const QString &notice) override;

    /// Sets the user name.
    void setUserName(const QString &v);
    /// Sets the director's name.
    void setDirectorName(const QString &v);
    /// Sets the current period, e.g. "202611".
    void setCurPeriod(const QString &v);
    /// Sets the first date of the current period.
    void setPeriodStart(const QDate &v);
    /// Sets the last date of the current period.
    void setPeriodEnd(const QDate &v);
    /// Sets the date the accounts begin.
    void setBeginDate(const QDate &v);
    /// Sets the voucher types ("记|收|付|转").
    void setDocTypes(const QString &v);
    /// Sets the current period to the calendar month of \a date.
    void setCurrentMonth(const QDate &date);

    /// The last notice received by SaveNotice().
    QString lastSaveNotice() const;

Q_SIGNALS:
    /// SaveNotice() was called with \a notice.
    void saveNoticed(const QString &notice);

private:
    QString accountField(int accId, const char *field);

    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace kx
