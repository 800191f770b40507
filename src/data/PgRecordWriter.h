#pragma once

#include "data/RecordWriter.h"

#include <QByteArray>

struct pg_conn;

namespace kx {

/// Writes records to PostgreSQL the way the server takes them fastest: the
/// rows stream into a temporary table with COPY, then one UPDATE … FROM sets
/// the stored records and one INSERT … SELECT … RETURNING adds the new ones
/// (and those someone else deleted meanwhile). Every value travels as data,
/// on the connection Qt holds, inside the caller's transaction.
class PgRecordWriter : public RecordWriter
{
public:
    /// Writes on \a db (a PostgreSQL connection).
    explicit PgRecordWriter(const Database &db);

    Result<void> remove(int recId) override;
    using RecordWriter::write;
    Result<QHash<int, int>> write(const RecordSource &rows) override;

    /// One row as a line of COPY's text format (appended to \a out).
    static void appendCopyLine(const RecordValues &row, QByteArray &out);

private:
    Result<void> command(const char *sql);
    /// Runs a statement that returns no rows; gives how many rows it changed.
    Result<int> changed(const char *sql);
    /// Sends \a rows into the temporary table; counts those with a key into \a keyed.
    Result<void> copyRows(const RecordSource &rows, qsizetype &keyed);
    QString error(const char *what) const;

    const Database &m_db;
    pg_conn *m_conn = nullptr;
};

} // namespace kx
