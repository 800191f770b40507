#pragma once

#include "kxjournal/Currency.h"
#include "kxjournal/Result.h"

#include <QHash>
#include <QStringList>
#include <QVariantList>
#include <array>
#include <memory>
#include <vector>

namespace kx {

class Database;

/// One value to store: a number, an amount, or a text (shared with the
/// grid's cell, not copied).
struct FieldValue {
    enum Kind : quint8 { Number, Amount, Text };
    Kind kind = Number;
    qint64 number = 0;            ///< the number, or the amount's raw ten-thousandths
    QString text;

    /// A whole number.
    static FieldValue of(qint64 n) { return {Number, n, {}}; }
    /// An amount.
    static FieldValue of(Currency a) { return {Amount, a.raw(), {}}; }
    /// A text.
    static FieldValue of(const QString &t) { return {Text, 0, t}; }
    /// The value for a bound parameter: amounts as their exact plain text.
    QVariant toVariant() const;
};

/// The stored fields of a journal record, in the order a writer sends them.
enum class RecordField : quint8 {
    JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, Balance, fxBalance,
    Field1, Field2, Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID,
    Count  ///< not a field: how many there are
};

/// One grid row to store, its values set by field.
struct RecordValues {
    int gridRow = 0;          ///< its place in the grid, stored as Row
    int recId = 0;            ///< its key; 0 or less for a row never stored
    bool withAmounts = true;  ///< false: Debit, Credit, Rate and Forex keep their stored values
    /// The record is stored with this Row and DocID already: a writer may
    /// leave them as they are (an engine then keeps its index on them untouched).
    bool atPlace = false;
    /// Only Balance and fxBalance are set, and only they are written: the
    /// record's other fields are stored as they are (see writesBalancesAlone()).
    bool balancesOnly = false;

    /// Sets the value of \a field.
    void set(RecordField field, FieldValue value) { m_values[std::size_t(field)] = std::move(value); }
    /// The value of \a field.
    const FieldValue &operator[](RecordField field) const { return m_values[std::size_t(field)]; }

private:
    std::array<FieldValue, std::size_t(RecordField::Count)> m_values{};
};

/// The rows a pass writes, each made when the writer takes it, so that a
/// pass over a million rows never holds them all at once.
class RecordSource
{
public:
    virtual ~RecordSource();
    /// How many rows there are.
    virtual std::size_t size() const = 0;
    /// Sets \a out to row \a i (below size()); rows are taken in order,
    /// each as often as a writer needs.
    virtual void fill(std::size_t i, RecordValues &out) const = 0;
};

/// What tells whether a database changed since a moment: the same stamp only
/// while nobody, this connection included, stored anything in between.
struct ChangeStamp {
    const void *connection = nullptr;  ///< the connection it was taken on
    qint64 session = 0;                ///< a number no other connection of this process carries
    qint64 version = 0;                ///< what the engine counts other connections' commits by
    qint64 changes = 0;                ///< the rows this connection changed so far
    /// Taken inside a transaction: what was read may still be rolled back.
    bool inTransaction = false;
    bool operator==(const ChangeStamp &o) const
    {
        return connection == o.connection && session == o.session && version == o.version && changes == o.changes;
    }
};

/// Writes journal records inside the caller's transaction, in the fastest
/// way the engine offers: straight through the engine on SQLite, in batches
/// on PostgreSQL, one statement a row elsewhere. A record that has a key but
/// is no longer stored (someone deleted it) is added again with a new key.
class RecordWriter
{
public:
    virtual ~RecordWriter();

    /// The writer for \a db.
    static std::unique_ptr<RecordWriter> create(const Database &db);
    /// The fields written, in order; without the four amounts when \a withAmounts is false.
    static const std::vector<RecordField> &fields(bool withAmounts);
    /// The column names of fields(\a withAmounts), in the same order.
    static const QStringList &fieldNames(bool withAmounts);

    /// The values of \a record, in the order of fields(), as bound parameters.
    static QVariantList bindable(const RecordValues &record);
    /// Deletes record \a recId.
    virtual Result<void> remove(int recId) = 0;
    /// Writes \a rows; returns the keys of the rows that were added, by grid row.
    Result<QHash<int, int>> write(const std::vector<RecordValues> &rows);
    /// Writes the rows of \a rows, each made as it is written; returns the
    /// keys of the rows that were added, by grid row.
    virtual Result<QHash<int, int>> write(const RecordSource &rows) = 0;
    /// The database's change stamp now, inside the caller's transaction;
    /// false when the engine cannot tell (then every save reads back what it
    /// is about to overwrite).
    virtual bool changeStamp(ChangeStamp &stamp);
    /// Whether the writer takes rows with only their balances set (RecordValues::balancesOnly).
    virtual bool writesBalancesAlone() const;
};

} // namespace kx
