#pragma once

#include "grid/CellArray.h"
#include "data/SqlStatement.h"
#include "kxjournal/Result.h"

#include <QStringList>

namespace kx {

class Database;

/// The rows of a query, all at once, as cell texts.
struct FetchedRows {
    CellArray cells;         ///< one row per record: the leading columns, then one per field
    QStringList fieldNames;  ///< the result's field names, in order

    /// The index of the field named \a name, in any case (-1 when there is none).
    int fieldIndex(const QString &name) const
    {
        for (int i = 0; i < fieldNames.size(); ++i)
            if (fieldNames.at(i).compare(name, Qt::CaseInsensitive) == 0)
                return i;
        return -1;
    }
};

/// Runs a query and takes every row at once into a CellArray, typed: whole
/// numbers, amounts (exact to four decimals), days, and pooled texts; NULL
/// is an empty cell. Read as text, cells give the journal's forms: dates
/// yyyy-MM-dd, amounts in plain currency text.
///
/// On SQLite the rows are read straight from the engine with typed column
/// reads (the same connection, no second copy of the data), on PostgreSQL
/// through libpq with bound parameters (PgRowReader); other engines go
/// through Qt SQL, forward only.
class RecordFetcher
{
public:
    /// Runs \a statement on \a db; the fields named in \a amountFields are
    /// read as amounts. \a expectedRows, when known, sizes the array once.
    /// Each row starts with \a leadingCols empty cells, so a grid with that
    /// many fixed columns takes the rows over as they are.
    static Result<FetchedRows> fetch(const Database &db, const SqlStatement &statement,
                                     const QStringList &amountFields, int expectedRows = 0, int leadingCols = 0);

private:
    static Result<FetchedRows> fetchSqlite(void *handle, const SqlStatement &statement,
                                           const QStringList &amountFields, int expectedRows, int leadingCols);
    static Result<FetchedRows> fetchQt(const Database &db, const SqlStatement &statement,
                                       const QStringList &amountFields, int leadingCols);
};

} // namespace kx
