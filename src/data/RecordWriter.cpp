#include "data/RecordWriter.h"

#include "data/PgRecordWriter.h"
#include "data/QtRecordWriter.h"
#include "data/SqlValue.h"
#include "data/SqliteRecordWriter.h"
#include "kxjournal/Database.h"

#include <QSqlDriver>

namespace kx {

RecordWriter::~RecordWriter() = default;

QStringList RecordWriter::fields(bool withAmounts)
{
    // The balance field is written under its lower-case name, as it always was.
    QStringList f{QStringLiteral("JnlDate"), QStringLiteral("JnlNo"), QStringLiteral("AccID"), QStringLiteral("Explain")};
    if (withAmounts)
        f << QStringLiteral("Debit") << QStringLiteral("Credit") << QStringLiteral("Rate") << QStringLiteral("Forex");
    f << QStringLiteral("balance") << QStringLiteral("fxBalance") << QStringLiteral("Field1") << QStringLiteral("Field2")
      << QStringLiteral("Field3") << QStringLiteral("Field4") << QStringLiteral("Flag") << QStringLiteral("Remark")
      << QStringLiteral("Tag") << QStringLiteral("DirID") << QStringLiteral("Row") << QStringLiteral("DocID");
    return f;
}

QVariant FieldValue::toVariant() const
{
    switch (kind) {
    case Amount: return SqlValue::bindAmount(Currency::fromRaw(number));
    case Text: return *text;
    case Number: break;
    }
    return QVariant::fromValue(number);
}

QVariantList RecordWriter::bindable(const std::vector<FieldValue> &values)
{
    QVariantList out;
    out.reserve(qsizetype(values.size()));
    for (const FieldValue &v : values)
        out << v.toVariant();
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
