#include "ledger/StoredRecords.h"

#include "grid/HashMix.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"

#include <vector>

namespace kx {

namespace {

using C = JournalColumns;
using F = RecordField;

enum class As : quint8 { Text, Amount, Number };  // how recordOf() reads a field

// Which cell each stored field comes from, and how it is read.
struct Source {
    F field;
    C::Column column;
    As as;
};

const Source Sources[] = {
    {F::JnlDate, C::JnlDate, As::Text},   {F::JnlNo, C::JnlNo, As::Text},       {F::AccID, C::AccID, As::Number},
    {F::Explain, C::Explain, As::Text},   {F::Debit, C::Debit, As::Amount},     {F::Credit, C::Credit, As::Amount},
    {F::Rate, C::Rate, As::Amount},       {F::Forex, C::Forex, As::Amount},     {F::Balance, C::Balance, As::Amount},
    {F::fxBalance, C::fxBalance, As::Amount}, {F::Field1, C::Field1, As::Text}, {F::Field2, C::Field2, As::Text},
    {F::Field3, C::Field3, As::Text},     {F::Field4, C::Field4, As::Text},     {F::Flag, C::Flag, As::Number},
    {F::Remark, C::Remark, As::Text},     {F::Tag, C::Tag, As::Number},         {F::DirID, C::DirID, As::Number},
};

// A summary row's amount cells hold two-line totals; the opening row always writes its amounts.
bool writesAmounts(const BookRow &row, bool opening)
{
    return opening || !row.isSummary();
}

bool isAmountField(F f)
{
    return f == F::Debit || f == F::Credit || f == F::Rate || f == F::Forex;
}

} // namespace

RecordValues StoredRecords::recordOf(const BookRow &row, int docId, int storedRow, bool opening)
{
    RecordValues rec;
    fill(row, docId, storedRow, opening, rec);
    return rec;
}

void StoredRecords::fill(const BookRow &row, int docId, int storedRow, bool opening, RecordValues &rec)
{
    rec.gridRow = row.index();
    rec.recId = row.recId();
    rec.withAmounts = writesAmounts(row, opening);
    rec.atPlace = false;
    for (const Source &s : Sources) {
        switch (s.as) {
        case As::Text: rec.set(s.field, FieldValue::of(row.text(s.column))); break;
        case As::Amount: rec.set(s.field, FieldValue::of(row.amount(s.column))); break;
        case As::Number: rec.set(s.field, FieldValue::of(row.number(s.column))); break;
        }
    }
    rec.set(F::Row, FieldValue::of(storedRow));
    rec.set(F::DocID, FieldValue::of(docId));
}

QStringList StoredRecords::dropNul(const BookRow &row)
{
    QStringList changed;
    for (const Source &s : Sources) {
        if (s.as != As::Text)
            continue;
        QString text = row.text(s.column);
        if (!text.contains(QChar(0)))
            continue;
        text.remove(QChar(0));
        row.setText(s.column, text);
        const char *header = C::layout(s.column).header;
        changed << (header && *header ? QString::fromUtf8(header) : C::key(s.column));
    }
    return changed;
}

quint64 StoredRecords::fingerprint(const BookRow &row, int docId, int storedRow, bool opening, quint64 *rest)
{
    // Texts by their text (one encoding in the grid, so as exact as comparing
    // them, with no text made); amounts and numbers by the value recordOf()
    // writes, so an empty cell and a stored 0 are the same record. A record
    // that writes its amounts is printed without its balances first, then
    // with them: the first print tells a record whose balances alone moved.
    static const auto columnsOf = [](As as, bool balances) {
        std::vector<C::Column> columns;
        for (const Source &s : Sources)
            if (s.as == as && (s.field == F::Balance || s.field == F::fxBalance) == balances)
                columns.push_back(s.column);
        return columns;
    };
    static const std::vector<C::Column> texts = columnsOf(As::Text, false);
    static const std::vector<C::Column> numbers = columnsOf(As::Number, false);
    static const std::vector<C::Column> amounts = columnsOf(As::Amount, false);
    static const std::vector<C::Column> balances = columnsOf(As::Amount, true);
    const bool withAmounts = writesAmounts(row, opening);
    quint64 h = hashMix(withAmounts ? 1 : 2, row.textsHash(texts.data(), int(texts.size())));
    for (C::Column c : numbers)
        h = hashMix(h, quint64(row.number(c)));
    if (withAmounts)
        for (C::Column c : amounts)
            h = hashMix(h, quint64(row.amount(c).raw()));
    h = hashMix(hashMix(h, quint64(storedRow)), quint64(docId));
    if (rest)
        *rest = withAmounts ? (h | 1) : 0;
    for (C::Column c : balances)
        h = hashMix(h, quint64(row.amount(c).raw()));
    return h;
}

const std::vector<StoredRecords::Entered> &StoredRecords::entered()
{
    static const std::vector<Entered> fields = [] {
        std::vector<Entered> out;
        for (const Source &s : Sources) {
            if (s.field == F::Balance || s.field == F::fxBalance)
                continue;
            const FieldValue::Kind kind = s.as == As::Text     ? FieldValue::Text
                                          : s.as == As::Amount ? FieldValue::Amount
                                                               : FieldValue::Number;
            out.push_back({s.field, s.column, kind});
        }
        return out;
    }();
    return fields;
}

QList<int> StoredRecords::enteredColumns(const JournalColumns &columns)
{
    QList<int> cols;
    for (const Entered &f : entered())
        if (columns[f.column] >= 0)
            cols << columns[f.column];
    return cols;
}

FieldValue StoredRecords::valueOf(FieldValue::Kind kind, const QString &text)
{
    switch (kind) {
    case FieldValue::Text: return FieldValue::of(text);
    case FieldValue::Amount: {
        const int cr = int(text.indexOf(QLatin1Char('\r')));
        return FieldValue::of(Currency::fromText(cr < 0 ? QStringView(text) : QStringView(text).left(cr)).valueOr(Currency()));
    }
    case FieldValue::Number: {
        bool ok = false;
        const qint64 n = text.trimmed().toLongLong(&ok);
        if (ok)
            return FieldValue::of(n);
        const Currency a = Currency::fromText(text).valueOr(Currency());
        return FieldValue::of(a.isValid() ? a.raw() / Currency::Scale : 0);
    }
    }
    return {};
}

bool StoredRecords::sameAsLoaded(const BookRow &row, const Entered &field)
{
    if (!row.knowsClean())
        return false;
    const FieldValue now = valueOf(field.kind, row.text(field.column));
    const FieldValue then = valueOf(field.kind, row.cleanText(field.column));
    return now.number == then.number && now.text == then.text;
}

bool StoredRecords::writes(const BookRow &row, const Entered &field, bool opening)
{
    return writesAmounts(row, opening) || !isAmountField(field.field);
}

bool StoredRecords::holds(int recId, quint64 print) const
{
    quint64 known = 0;
    return m_prints.find(recId, known) && known == print;
}

} // namespace kx
