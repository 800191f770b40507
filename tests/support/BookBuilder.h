#pragma once

#include <kxjournal/Database.h>

#include <QString>
#include <QVariantMap>

namespace kxtest {

/// Writes accounts, books, vouchers and records into a test database and
/// hands back the keys the database gave them.
class BookBuilder
{
public:
    explicit BookBuilder(const kx::Database &db) : m_db(db) {}

    /// An account; returns its AccID.
    int account(const QString &code, const QString &name, const QString &enterCode = QString());
    /// A book; \a address and \a header as stored ("label|id"); returns its asID.
    int book(const QString &code, const QString &name, const QString &direction = QStringLiteral("借"),
             const QString &address = QString(), const QString &header = QString());
    /// A voucher; returns its DocID.
    int voucher(const QString &date, const QString &type, int number);
    /// A record of book \a docId with the given columns (JnlDate, Debit, …); returns its RecID.
    int record(int docId, int row, const QVariantMap &fields);

private:
    int insert(const QString &table, const QString &key, const QVariantMap &fields);

    const kx::Database &m_db;
};

} // namespace kxtest
