#pragma once

#include "kxjournal/Result.h"

#include <QList>

namespace kx {

class Database;
class StoredRecords;

/// Tells which records somebody else changed since this control last read
/// or wrote them: each is read again as a load reads it and its fingerprint
/// compared with the one remembered. Run inside the save's transaction; on
/// engines that can, the records read stay locked until it ends, so nobody
/// changes them between the check and the write.
class ConflictCheck
{
public:
    /// Checks against the fingerprints in \a stored, reading from \a db.
    ConflictCheck(const Database &db, const StoredRecords &stored) : m_db(db), m_stored(stored) {}

    /// The keys among \a keys whose stored record differs from what was
    /// remembered. A key not remembered, or whose record is gone, is no
    /// conflict: a new row, or one the save adds again.
    Result<QList<int>> changedElsewhere(const QList<int> &keys) const;

private:
    const Database &m_db;
    const StoredRecords &m_stored;
};

} // namespace kx
