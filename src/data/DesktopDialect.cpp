#include "data/DesktopDialect.h"

namespace kx {

SqlDialect::Kind DesktopDialect::kind() const
{
    return Desktop;
}

QString DesktopDialect::loadSelect() const
{
    return QStringLiteral(
        "SELECT Format(jr.JnlDate,'yyyy年MM月dd日') AS ShowName, jr.JnlDate, jr.JnlNo, ac.AccName, "
        "Format(d.DocDate,'MM-dd') & d.DocType & ' ' & d.DocNo AS AccDoc, jr.Explain, "
        "jr.Debit, jr.Credit, jr.Rate, jr.Forex, jr.Dir, jr.Balance, jr.fxBalance, "
        "jr.Field1, jr.Field2, jr.Field3, jr.Field4, jr.Remark,j.AssistName, "
        "ac.AccCode, jr.AccID, jr.DirID, jr.RecID, jr.DocID, jr.Flag, jr.Tag, 0 AS Locked,jr.Row "
        "FROM ((kxJournalRecs AS jr "
        "LEFT JOIN kxAccClass AS ac ON jr.AccID = ac.AccID) "
        "LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) "
        "LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ");
}

QString DesktopDialect::insertReturning() const
{
    return {};
}

SqlStatement DesktopDialect::lastInsertedKey() const
{
    return {QStringLiteral("Select @@IDENTITY"), {}};
}

} // namespace kx
