#include "data/PgRowReader.h"

#include "grid/CellArrayData.h"
#include "kxjournal/Currency.h"
#include "kxjournal/Database.h"

#include <QDate>
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

// Money texts are short ASCII: widened on the stack, no string made.
Result<Currency> moneyOf(const char *text, int size)
{
    char16_t wide[64];
    if (size > 64)
        return Error(QString());
    for (int i = 0; i < size; ++i)
        wide[i] = char16_t(static_cast<unsigned char>(text[i]));
    return Currency::fromStoredText(QStringView(wide, size));
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
    std::vector<Oid> columnTypes(static_cast<std::size_t>(n));
    for (int c = 0; c < n; ++c) {
        out.fieldNames << QString::fromUtf8(PQfname(res, c));
        columnTypes[std::size_t(c)] = PQftype(res, c);
    }
    std::vector<bool> isAmount(std::size_t(n), false);
    for (int c = 0; c < n; ++c)
        isAmount[std::size_t(c)] = amountFields.contains(out.fieldNames.at(c), Qt::CaseInsensitive);
    out.cells = CellArray(0, leadingCols + n);
    const int rows = PQntuples(res);
    out.cells.reserveRows(std::max(rows, expectedRows));
    CellArrayData &block = out.cells.data();
    for (int r = 0; r < rows; ++r) {
        Cell *cells = block.rowCells(out.cells.appendRow()) + leadingCols;
        for (int c = 0; c < n; ++c) {
            if (PQgetisnull(res, r, c))
                continue;
            const char *text = PQgetvalue(res, r, c);
            const int size = PQgetlength(res, r, c);
            if (isAmount[std::size_t(c)]) {
                // A stored value that is no amount ("NaN") stays its text, never a zero.
                const Result<Currency> money = moneyOf(text, size);
                cells[c] = money.ok() && money.value().isValid() ? block.amountCell(money.value()) : block.utf8Cell(leadingCols + c, text, size);
                continue;
            }
            switch (columnTypes[std::size_t(c)]) {
            case Int2Oid:
            case Int4Oid:
            case Int8Oid:
            case OidOid:
                cells[c] = block.numberCell(QByteArrayView(text, size).toLongLong());
                break;
            case BoolOid:
                cells[c] = block.utf8Cell(leadingCols + c, text[0] == 't' ? "true" : "false", text[0] == 't' ? 4 : 5);
                break;
            case TimestampOid:
            case TimestampTzOid:
                // The day part: the journal keeps days.
                cells[c] = block.utf8Cell(leadingCols + c, text, std::min(size, 10));
                break;
            case Float4Oid:
            case Float8Oid:
            case NumericOid: {
                const Result<Currency> money = moneyOf(text, size);
                const QByteArray shown = money.ok() ? money.value().toString().toUtf8() : QByteArray(text, size);
                cells[c] = block.utf8Cell(leadingCols + c, shown.constData(), int(shown.size()));
                break;
            }
            case DateOid:
            default:
                cells[c] = block.utf8Cell(leadingCols + c, text, size);
            }
        }
    }
    return Result<FetchedRows>(std::move(out));
}

} // namespace kx
