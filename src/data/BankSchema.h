#pragma once

#include "data/SqlDialect.h"
#include "kxjournal/Result.h"

#include <QStringList>

namespace kx {

class Database;

/// The tables bank reconciliation keeps beside the journal's own, which it
/// never changes:
///
/// - kxBankImport: one row a statement file imported into a bank book
///   (DocID): its name, the SHA-256 of its bytes, its format, when and by
///   whom, how many lines it added, and the closing balance the file gave
///   apart from its lines (with its date), if any;
/// - kxBankStmt: one row a statement line: the book, the import it came
///   from, its line in the file, its date, side ("收" or "付"), amount, the
///   bank's reference, the counterparty's name and account, the memo, and
///   the balance after it when the bank gave one;
/// - kxBankMatch: one row a statement line ↔ journal record pair (a line
///   may stand for several records), who matched them and when, and
///   whether the automatic matching did;
/// - kxBankMapping: per bank book, the column layout of its bank's
///   statement files the cashier confirmed.
class BankSchema
{
public:
    /// The statements creating the tables and their indexes on an engine
    /// of dialect \a kind; each creates only what is missing on SQLite and
    /// PostgreSQL (the ODBC ones are run only for a missing table).
    static QStringList statements(SqlDialect::Kind kind);
    /// Creates whatever of the tables is missing in \a db (an upgrade in
    /// place of a database made before reconciliation existed).
    static Result<void> ensure(Database &db);
    /// True when \a db holds the tables (asked of the catalogue: no failing
    /// statement, which would spoil a transaction the host holds open).
    static bool exists(const Database &db);
    /// The table names, in the order they are made.
    static const QStringList &tables();
};

} // namespace kx
