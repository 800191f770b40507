#include "data/PostgresDialect.h"

namespace kx {

SqlDialect::Kind PostgresDialect::kind() const
{
    return Postgres;
}

QString PostgresDialect::leftOf(const QString &column, int length) const
{
    return QStringLiteral("Left(%1,%2)").arg(column).arg(length);
}

QString PostgresDialect::loadSelect() const
{
    // PostgreSQL folds unquoted names to lower case; the quoted aliases give
    // the grid its column keys as the journal spells them.
    return QStringLiteral(
        "SELECT to_char(jr.JnlDate,'YYYY\"年\"MM\"月\"DD\"日\"') AS \"ShowName\", "
        "to_char(jr.JnlDate,'YYYY-MM-DD') AS \"JnlDate\", jr.JnlNo AS \"JnlNo\", ac.AccName AS \"AccName\", "
        "to_char(d.DocDate,'MM-DD') || d.DocType || ' ' || d.DocNo AS \"AccDoc\", jr.Explain AS \"Explain\", "
        "jr.Debit AS \"Debit\", jr.Credit AS \"Credit\", jr.Rate AS \"Rate\", jr.Forex AS \"Forex\", "
        "jr.Dir AS \"Dir\", jr.Balance AS \"Balance\", jr.fxBalance AS \"fxBalance\", "
        "jr.Field1 AS \"Field1\", jr.Field2 AS \"Field2\", jr.Field3 AS \"Field3\", jr.Field4 AS \"Field4\", "
        "jr.Remark AS \"Remark\",j.AssistName AS \"AssistName\", "
        "ac.AccCode AS \"AccCode\", jr.AccID AS \"AccID\", jr.DirID AS \"DirID\", jr.RecID AS \"RecID\", "
        "jr.DocID AS \"DocID\", jr.Flag AS \"Flag\", jr.Tag AS \"Tag\", 0 AS \"Locked\",jr.Row AS \"Row\" "
        "FROM ((kxJournalRecs AS jr "
        "LEFT JOIN kxAccClass AS ac ON jr.AccID = ac.AccID) "
        "LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) "
        "LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ");
}

} // namespace kx
