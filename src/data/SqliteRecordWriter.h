#pragma once

#include "data/RecordWriter.h"

#include <QByteArray>

struct sqlite3;
struct sqlite3_stmt;

namespace kx {

/// Writes records through the SQLite engine of the open connection, with
/// statements prepared once per pass: a save of a large book costs little
/// more than the engine's own work.
class SqliteRecordWriter : public RecordWriter
{
public:
    /// Writes through the engine handle \a handle (a sqlite3*).
    explicit SqliteRecordWriter(void *handle);
    ~SqliteRecordWriter() override;

    Result<void> remove(int recId) override;
    Result<QHash<int, int>> write(const std::vector<RecordValues> &rows) override;

private:
    sqlite3_stmt *prepare(const QString &sql);
    Result<void> bindAll(sqlite3_stmt *stmt, const RecordValues &record, int recId);
    QString error() const;

    sqlite3 *m_db;
    sqlite3_stmt *m_update[2] = {nullptr, nullptr};
    sqlite3_stmt *m_insert[2] = {nullptr, nullptr};
    QByteArray m_utf8;  ///< one row's texts, encoded once into a buffer kept between rows
};

} // namespace kx
