#pragma once

#include "data/RecordWriter.h"

#include <QByteArray>

struct sqlite3;
struct sqlite3_stmt;

namespace kx {

/// Writes records through the SQLite engine of the open connection. A few
/// rows go one prepared statement a row; more go in bulk: every row into a
/// temporary table through one prepared INSERT, values bound, then one
/// UPDATE … FROM sets the stored records and one INSERT … SELECT … RETURNING
/// adds the new ones (and those someone else deleted meanwhile); a record
/// whose balances alone moved has only those two set. All of it inside
/// the caller's transaction. A save of a large book costs little more than
/// the engine's own set-based work.
class SqliteRecordWriter : public RecordWriter
{
public:
    /// Writes through the engine handle \a handle (a sqlite3*).
    explicit SqliteRecordWriter(void *handle);
    ~SqliteRecordWriter() override;

    Result<void> remove(int recId) override;
    using RecordWriter::write;
    Result<QHash<int, int>> write(const RecordSource &rows) override;
    bool changeStamp(ChangeStamp &stamp) override;
    bool writesBalancesAlone() const override;

    /// From how many rows a pass goes in bulk.
    static constexpr std::size_t BulkFrom = 50;

private:
    Result<QHash<int, int>> writeEach(const RecordSource &rows);
    Result<QHash<int, int>> writeBulk(const RecordSource &rows);
    Result<void> updateBalances(const RecordValues &row);
    /// Runs \a sql, which returns no rows; gives how many rows it changed.
    Result<int> run(const char *sql);
    sqlite3_stmt *prepare(const QString &sql);
    /// Binds \a order's values of \a record to \a stmt from parameter \a first on.
    Result<void> bindFields(sqlite3_stmt *stmt, const RecordValues &record, const std::vector<RecordField> &order,
                            int first);
    Result<void> bindAll(sqlite3_stmt *stmt, const RecordValues &record, int recId);
    QString error() const;

    sqlite3 *m_db;
    sqlite3_stmt *m_update[2] = {nullptr, nullptr};
    sqlite3_stmt *m_insert[2] = {nullptr, nullptr};
    sqlite3_stmt *m_balances = nullptr;
    QByteArray m_utf8;  ///< one row's texts, encoded once into a buffer kept between rows
};

} // namespace kx
