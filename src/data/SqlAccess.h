#pragma once

#include "data/SqlDialect.h"
#include "data/SqlStatement.h"
#include "kxjournal/Result.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>

namespace kx {

class Database;

// The library's statements on a Database. Statements carry their values
// apart from the text (SqlStatement); the library never splices a value into
// SQL. On PostgreSQL sqlRun(), sqlScalar(), sqlFirstRowField() and the record
// reads and writes hand values to libpq as parameters; sqlExec(), which gives
// back a QSqlQuery, goes through Qt's driver, which escapes bound values into
// its own statement text, so the library calls it there only with statements
// that carry no bound values (typed integers written into the text). A failed
// statement also becomes the database's lastError().

/// The dialect statements for \a db are written in.
const SqlDialect &sqlDialect(const Database &db);

/// Prepares and runs \a statement; the query is positioned before its
/// first row. Reads forward only unless \a forwardOnly is false.
Result<QSqlQuery> sqlExec(const Database &db, const SqlStatement &statement, bool forwardOnly = true);
/// Runs \a statement and returns its first column of its first row
/// (an invalid QVariant when there is no row).
Result<QVariant> sqlScalar(const Database &db, const SqlStatement &statement);
/// Runs \a statement and returns field \a field of its first row: the
/// field of exactly that name, else one that differs only in case (some
/// engines fold names). Invalid when there is no row or no such field.
Result<QVariant> sqlFirstRowField(const Database &db, const SqlStatement &statement, const QString &field);
/// True when \a table is a table the statements on \a db reach (on
/// PostgreSQL: on the search path, not merely in some schema). Asked so
/// that nothing fails when it is missing: a failed statement would spoil a
/// transaction the host holds open.
bool sqlHasTable(const Database &db, const QString &table);
/// Runs a statement whose rows are not needed.
Result<void> sqlRun(const Database &db, const SqlStatement &statement);

/// Checks the connection of \a db and opens it again when the server dropped
/// it (a restart, a network break); fails, saying why, when it stays lost.
Result<void> ensureConnected(Database &db);

} // namespace kx
