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

    /// Sets the value of \a field.
    void set(RecordField field, FieldValue value) { m_values[std::size_t(field)] = value; }
    /// The value of \a field.
    const FieldValue &operator[](RecordField field) const { return m_values[std::size_t(field)]; }

private:
    std::array<FieldValue, std::size_t(RecordField::Count)> m_values{};
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
    virtual Result<QHash<int, int>> write(const std::vector<RecordValues> &rows) = 0;
};

} // namespace kx
