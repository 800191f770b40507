#pragma once

#include "kxjournal/Result.h"

#include <QList>
#include <QSet>
#include <functional>
#include <vector>

namespace kx {

class BookRow;
class RecordPrints;
class Database;
class StoredRecords;
struct SqlStatement;

/// Tells which records somebody else changed since this control last read
/// or wrote them: each is read again as a load reads it and its fingerprint
/// compared with the one remembered. Run inside the save's transaction,
/// which on PostgreSQL reads one snapshot: a record somebody changes between
/// the check and the write makes the write fail rather than overwrite it.
class ConflictCheck
{
public:
    /// Checks against the fingerprints in \a stored, reading from \a db.
    ConflictCheck(const Database &db, const StoredRecords &stored) : m_db(db), m_stored(stored) {}

    /// The keys among \a keys (records of book \a docId) whose stored record
    /// differs from what was remembered. A key not remembered is no conflict
    /// (a new row); one remembered whose record is gone goes to \a gone when
    /// given, else counts as no conflict. \a rests, when given, gets for each
    /// record found unchanged the print of it without its balances (see
    /// StoredRecords::fingerprint()).
    /// \a allCurrent, when given, is set to whether the book was read whole
    /// and every record remembered was found as remembered.
    Result<QList<int>> changedElsewhere(const std::vector<int> &keys, int docId, QList<int> *gone = nullptr,
                                        RecordPrints *rests = nullptr, bool *allCurrent = nullptr) const;

    /// Called with each record read back, as a row of a grid of its own
    /// (the visit may change its cells).
    using StoredVisit = std::function<void(const BookRow &row)>;
    /// Reads the records \a statement selects from their table, typed as a load types them.
    static Result<void> readStored(const Database &db, const SqlStatement &statement, const StoredVisit &visit);
    /// True when \a row, read back by readStored(), is what \a stored remembers of it.
    static bool unchanged(const StoredRecords &stored, const BookRow &row);

private:
    static constexpr int WholeBookFrom = 2000;
    // Reads \a statement's records; those in \a keys leave it, and join
    // \a changed when they differ from what was remembered.
    // \a matched, when given, counts every record read that is as remembered.
    Result<void> compare(const SqlStatement &statement, RecordPrints &keys, QList<int> &changed,
                         RecordPrints *rests, int *matched = nullptr) const;

    const Database &m_db;
    const StoredRecords &m_stored;
};

} // namespace kx
