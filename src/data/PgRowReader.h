#pragma once

#include "data/RecordFetcher.h"

struct pg_conn;

namespace kx {

class Database;

/// Reads a query's rows on PostgreSQL straight through libpq, on the
/// connection Qt holds: values bound as parameters, results taken as text
/// and typed as RecordFetcher types them, without a QVariant per value.
class PgRowReader
{
public:
    /// The libpq connection behind \a db, or null when it is not PostgreSQL.
    static pg_conn *connectionOf(const Database &db);

    /// Runs \a statement ("?" placeholders) on \a conn; see RecordFetcher::fetch().
    static Result<FetchedRows> read(pg_conn *conn, const SqlStatement &statement, const QStringList &amountFields,
                                    int expectedRows, int leadingCols);

    /// Runs \a statement on \a conn for its effect, values bound as parameters.
    static Result<void> run(pg_conn *conn, const SqlStatement &statement);

    /// \a sql with each "?" outside quotes turned into $1, $2, …
    static QByteArray numberedPlaceholders(const QString &sql);
};

} // namespace kx
