#include "data/PgRecordWriter.h"

#include "data/PgRowReader.h"

#include "data/SqlAccess.h"
#include "kxjournal/Database.h"

#include <QSqlDriver>
#include <libpq-fe.h>

#include <algorithm>
#include <cstdlib>

namespace kx {

namespace {

// The temporary table's columns: the key, every stored field in writer order,
// and whether the row brings its amounts (a summary row keeps the stored ones).
const char *const CreateStage =
    "CREATE TEMP TABLE kx_stage (RecID integer, JnlDate date, JnlNo text, AccID integer, Explain text, "
    "Debit numeric, Credit numeric, Rate numeric, Forex numeric, balance numeric, fxBalance numeric, "
    "Field1 text, Field2 text, Field3 text, Field4 text, Flag integer, Remark text, Tag integer, "
    "DirID integer, Row integer, DocID integer, amounts boolean) ON COMMIT DROP";

const char *const CopyStage =
    "COPY kx_stage (RecID, JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, balance, fxBalance, "
    "Field1, Field2, Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID, amounts) FROM STDIN";

const char *const UpdateFromStage =
    "UPDATE kxJournalRecs AS r SET JnlDate=s.JnlDate, JnlNo=s.JnlNo, AccID=s.AccID, Explain=s.Explain, "
    "Debit=CASE WHEN s.amounts THEN s.Debit ELSE r.Debit END, "
    "Credit=CASE WHEN s.amounts THEN s.Credit ELSE r.Credit END, "
    "Rate=CASE WHEN s.amounts THEN s.Rate ELSE r.Rate END, "
    "Forex=CASE WHEN s.amounts THEN s.Forex ELSE r.Forex END, "
    "balance=s.balance, fxBalance=s.fxBalance, Field1=s.Field1, Field2=s.Field2, Field3=s.Field3, "
    "Field4=s.Field4, Flag=s.Flag, Remark=s.Remark, Tag=s.Tag, DirID=s.DirID, Row=s.Row, DocID=s.DocID "
    "FROM kx_stage AS s WHERE s.RecID > 0 AND r.RecID = s.RecID";

// New rows, and rows whose record someone else deleted since they were read.
// The second search costs an anti-join over every staged row, so it is only
// run when the update found fewer records than were staged with a key.
const char *const InsertNewFromStage =
    "INSERT INTO kxJournalRecs (JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, balance, fxBalance, "
    "Field1, Field2, Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID) "
    "SELECT JnlDate, JnlNo, AccID, Explain, CASE WHEN amounts THEN Debit END, CASE WHEN amounts THEN Credit END, "
    "CASE WHEN amounts THEN Rate END, CASE WHEN amounts THEN Forex END, balance, fxBalance, Field1, Field2, "
    "Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID FROM kx_stage AS s "
    "WHERE s.RecID <= 0 ORDER BY s.Row RETURNING RecID, Row";

const char *const InsertFromStage =
    "INSERT INTO kxJournalRecs (JnlDate, JnlNo, AccID, Explain, Debit, Credit, Rate, Forex, balance, fxBalance, "
    "Field1, Field2, Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID) "
    "SELECT JnlDate, JnlNo, AccID, Explain, CASE WHEN amounts THEN Debit END, CASE WHEN amounts THEN Credit END, "
    "CASE WHEN amounts THEN Rate END, CASE WHEN amounts THEN Forex END, balance, fxBalance, Field1, Field2, "
    "Field3, Field4, Flag, Remark, Tag, DirID, Row, DocID FROM kx_stage AS s "
    "WHERE s.RecID <= 0 OR NOT EXISTS (SELECT 1 FROM kxJournalRecs AS r WHERE r.RecID = s.RecID) "
    "ORDER BY s.Row RETURNING RecID, Row";

// COPY's text format: backslash, tab and line ends escaped, an empty text
// stored as NULL. PostgreSQL text cannot hold NUL, so it is left out.
void appendText(const QString &text, QByteArray &out)
{
    if (text.isEmpty()) {
        out += "\\N";
        return;
    }
    // Most texts are plain: appended as they are, with no converted copy.
    const auto plain = [](QChar ch) { return ch.unicode() >= 0x20 && ch.unicode() < 0x80 && ch != u'\\'; };
    if (std::all_of(text.begin(), text.end(), plain)) {
        const qsizetype at = out.size();
        out.resize(at + text.size());
        char *p = out.data() + at;
        for (QChar ch : text)
            *p++ = char(ch.unicode());
        return;
    }
    const QByteArray utf8 = text.toUtf8();
    for (char c : utf8) {
        switch (c) {
        case '\\': out += "\\\\"; break;
        case '\t': out += "\\t"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\0': break;
        default: out += c;
        }
    }
}

void appendValue(const FieldValue &v, QByteArray &out)
{
    switch (v.kind) {
    case FieldValue::Number:
        out += QByteArray::number(v.number);
        return;
    case FieldValue::Amount: {
        char16_t chars[32];
        const int n = Currency::fromRaw(v.number).toChars(chars);
        for (int i = 0; i < n; ++i)
            out += char(chars[i]);
        return;
    }
    case FieldValue::Text:
        appendText(v.text, out);
        return;
    }
}

} // namespace

PgRecordWriter::PgRecordWriter(const Database &db) : m_db(db), m_conn(PgRowReader::connectionOf(db)) {}

QString PgRecordWriter::error(const char *what) const
{
    const QString why = m_conn ? QString::fromUtf8(PQerrorMessage(m_conn)).trimmed() : QStringLiteral("没有连接");
    return QStringLiteral("数据库操作失败（%1）：%2").arg(QString::fromUtf8(what), why);
}

Result<void> PgRecordWriter::remove(int recId)
{
    return sqlRun(m_db, sqlDialect(m_db).deleteRecord(recId));
}

Result<void> PgRecordWriter::command(const char *sql)
{
    const Result<int> done = changed(sql);
    if (!done.ok())
        return Error(done.error());
    return {};
}

Result<int> PgRecordWriter::changed(const char *sql)
{
    PGresult *res = PQexec(m_conn, sql);
    const ExecStatusType status = PQresultStatus(res);
    const int count = status == PGRES_COMMAND_OK ? atoi(PQcmdTuples(res)) : 0;
    PQclear(res);
    if (status != PGRES_COMMAND_OK)
        return Error(error("写入"));
    return count;
}

void PgRecordWriter::appendCopyLine(const RecordValues &row, QByteArray &out)
{
    out += QByteArray::number(row.recId);
    for (int f = 0; f < int(RecordField::Count); ++f) {
        out += '\t';
        appendValue(row[RecordField(f)], out);
    }
    out += row.withAmounts ? "\tt\n" : "\tf\n";
}

Result<void> PgRecordWriter::copyRows(const RecordSource &rows, qsizetype &keyed)
{
    PGresult *res = PQexec(m_conn, CopyStage);
    const ExecStatusType status = PQresultStatus(res);
    PQclear(res);
    if (status != PGRES_COPY_IN)
        return Error(error("复制"));
    // Sent in blocks of about a megabyte: few calls, little memory.
    QByteArray block;
    block.reserve(1 << 20);
    bool sent = true;
    RecordValues row;
    for (std::size_t i = 0; i < rows.size() && sent; ++i) {
        rows.fill(i, row);
        keyed += row.recId > 0 ? 1 : 0;
        appendCopyLine(row, block);
        if (block.size() >= (1 << 20) || i + 1 == rows.size()) {
            sent = PQputCopyData(m_conn, block.constData(), int(block.size())) == 1;
            block.clear();
        }
    }
    if (PQputCopyEnd(m_conn, sent ? nullptr : "kx: copy interrupted") != 1)
        sent = false;
    bool ok = sent;
    while (PGresult *end = PQgetResult(m_conn)) {
        if (PQresultStatus(end) != PGRES_COMMAND_OK)
            ok = false;
        PQclear(end);
    }
    if (!ok)
        return Error(error("复制"));
    return {};
}

Result<QHash<int, int>> PgRecordWriter::write(const RecordSource &rows)
{
    if (!m_conn)
        return Error(QStringLiteral("数据库操作失败：没有 PostgreSQL 连接。"));
    QHash<int, int> added;
    if (rows.size() == 0)
        return added;
    if (const Result<void> created = command(CreateStage); !created.ok())
        return Error(created.error());
    qsizetype keyed = 0;
    if (const Result<void> copied = copyRows(rows, keyed); !copied.ok())
        return Error(copied.error());
    const Result<int> updated = changed(UpdateFromStage);
    if (!updated.ok())
        return Error(updated.error());
    PGresult *res = PQexec(m_conn, updated.value() == keyed ? InsertNewFromStage : InsertFromStage);
    if (PQresultStatus(res) != PGRES_TUPLES_OK) {
        PQclear(res);
        return Error(error("写入"));
    }
    // Row is the grid row, unique within a pass: it tells which key is whose.
    const int n = PQntuples(res);
    for (int i = 0; i < n; ++i)
        added.insert(QByteArray(PQgetvalue(res, i, 1)).toInt(), QByteArray(PQgetvalue(res, i, 0)).toInt());
    PQclear(res);
    const Result<void> dropped = command("DROP TABLE kx_stage");
    if (!dropped.ok())
        return Error(dropped.error());
    return added;
}

} // namespace kx
