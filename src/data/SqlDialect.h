#pragma once

#include "data/SqlStatement.h"
#include "kxjournal/Result.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QVariant>
#include <memory>

namespace kx {

/// Every statement the journal runs, in one database's syntax.
///
/// Four dialects: the server and desktop dialects for ODBC connections
/// (SQL Server and Access), chosen by whether the ODBC connection string
/// contains "SQL" (exact case), and the SQLite and PostgreSQL dialects. All
/// four give the same statements: the same columns, joins, conditions and
/// order, each in its own syntax.
class SqlDialect
{
public:
    /// The four dialects.
    enum Kind { Server, Desktop, Sqlite, Postgres };

    virtual ~SqlDialect();

    /// The dialect of \a kind.
    static std::unique_ptr<SqlDialect> create(Kind kind);
    /// The dialect of an ODBC connection: Server when \a connectionString
    /// contains "SQL" (case-sensitive), Desktop otherwise.
    static Kind odbcKind(const QString &connectionString);

    /// Which dialect this is.
    virtual Kind kind() const = 0;
    /// A short name for messages ("server", "desktop", "sqlite", "postgresql").
    QString name() const;
    /// How many significant digits the engine keeps exactly in an amount
    /// column (see Currency::significantDigits()); an amount with more would
    /// come back changed. 19 where every amount is kept exactly.
    virtual int exactDigits() const;

    // ---- kxJournal: book definitions ----
    /// The book with id \a asId.
    SqlStatement journalById(int asId) const;
    /// The book with code \a code and every book below it, by code.
    SqlStatement journalSubtree(const QString &code) const;
    /// Names and codes of the books of top-level group \a group, by code.
    SqlStatement journalGroup(const QString &group) const;

    // ---- kxJournalRecs: records ----
    /// The records of one book with the account, voucher and book columns, in stored row order.
    SqlStatement loadBook(int docId) const;
    /// The records of several books, interleaved by date, then stored row, then key.
    SqlStatement loadConsolidated(const QList<int> &docIds) const;
    /// The records with keys \a recIds, every stored field.
    SqlStatement storedRecords(const QList<int> &recIds) const;
    /// Every record of a book, by key (the save pass reads it).
    SqlStatement recordsOfBook(int docId) const;
    /// Deletes one record.
    SqlStatement deleteRecord(int recId) const;
    /// Deletes every record of a book.
    SqlStatement deleteBook(int docId) const;
    /// The first record of a book, by key.
    SqlStatement firstRecordOfBook(int docId) const;
    /// Writes one field of one record: an integer into the text, a double,
    /// date or text bound. Fails for a field the record table does not have.
    Result<SqlStatement> updateRecordField(const QString &field, const QVariant &value, int recId) const;
    /// Writes the given fields of record \a recId (values bound in order).
    SqlStatement updateRecord(int recId, const QStringList &fields, const QVariantList &values) const;
    /// Adds a record with the given fields; the statement hands back the new
    /// RecID as its result row, except where lastInsertedKey() must be asked.
    SqlStatement insertRecord(const QStringList &fields, const QVariantList &values) const;
    /// The statement that tells the key of the record just added, where the
    /// insert itself cannot return it (empty text otherwise).
    virtual SqlStatement lastInsertedKey() const;
    /// How many records book \a docId has.
    SqlStatement countRecords(int docId) const;
    /// The 20 most recent explanations of all books, newest date first.
    SqlStatement recentExplains() const;
    /// The 30 latest explanations of one book, newest key first.
    SqlStatement bookExplains(int docId) const;

    // ---- kxAccClass: the chart of accounts ----
    /// Every account: id, code, name and entry code, by code.
    SqlStatement chartOfAccounts() const;
    /// How many records of book \a docId name each account (AccID, Uses).
    SqlStatement accountUse(int docId) const;
    /// The account with id \a accId.
    SqlStatement accountById(int accId) const;
    /// The accounts with code \a code.
    SqlStatement accountByCode(const QString &code) const;
    /// The id of the first account with code \a code.
    SqlStatement accountIdByCode(const QString &code) const;
    /// The ids of the accounts named \a name.
    SqlStatement accountIdByName(const QString &name) const;
    /// The ids of the accounts with entry code \a enterCode.
    SqlStatement accountIdByEnterCode(const QString &enterCode) const;
    /// Accounts named \a name, below \a codePrefix when it is not empty.
    SqlStatement accountByNameUnder(const QString &name, const QString &codePrefix) const;
    /// Accounts whose name, code or entry code is \a text.
    SqlStatement accountByAnyName(const QString &text) const;
    /// The ids of the accounts below the account with code \a code.
    SqlStatement accountBelow(const QString &code) const;

    // ---- kxDocDir: vouchers ----
    /// The voucher with id \a docId.
    SqlStatement voucherById(int docId) const;
    /// The date of one voucher of accounting period \a period (the period bound).
    SqlStatement voucherDateOfPeriod(const QString &period) const;
    /// The highest voucher number of type \a type (empty: of every type)
    /// dated from \a start to \a end (dates bound).
    SqlStatement highestVoucherNo(const QString &type, const QDate &start, const QDate &end) const;
    /// Id, date, type and number of the vouchers dated from \a start to
    /// \a end, newest first; with an invalid date, the \a limit newest of all.
    SqlStatement vouchersBetween(const QDate &start, const QDate &end, int limit) const;

    /// Columns of the record table that updateRecordField() accepts.
    static const QStringList &recordFields();

protected:
    /// "Select Top n " + body, or the dialect's equivalent.
    virtual QString selectTop(int n, const QString &body) const;
    /// The first \a length characters of \a column.
    virtual QString leftOf(const QString &column, int length) const;
    /// The opening words of a statement that deletes rows.
    virtual QString deleteRowsFrom() const;
    /// Words between the column list and VALUES of an insert (" Output Inserted.RecID").
    virtual QString insertOutput() const;
    /// Words after the VALUES of an insert (" Returning RecID").
    virtual QString insertReturning() const;
    /// The select list and joins of the load query, up to and including the
    /// last join and its trailing blank. Written once from the hooks below;
    /// a dialect whose text is fixed by the product it talks to overrides it.
    virtual QString loadSelect() const;
    /// The record date as the ShowName column shows it ("2026年03月09日").
    virtual QString dateLabelExpression() const = 0;
    /// The record date as yyyy-MM-dd text (the stored column where it already is).
    virtual QString isoDateExpression() const;
    /// The voucher label of the AccDoc column ("03-09记 12").
    virtual QString voucherLabelExpression() const = 0;
    /// \a key as a result column name (quoted where the engine folds case).
    virtual QString resultName(const QString &key) const;
    /// What follows a plain column to give it the name \a key: nothing where
    /// the engine keeps the column's own spelling.
    virtual QString nameColumn(const QString &key) const;
};

} // namespace kx
