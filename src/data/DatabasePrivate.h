#pragma once

#include "data/SqlDialect.h"
#include "kxjournal/Database.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <memory>

namespace kx {

/// What a Database holds: the Qt connection, the dialect its statements are
/// written in, and what it was opened from. The library reaches it through
/// get(); hosts never see it.
class DatabasePrivate
{
public:
    DatabasePrivate();

    /// The state behind \a db.
    static DatabasePrivate &get(const Database &db) { return *db.d; }

    /// Schema search path and engine settings of a fresh connection; false,
    /// with m_lastError set and the connection closed, when one cannot be applied.
    bool applySessionSettings();
    /// The driver's text of \a e, or a general one when it gives none.
    static QString errorText(const QSqlError &e);

    QSqlDatabase m_db;
    std::unique_ptr<SqlDialect> m_dialect;
    QString m_url;
    QString m_connectionString;
    QString m_schema;
    bool m_readOnly = false;
    QString m_lastError;
    Database::Engine m_engine = Database::NoEngine;
};

} // namespace kx
