#include "data/ServerDialect.h"

namespace kx {

SqlDialect::Kind ServerDialect::kind() const
{
    return Server;
}

QString ServerDialect::dateLabelExpression() const
{
    return QStringLiteral(
        "left(CONVERT(char(10),jr.jnldate,111),4) + '年' + substring(CONVERT(char(10),jr.jnldate,111),6,2) + '月' + "
        "right(CONVERT(char(10),jr.jnldate,111),2) + '日'");
}

QString ServerDialect::voucherLabelExpression() const
{
    return QStringLiteral("right(left(replace(CONVERT(char(10),d.docdate,111),'/','-'),7),5) + d.doctype + ' ' + "
                          "str(d.docno,len(d.docno))");
}

// This dialect's text is checked word for word, blanks and case included, and
// its layout differs from the shared one: only the expressions are shared.
QString ServerDialect::loadSelect() const
{
    return QStringLiteral("SELECT(") + dateLabelExpression() +
           QStringLiteral(") AS ShowName,replace(convert(char(10),jr.JnlDate,111),'/','-') as jnldate, jr.JnlNo,"
                          "ac.AccName,") +
           voucherLabelExpression() + QStringLiteral(" as AccDoc,") + QStringLiteral(
        "jr.Explain, jr.Debit, jr.Credit, jr.Rate, jr.Forex, jr.Dir, jr.Balance, jr.fxBalance,"
        "jr.Field1, jr.Field2, jr.Field3, jr.Field4, jr.Remark,"
        "j.AssistName, ac.AccCode, jr.AccID, jr.DirID, jr.RecID, jr.DocID, jr.Flag, jr.Tag, 0 AS Locked,jr.Row "
        "FROM ((kxJournalRecs AS jr LEFT JOIN kxAccClass AS ac ON jr.AccID = ac.AccID) "
        "LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ");
}

QString ServerDialect::insertOutput() const
{
    return QStringLiteral(" Output Inserted.RecID");
}

QString ServerDialect::insertReturning() const
{
    return {};
}

} // namespace kx
