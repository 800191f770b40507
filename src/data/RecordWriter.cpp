#include "data/RecordWriter.h"

#include "data/PgRecordWriter.h"
#include "data/QtRecordWriter.h"
#include "data/SqlValue.h"
#include "data/SqliteRecordWriter.h"
#include "kxjournal/Database.h"

#include <QSqlDriver>

namespace kx {

RecordWriter::~RecordWriter() = default;
RecordSource::~RecordSource() = default;

namespace {

// Rows already made.
class Made : public RecordSource
{
public:
    explicit Made(const std::vector<RecordValues> &rows) : m_rows(rows) {}
    std::size_t size() const override { return m_rows.size(); }
    void fill(std::size_t i, RecordValues &out) const override { out = m_rows[i]; }

private:
    const std::vector<RecordValues> &m_rows;
};

} // namespace

Result<QHash<int, int>> RecordWriter::write(const std::vector<RecordValues> &rows)
{
    return write(Made(rows));
}

bool RecordWriter::changeStamp(ChangeStamp &)
{
    return false;
}

bool RecordWriter::writesBalancesAlone() const
{
    return false;
}

const std::vector<RecordField> &RecordWriter::fields(bool withAmounts)
{
    using F = RecordField;
    static const std::vector<RecordField> all{F::JnlDate, F::JnlNo, F::AccID, F::Explain, F::Debit, F::Credit,
                                              F::Rate, F::Forex, F::Balance, F::fxBalance, F::Field1, F::Field2,
                                              F::Field3, F::Field4, F::Flag, F::Remark, F::Tag, F::DirID, F::Row,
                                              F::DocID};
    static const std::vector<RecordField> withoutAmounts = [] {
        std::vector<RecordField> f;
        for (RecordField field : all)
            if (field != F::Debit && field != F::Credit && field != F::Rate && field != F::Forex)
                f.push_back(field);
        return f;
    }();
    return withAmounts ? all : withoutAmounts;
}

const QStringList &RecordWriter::fieldNames(bool withAmounts)
{
    // The balance field is written under its lower-case name, as it always was.
    static const char *const names[] = {"JnlDate", "JnlNo", "AccID", "Explain", "Debit", "Credit", "Rate",
                                        "Forex", "balance", "fxBalance", "Field1", "Field2", "Field3", "Field4",
                                        "Flag", "Remark", "Tag", "DirID", "Row", "DocID"};
    static_assert(sizeof(names) / sizeof(names[0]) == std::size_t(RecordField::Count), "one name a field");
    const auto make = [](bool amounts) {
        QStringList list;
        for (RecordField f : fields(amounts))
            list << QString::fromLatin1(names[std::size_t(f)]);
        return list;
    };
    static const QStringList all = make(true);
    static const QStringList withoutAmounts = make(false);
    return withAmounts ? all : withoutAmounts;
}

QVariant FieldValue::toVariant() const
{
    switch (kind) {
    case Amount: return SqlValue::bindAmount(Currency::fromRaw(number));
    case Text: return text;
    case Number: break;
    }
    return QVariant::fromValue(number);
}

QVariantList RecordWriter::bindable(const RecordValues &record)
{
    const std::vector<RecordField> &order = fields(record.withAmounts);
    QVariantList out;
    out.reserve(qsizetype(order.size()));
    for (RecordField f : order)
        out << record[f].toVariant();
    return out;
}

std::unique_ptr<RecordWriter> RecordWriter::create(const Database &db)
{
    if (db.engine() == Database::SqliteEngine && db.handle().driver()) {
        const QVariant h = db.handle().driver()->handle();
        if (h.isValid() && qstrcmp(h.typeName(), "sqlite3*") == 0)
            return std::make_unique<SqliteRecordWriter>(*static_cast<void *const *>(h.constData()));
    }
    if (db.engine() == Database::PostgresEngine)
        return std::make_unique<PgRecordWriter>(db);
    return std::make_unique<QtRecordWriter>(db);
}

} // namespace kx
