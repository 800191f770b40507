#pragma once

#include "kxjournal/kxjournal_export.h"
#include <QDate>
#include <QObject>
#include <QString>

namespace kx {

class Database;

/// What the chart of accounts says about one account.
struct AccInfo {
    QString code;       ///< account code, e.g. "100201"
    QString name;       ///< account name, e.g. "工商银行"
    QString fullName;   ///< names from the top level down, joined by "\"
    QString direction;  ///< balance direction "借" or "贷" (empty when unknown)
    QString currency;   ///< foreign currency kept for the account (empty for none)
    bool isDetail = true; ///< true when no account lies below it
};

/// The host's accounting context: the open database, the user, the period
/// and the dates the journal works within, and the chart of accounts.
///
/// The journal calls nothing of the host but these members. Hosts implement
/// it, or use SqlAccContext.
class KXJOURNAL_EXPORT AccContext : public QObject
{
    Q_OBJECT
public:
    /// A context with \a parent.
    explicit AccContext(QObject *parent = nullptr);
    /// Destroys the context; a control using it notices and stops using it.
    ~AccContext() override;

    /// The open database connection every query runs on.
    virtual Database &Connection() = 0;
    /// The user working now (the maker of vouchers).
    virtual QString UserName() = 0;
    /// The accounting director (named on made vouchers).
    virtual QString DirectorName() = 0;
    /// The current accounting period; its first four characters are the year.
    virtual QString CurPeriod() = 0;
    /// First date of the current period.
    virtual QDate PeriodStart() = 0;
    /// Last date of the current period.
    virtual QDate PeriodEnd() = 0;
    /// The date the accounts begin.
    virtual QDate BeginDate() = 0;
    /// The voucher types, separated by "|"; the first is the default.
    virtual QString DocTypes() = 0;
    /// The name of account \a accId (empty when there is none).
    virtual QString GetAccName(int accId, int option = 0) = 0;
    /// The code of account \a accId (empty when there is none).
    virtual QString GetAccCode(int accId) = 0;
    /// The id of the account a person named by code, name or entry code, as text ("0" when none).
    virtual QString LookupAccID(const QString &accText) = 0;
    /// The last date of the accounting period that \a date lies in.
    virtual QDate GetPeriodDate(const QDate &date) = 0;
    /// Fills \a info for account \a accId; false when there is no such account.
    virtual bool GetAccInfo(int accId, AccInfo &info) = 0;
    /// Told after a book was saved, so other views of it can refresh.
    virtual void SaveNotice(const QString &notice) = 0;

Q_SIGNALS:
    /// A message from the host to every journal that uses this context.
    void Announce(const QString &message);

protected:
    /// Room for members added in later versions without changing the layout
    /// hosts' subclasses are built against; does nothing here.
    virtual void virtual_hook(int id, void *data);
};

} // namespace kx
