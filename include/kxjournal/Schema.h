#pragma once

#include "kxjournal/kxjournal_export.h"
#include "kxjournal/Result.h"

namespace kx {

class Database;

/// The four tables the journal reads and writes, created where missing.
///
/// kxJournal (book definitions), kxJournalRecs (records), kxAccClass (chart
/// of accounts), kxDocDir (vouchers), with database-generated keys, amounts
/// that keep four decimals exactly, and the indexes the load and save paths
/// use; beside them the tables of bank reconciliation (statement files,
/// statement lines, their matches with records, each bank book's statement
/// layout). SQLite and PostgreSQL; an ODBC database is the host's own.
class KXJOURNAL_EXPORT Schema
{
public:
    /// Creates whatever of the four tables and their indexes is missing.
    static Result<void> create(Database &db);
};

} // namespace kx
