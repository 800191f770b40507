#pragma once

#include "data/RecordWriter.h"

namespace kx {

/// Writes records one statement a row through Qt SQL, with the dialect's
/// own statements (the ODBC databases).
class QtRecordWriter : public RecordWriter
{
public:
    /// Writes on \a db.
    explicit QtRecordWriter(const Database &db);

    Result<void> remove(int recId) override;
    using RecordWriter::write;
    Result<QHash<int, int>> write(const RecordSource &rows) override;

private:
    Result<int> insert(const RecordValues &row);

    const Database &m_db;
};

} // namespace kx
