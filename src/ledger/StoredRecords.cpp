#include "ledger/StoredRecords.h"

#include "ledger/BookRow.h"

namespace kx {

namespace {

// A 64-bit mix (the splitmix finaliser): every input bit moves half the output.
quint64 mix(quint64 h, quint64 v)
{
    h ^= v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    h ^= h >> 30;
    h *= 0xbf58476d1ce4e5b9ULL;
    h ^= h >> 27;
    h *= 0x94d049bb133111ebULL;
    h ^= h >> 31;
    return h;
}

} // namespace

RecordValues StoredRecords::recordOf(const BookRow &row, int docId, int storedRow, bool opening)
{
    using C = JournalColumns;
    using F = RecordField;
    RecordValues rec;
    rec.gridRow = row.index();
    rec.recId = row.recId();
    // A summary row's amount cells hold two-line totals; the opening row always writes its amounts.
    rec.withAmounts = opening || !row.isSummary();
    const auto text = [&](F field, C::Column column) { rec.set(field, FieldValue::of(row.text(column))); };
    const auto amount = [&](F field, C::Column column) { rec.set(field, FieldValue::of(row.amount(column))); };
    const auto number = [&](F field, C::Column column) { rec.set(field, FieldValue::of(row.number(column))); };
    text(F::JnlDate, C::JnlDate);
    text(F::JnlNo, C::JnlNo);
    number(F::AccID, C::AccID);
    text(F::Explain, C::Explain);
    amount(F::Debit, C::Debit);
    amount(F::Credit, C::Credit);
    amount(F::Rate, C::Rate);
    amount(F::Forex, C::Forex);
    amount(F::Balance, C::Balance);
    amount(F::fxBalance, C::fxBalance);
    text(F::Field1, C::Field1);
    text(F::Field2, C::Field2);
    text(F::Field3, C::Field3);
    text(F::Field4, C::Field4);
    number(F::Flag, C::Flag);
    text(F::Remark, C::Remark);
    number(F::Tag, C::Tag);
    number(F::DirID, C::DirID);
    rec.set(F::Row, FieldValue::of(storedRow));
    rec.set(F::DocID, FieldValue::of(docId));
    return rec;
}

quint64 StoredRecords::fingerprint(const RecordValues &record)
{
    quint64 h = record.withAmounts ? 1 : 2;
    for (RecordField f : RecordWriter::fields(record.withAmounts)) {
        const FieldValue &v = record[f];
        // An empty text and a missing one are stored alike.
        h = mix(h, v.kind == FieldValue::Text ? quint64(qHash(v.text, 0x6b78)) : quint64(v.number));
    }
    return h;
}

bool StoredRecords::holds(const RecordValues &record) const
{
    const auto it = m_prints.constFind(record.recId);
    return it != m_prints.constEnd() && it.value() == fingerprint(record);
}

} // namespace kx
