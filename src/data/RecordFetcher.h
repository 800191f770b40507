#pragma once

#include "kxjournal/CellArray.h"
#include "kxjournal/Result.h"
#include "kxjournal/SqlStatement.h"

#include <QStringList>

namespace kx {

class Database;

/// The rows of a query, all at once, as cell texts.
struct FetchedRows {
    CellArray cells;         ///< one row per record, one column per field
    QStringList fieldNames;  ///< the result's field names, in order
};

/// Runs a query and takes every row at once into a CellArray, with values in
/// the journal's text forms: dates yyyy-MM-dd, amounts in plain currency
/// text, NULL as empty text.
///
/// On SQLite the rows are read straight from the engine with typed column
/// reads (the same connection, no second copy of the data); other engines go
/// through Qt SQL, forward only.
class RecordFetcher
{
public:
    /// Runs \a statement on \a db; the fields named in \a amountFields are
    /// read as amounts. \a expectedRows, when known, sizes the array once.
    static Result<FetchedRows> fetch(const Database &db, const SqlStatement &statement,
                                     const QStringList &amountFields, int expectedRows = 0);

private:
    static Result<FetchedRows> fetchSqlite(void *handle, const SqlStatement &statement,
                                           const QStringList &amountFields, int expectedRows);
    static Result<FetchedRows> fetchQt(const Database &db, const SqlStatement &statement,
                                       const QStringList &amountFields);
};

} // namespace kx
