#pragma once

#include "data/RecordWriter.h"

namespace kx {

/// Writes records to PostgreSQL in batches: one UPDATE … FROM (VALUES …) and
/// one multi-row INSERT … RETURNING per few hundred rows, since every
/// statement costs the server a round of its own.
class PgRecordWriter : public RecordWriter
{
public:
    /// Writes on \a db.
    explicit PgRecordWriter(const Database &db);

    Result<void> remove(int recId) override;
    Result<QHash<int, int>> write(const std::vector<RecordValues> &rows) override;

    /// Rows per statement.
    static constexpr int BatchRows = 400;

private:
    Result<QList<int>> updateBatch(const std::vector<const RecordValues *> &batch, bool withAmounts);
    Result<void> insertBatch(const std::vector<const RecordValues *> &batch, bool withAmounts, QHash<int, int> &added);

    const Database &m_db;
};

} // namespace kx
