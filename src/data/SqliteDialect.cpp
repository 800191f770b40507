#include "data/SqliteDialect.h"

namespace kx {

SqlDialect::Kind SqliteDialect::kind() const
{
    return Sqlite;
}

QString SqliteDialect::leftOf(const QString &column, int length) const
{
    return QStringLiteral("substr(%1,1,%2)").arg(column).arg(length);
}

QString SqliteDialect::loadSelect() const
{
    return QStringLiteral(
        "SELECT strftime('%Y年%m月%d日',jr.JnlDate) AS ShowName, jr.JnlDate, jr.JnlNo, ac.AccName, "
        "strftime('%m-%d',d.DocDate) || d.DocType || ' ' || d.DocNo AS AccDoc, jr.Explain, "
        "jr.Debit, jr.Credit, jr.Rate, jr.Forex, jr.Dir, jr.Balance, jr.fxBalance, "
        "jr.Field1, jr.Field2, jr.Field3, jr.Field4, jr.Remark,j.AssistName, "
        "ac.AccCode, jr.AccID, jr.DirID, jr.RecID, jr.DocID, jr.Flag, jr.Tag, 0 AS Locked,jr.Row "
        "FROM ((kxJournalRecs AS jr "
        "LEFT JOIN kxAccClass AS ac ON jr.AccID = ac.AccID) "
        "LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) "
        "LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ");
}

} // namespace kx
