#include "data/PgRowReader.h"

#include "data/FetchedCell.h"
#include "grid/CellArrayData.h"
#include "kxjournal/Database.h"

#include <QSqlDriver>
#include <libpq-fe.h>
#include <algorithm>
#include <memory>
#include <vector>

namespace kx {

namespace {

// Type ids of the server's built-in columnTypes (pg_type.oid), fixed since forever.
enum : Oid {
    BoolOid = 16,
    Int8Oid = 20,
    Int2Oid = 21,
    Int4Oid = 23,
    OidOid = 26,
    Float4Oid = 700,
    Float8Oid = 701,
    DateOid = 1082,
    TimestampOid = 1114,
    TimestampTzOid = 1184,
    NumericOid = 1700,
};

// What a column of the server's type \a type holds.
FetchedCell::Declared declaredOf(Oid type)
{
    switch (type) {
    case Int2Oid:
    case Int4Oid:
    case Int8Oid:
    case OidOid:
        return FetchedCell::Declared::Integer;
    case BoolOid:
        return FetchedCell::Declared::Flag;
    case TimestampOid:
    case TimestampTzOid:
        return FetchedCell::Declared::Moment;
    case Float4Oid:
    case Float8Oid:
    case NumericOid:
        return FetchedCell::Declared::Decimal;
    case DateOid:
        return FetchedCell::Declared::Day;
    default:
        return FetchedCell::Declared::Any;
    }
}

QString errorOf(pg_conn *conn)
{
    return QStringLiteral("数据库操作失败：%1").arg(QString::fromUtf8(PQerrorMessage(conn)).trimmed());
}

} // namespace

pg_conn *PgRowReader::connectionOf(const Database &db)
{
    if (db.engine() != Database::PostgresEngine || !db.isOpen() || !db.handle().driver())
        return nullptr;
    const QVariant h = db.handle().driver()->handle();
    // Qt names the type after the struct behind libpq's typedef.
    if (!h.isValid() || (qstrcmp(h.typeName(), "pg_conn*") != 0 && qstrcmp(h.typeName(), "PGconn*") != 0))
        return nullptr;
    return *static_cast<pg_conn *const *>(h.constData());
}

QByteArray PgRowReader::numberedPlaceholders(const QString &sql)
{
    QByteArray out;
    const QByteArray in = sql.toUtf8();
    out.reserve(in.size() + 16);
    bool quoted = false;
    int next = 1;
    for (char c : in) {
        if (c == '\'')
            quoted = !quoted;
        if (c == '?' && !quoted) {
            out += '$';
            out += QByteArray::number(next++);
        } else {
            out += c;
        }
    }
    return out;
}

namespace {

// Runs \a statement with its values as text parameters; null when it failed.
PGresult *execute(pg_conn *conn, const SqlStatement &statement, QString &error)
{
    // A statement with no values keeps every character: "?" may be an operator there.
    const QByteArray sql =
        statement.binds.isEmpty() ? statement.text.toUtf8() : PgRowReader::numberedPlaceholders(statement.text);
    std::vector<QByteArray> values;
    std::vector<const char *> params;
    values.reserve(std::size_t(statement.binds.size()));
    for (const QVariant &v : statement.binds) {
        if (v.isNull()) {
            params.push_back(nullptr);
            continue;
        }
        const QString text = v.typeId() == QMetaType::QDate ? v.toDate().toString(Qt::ISODate) : v.toString();
        // A parameter ends at its first NUL: a text holding one would be cut.
        if (text.contains(QChar(0))) {
            error = QStringLiteral("数据库操作失败：文字里有数据库不能存储的空字符。");
            return nullptr;
        }
        values.push_back(text.toUtf8());
        params.push_back(values.back().constData());
    }
    PGresult *res = PQexecParams(conn, sql.constData(), int(params.size()), nullptr, params.data(), nullptr,
                                 nullptr, 0);
    const ExecStatusType status = PQresultStatus(res);
    if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
        error = errorOf(conn);
        PQclear(res);
        return nullptr;
    }
    return res;
}

} // namespace

Result<void> PgRowReader::run(pg_conn *conn, const SqlStatement &statement)
{
    QString error;
    PGresult *res = execute(conn, statement, error);
    if (!res)
        return Error(error);
    PQclear(res);
    return {};
}

Result<FetchedRows> PgRowReader::read(pg_conn *conn, const SqlStatement &statement, const QStringList &amountFields,
                                      int expectedRows, int leadingCols)
{
    QString error;
    PGresult *res = execute(conn, statement, error);
    if (!res)
        return Error(error);
    const std::unique_ptr<PGresult, void (*)(PGresult *)> guard(res, PQclear);
    if (PQresultStatus(res) != PGRES_TUPLES_OK)
        return Error(QStringLiteral("数据库操作失败：语句没有返回记录。"));

    FetchedRows out;
    const int n = PQnfields(res);
    std::vector<FetchedCell::Declared> declared(static_cast<std::size_t>(n), FetchedCell::Declared::Any);
    for (int c = 0; c < n; ++c) {
        out.fieldNames << QString::fromUtf8(PQfname(res, c));
        declared[std::size_t(c)] = amountFields.contains(out.fieldNames.last(), Qt::CaseInsensitive)
                                       ? FetchedCell::Declared::Amount
                                       : declaredOf(PQftype(res, c));
    }
    out.cells = CellArray(0, leadingCols + n);
    const int rows = PQntuples(res);
    out.cells.reserveRows(std::max(rows, expectedRows));
    CellArrayData &block = out.cells.data();
    for (int r = 0; r < rows; ++r) {
        const int row = out.cells.appendRow();
        for (int c = 0; c < n; ++c) {
            // Every value comes as text; its column's type says what it is.
            const FetchedCell::Raw value = PQgetisnull(res, r, c)
                                               ? FetchedCell::Raw::null()
                                               : FetchedCell::Raw::text(PQgetvalue(res, r, c), PQgetlength(res, r, c));
            block.fill(row, leadingCols + c, FetchedCell::of(block, leadingCols + c, declared[std::size_t(c)], value));
        }
    }
    return Result<FetchedRows>(std::move(out));
}

} // namespace kx
