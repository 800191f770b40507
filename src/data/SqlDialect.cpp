#include "data/SqlDialect.h"

#include "data/DesktopDialect.h"
#include "data/ServerDialect.h"
#include "data/PostgresDialect.h"
#include "data/SqliteDialect.h"

#include <QStringList>

namespace kx {

SqlDialect::~SqlDialect() = default;

std::unique_ptr<SqlDialect> SqlDialect::create(Kind kind)
{
    switch (kind) {
    case Server: return std::make_unique<ServerDialect>();
    case Desktop: return std::make_unique<DesktopDialect>();
    case Postgres: return std::make_unique<PostgresDialect>();
    case Sqlite: break;
    }
    return std::make_unique<SqliteDialect>();
}

SqlDialect::Kind SqlDialect::odbcKind(const QString &connectionString)
{
    return connectionString.contains(QLatin1String("SQL"), Qt::CaseSensitive) ? Server : Desktop;
}

QString SqlDialect::name() const
{
    switch (kind()) {
    case Server: return QStringLiteral("server");
    case Desktop: return QStringLiteral("desktop");
    case Postgres: return QStringLiteral("postgresql");
    case Sqlite: break;
    }
    return QStringLiteral("sqlite");
}

int SqlDialect::exactDigits() const
{
    return 19;
}

QString SqlDialect::loadSelect() const
{
    const auto named = [this](const char *column, const char *key) {
        return QLatin1String(column) + nameColumn(QLatin1String(key));
    };
    QStringList head{dateLabelExpression() + QStringLiteral(" AS ") + resultName(QStringLiteral("ShowName")),
                     isoDateExpression() + nameColumn(QStringLiteral("JnlDate")), named("jr.JnlNo", "JnlNo"),
                     named("ac.AccName", "AccName"),
                     voucherLabelExpression() + QStringLiteral(" AS ") + resultName(QStringLiteral("AccDoc"))};
    for (const char *c : {"Explain", "Debit", "Credit", "Rate", "Forex", "Dir", "Balance", "fxBalance", "Field1",
                          "Field2", "Field3", "Field4", "Remark"})
        head << named(QByteArray("jr.").append(c).constData(), c);
    const QStringList tail{named("ac.AccCode", "AccCode"), named("jr.AccID", "AccID"), named("jr.DirID", "DirID"),
                           named("jr.RecID", "RecID"),     named("jr.DocID", "DocID"), named("jr.Flag", "Flag"),
                           named("jr.Tag", "Tag")};
    return QStringLiteral("SELECT ") + head.join(QStringLiteral(", ")) + QLatin1Char(',') +
           named("j.AssistName", "AssistName") + QStringLiteral(", ") + tail.join(QStringLiteral(", ")) +
           QStringLiteral(", 0 AS ") + resultName(QStringLiteral("Locked")) + QLatin1Char(',') + named("jr.Row", "Row") +
           QStringLiteral(" FROM ((kxJournalRecs AS jr LEFT JOIN kxAccClass AS ac ON jr.AccID = ac.AccID) "
                          "LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) "
                          "LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ");
}

QString SqlDialect::isoDateExpression() const
{
    return QStringLiteral("jr.JnlDate");
}

QString SqlDialect::resultName(const QString &key) const
{
    return key;
}

QString SqlDialect::nameColumn(const QString &) const
{
    return {};
}

QString SqlDialect::selectTop(int n, const QString &body) const
{
    return QStringLiteral("Select Top %1 ").arg(n) + body;
}

QString SqlDialect::leftOf(const QString &column, int length) const
{
    return QStringLiteral("Left(%1,%2)").arg(column).arg(length);
}

QString SqlDialect::deleteRowsFrom() const
{
    return QStringLiteral("Delete * From ");
}

SqlStatement SqlDialect::journalById(int asId) const
{
    return {QStringLiteral("Select * From kxJournal Where asID=%1").arg(asId), {}};
}

SqlStatement SqlDialect::journalSubtree(const QString &code) const
{
    return {QStringLiteral("Select * From kxJournal Where ") + leftOf(QStringLiteral("AssistCode"), int(code.size())) +
                QStringLiteral("=? Order by AssistCode"),
            {code}};
}

SqlStatement SqlDialect::journalGroup(const QString &group) const
{
    return {QStringLiteral("Select AssistName,AssistCode From kxJournal Where AssistCode Like ? Order by AssistCode"),
            {group + QLatin1Char('%')}};
}

SqlStatement SqlDialect::loadBook(int docId) const
{
    return {loadSelect() + QStringLiteral("WHERE (((jr.DocID)=%1)) ORDER BY jr.Row,jr.RecID").arg(docId), {}};
}

SqlStatement SqlDialect::loadConsolidated(const QList<int> &docIds) const
{
    QStringList ids;
    ids.reserve(docIds.size());
    for (int id : docIds)
        ids << QString::number(id);
    return {loadSelect() + QStringLiteral("Where jr.docid in (%1) ORDER BY jr.jnlDate,jr.Row,jr.RecID")
                               .arg(ids.join(QLatin1Char(','))),
            {}};
}

SqlStatement SqlDialect::storedRecords(const QList<int> &recIds) const
{
    QStringList ids;
    ids.reserve(recIds.size());
    for (int id : recIds)
        ids << QString::number(id);
    return {QStringLiteral("Select * From kxJournalRecs Where RecID IN (%1)").arg(ids.join(QLatin1Char(','))), {}};
}

SqlStatement SqlDialect::recordsOfBook(int docId) const
{
    return {QStringLiteral("Select * From kxJournalRecs Where DocID=%1 Order by RecID").arg(docId), {}};
}

SqlStatement SqlDialect::deleteRecord(int recId) const
{
    return {QStringLiteral("Delete From kxJournalRecs Where RecID=%1").arg(recId), {}};
}

SqlStatement SqlDialect::deleteBook(int docId) const
{
    return {deleteRowsFrom() + QStringLiteral("kxJournalRecs Where DocID=%1").arg(docId), {}};
}

SqlStatement SqlDialect::firstRecordOfBook(int docId) const
{
    return {selectTop(1, QStringLiteral("* From kxJournalRecs Where DocID=%1 Order by RecID").arg(docId)), {}};
}

const QStringList &SqlDialect::recordFields()
{
    static const QStringList fields{
        QStringLiteral("RecID"),   QStringLiteral("DocID"),   QStringLiteral("Row"),       QStringLiteral("JnlDate"),
        QStringLiteral("JnlNo"),   QStringLiteral("AccID"),   QStringLiteral("Explain"),   QStringLiteral("Debit"),
        QStringLiteral("Credit"),  QStringLiteral("Rate"),    QStringLiteral("Forex"),     QStringLiteral("Dir"),
        QStringLiteral("Balance"), QStringLiteral("fxBalance"), QStringLiteral("Field1"),  QStringLiteral("Field2"),
        QStringLiteral("Field3"),  QStringLiteral("Field4"),  QStringLiteral("Remark"),    QStringLiteral("DirID"),
        QStringLiteral("Flag"),    QStringLiteral("Tag")};
    return fields;
}

Result<SqlStatement> SqlDialect::updateRecordField(const QString &field, const QVariant &value, int recId) const
{
    // A field name cannot be bound, so only the table's own names are let through.
    if (!recordFields().contains(field, Qt::CaseInsensitive))
        return Error(QStringLiteral("记录表没有“%1”字段。").arg(field));
    const QString head = QStringLiteral("Update kxJournalRecs Set %1=").arg(field);
    const QString tail = QStringLiteral(" Where RecID=%1").arg(recId);
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Bool:
        return SqlStatement{head + QString::number(value.toLongLong()) + tail, {}};
    default:
        return SqlStatement{head + QLatin1Char('?') + tail, {value}};
    }
}

SqlStatement SqlDialect::updateRecord(int recId, const QStringList &fields, const QVariantList &values) const
{
    QStringList sets;
    sets.reserve(fields.size());
    for (const QString &f : fields)
        sets << f + QStringLiteral("=?");
    return {QStringLiteral("Update kxJournalRecs Set %1 Where RecID=%2").arg(sets.join(QLatin1Char(','))).arg(recId), values};
}

SqlStatement SqlDialect::insertRecord(const QStringList &fields, const QVariantList &values) const
{
    QStringList marks;
    for (int i = 0; i < fields.size(); ++i)
        marks << QStringLiteral("?");
    return {QStringLiteral("Insert Into kxJournalRecs (%1)%2 Values (%3)%4")
                .arg(fields.join(QLatin1Char(',')), insertOutput(), marks.join(QLatin1Char(',')), insertReturning()),
            values};
}

QString SqlDialect::insertOutput() const
{
    return {};
}

QString SqlDialect::insertReturning() const
{
    return QStringLiteral(" Returning RecID");
}

SqlStatement SqlDialect::lastInsertedKey() const
{
    return {};
}

SqlStatement SqlDialect::countRecords(int docId) const
{
    return {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=%1").arg(docId), {}};
}

SqlStatement SqlDialect::recentExplains() const
{
    return {selectTop(20, QStringLiteral("Explain From kxJournalRecs Order by JnlDate DESC ")), {}};
}

SqlStatement SqlDialect::bookExplains(int docId) const
{
    return {selectTop(30, QStringLiteral(" Explain From kxJournalRecs Where DocID=%1 Order by RecID DESC").arg(docId)), {}};
}

SqlStatement SqlDialect::chartOfAccounts() const
{
    return {QStringLiteral("Select AccID, AccCode, AccName, EnterCode From kxAccClass Order by AccCode"), {}};
}

SqlStatement SqlDialect::accountUse(int docId) const
{
    return {QStringLiteral("Select AccID, Count(*) As Uses From kxJournalRecs Where DocID=%1 Group by AccID").arg(docId),
            {}};
}

SqlStatement SqlDialect::accountById(int accId) const
{
    return {QStringLiteral("Select * From kxAccClass Where AccID=%1").arg(accId), {}};
}

SqlStatement SqlDialect::accountByCode(const QString &code) const
{
    return {QStringLiteral("Select * From kxAccClass Where AccCode=?"), {code}};
}

SqlStatement SqlDialect::accountIdByCode(const QString &code) const
{
    return {selectTop(1, QStringLiteral("AccID From kxAccClass Where AccCode=? Order by AccCode")), {code}};
}

SqlStatement SqlDialect::accountIdByName(const QString &name) const
{
    return {QStringLiteral("Select AccID From kxAccClass Where AccName=?"), {name}};
}

SqlStatement SqlDialect::accountIdByEnterCode(const QString &enterCode) const
{
    return {QStringLiteral("Select AccID From kxAccClass Where EnterCode=?"), {enterCode}};
}

SqlStatement SqlDialect::accountByNameUnder(const QString &name, const QString &codePrefix) const
{
    if (codePrefix.isEmpty())
        return {QStringLiteral("Select * From kxAccClass Where AccName=?"), {name}};
    return {QStringLiteral("Select * From kxAccClass Where AccName=? And AccCode Like ?"),
            {name, codePrefix + QLatin1Char('%')}};
}

SqlStatement SqlDialect::accountByAnyName(const QString &text) const
{
    return {QStringLiteral("Select * From kxAccClass Where AccName=? Or AccCode =? Or EnterCode=?"), {text, text, text}};
}

SqlStatement SqlDialect::accountBelow(const QString &code) const
{
    return {QStringLiteral("Select AccID From kxAccClass Where AccCode Like ? And AccCode<>?"),
            {code + QLatin1Char('%'), code}};
}

SqlStatement SqlDialect::voucherById(int docId) const
{
    return {QStringLiteral("Select * From kxDocDir Where DocID=%1").arg(docId), {}};
}

SqlStatement SqlDialect::voucherDateOfPeriod(const QString &period) const
{
    // Any voucher of the period will do; the engine decides which.
    return {selectTop(1, QStringLiteral("DocDate From kxDocDir Where AccPeriod=? Order by AccPeriod DESC")), {period}};
}

SqlStatement SqlDialect::highestVoucherNo(const QString &type, const QDate &start, const QDate &end) const
{
    if (type.isEmpty())
        return {selectTop(1, QStringLiteral("DocNo From kxDocDir Where DocDate Between ? and ? Order by DocNo DESC ")),
                {start, end}};
    return {selectTop(1, QStringLiteral("DocNo From kxDocDir Where DocType=? And DocDate Between ? and ? Order by DocNo DESC ")),
            {type, start, end}};
}

SqlStatement SqlDialect::vouchersBetween(const QDate &start, const QDate &end, int limit) const
{
    const QString columns = QStringLiteral("DocID, DocDate, DocType, DocNo From kxDocDir");
    const QString order = QStringLiteral(" Order by DocDate DESC, DocNo DESC, DocID DESC");
    if (!start.isValid() || !end.isValid())
        return {selectTop(limit, columns + order), {}};
    return {QStringLiteral("Select ") + columns + QStringLiteral(" Where DocDate Between ? and ?") + order, {start, end}};
}

} // namespace kx
