#include "QtPrinters.h"

#include <kxjournal/Database.h>
#include "data/SqlAccess.h"
#include "data/SqlDialect.h"

#include <QDate>
#include <gtest/gtest.h>

using kx::SqlDialect;

namespace {

QString text(const kx::SqlStatement &s) { return s.text; }

// The ODBC load query, written out here as the server and desktop products
// expect it, so that a changed blank or comma shows up.
const char *serverLoad =
    "SELECT(left(CONVERT(char(10),jr.jnldate,111),4) + '年' + substring(CONVERT(char(10),jr.jnldate,111),6,2) + '月' + "
    "right(CONVERT(char(10),jr.jnldate,111),2) + '日') AS ShowName,replace(convert(char(10),jr.JnlDate,111),'/','-') as "
    "jnldate, jr.JnlNo,ac.AccName,right(left(replace(CONVERT(char(10),d.docdate,111),'/','-'),7),5) + d.doctype + ' ' + "
    "str(d.docno,len(d.docno)) as AccDoc,jr.Explain, jr.Debit, jr.Credit, jr.Rate, jr.Forex, jr.Dir, jr.Balance, "
    "jr.fxBalance,jr.Field1, jr.Field2, jr.Field3, jr.Field4, jr.Remark,j.AssistName, ac.AccCode, jr.AccID, jr.DirID, "
    "jr.RecID, jr.DocID, jr.Flag, jr.Tag, 0 AS Locked,jr.Row FROM ((kxJournalRecs AS jr LEFT JOIN kxAccClass AS ac ON "
    "jr.AccID = ac.AccID) LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ";
const char *desktopLoad =
    "SELECT Format(jr.JnlDate,'yyyy年MM月dd日') AS ShowName, jr.JnlDate, jr.JnlNo, ac.AccName, Format(d.DocDate,'MM-dd') "
    "& d.DocType & ' ' & d.DocNo AS AccDoc, jr.Explain, jr.Debit, jr.Credit, jr.Rate, jr.Forex, jr.Dir, jr.Balance, "
    "jr.fxBalance, jr.Field1, jr.Field2, jr.Field3, jr.Field4, jr.Remark,j.AssistName, ac.AccCode, jr.AccID, jr.DirID, "
    "jr.RecID, jr.DocID, jr.Flag, jr.Tag, 0 AS Locked,jr.Row FROM ((kxJournalRecs AS jr LEFT JOIN kxAccClass AS ac ON "
    "jr.AccID = ac.AccID) LEFT JOIN kxDocDir AS d ON jr.DirID = d.DocID) LEFT JOIN kxJournal AS j ON jr.DocID = j.asID ";

} // namespace

TEST(SqlDialect, OdbcConnectionStringsChooseByExactCaseSQL)
{
    EXPECT_EQ(SqlDialect::odbcKind(QStringLiteral("Provider=SQLOLEDB;Data Source=acc")), SqlDialect::Server);
    EXPECT_EQ(SqlDialect::odbcKind(QStringLiteral("Driver={ODBC Driver 18 for SQL Server};Server=x")), SqlDialect::Server);
    EXPECT_EQ(SqlDialect::odbcKind(QStringLiteral("Driver={Microsoft Access Driver (*.mdb)};Dbq=a.mdb")), SqlDialect::Desktop);
    EXPECT_EQ(SqlDialect::odbcKind(QStringLiteral("Driver={sql server}")), SqlDialect::Desktop) << "lower case is not the rule";
    EXPECT_EQ(SqlDialect::odbcKind(QStringLiteral("DSN=MySql")), SqlDialect::Desktop);

    // The rule reads the ODBC connection string, whether or not it opens here.
    kx::Database server = kx::Database::open(QStringLiteral("odbc:DSN=nowhere;Provider=SQLOLEDB"));
    EXPECT_FALSE(server.isOpen());
    EXPECT_FALSE(server.lastError().isEmpty());
    EXPECT_EQ(server.ConnectionString(), QStringLiteral("DSN=nowhere;Provider=SQLOLEDB"));
    EXPECT_EQ(kx::sqlDialect(server).kind(), SqlDialect::Server);
    EXPECT_EQ(kx::sqlDialect(kx::Database::open(QStringLiteral("odbc:DSN=books.mdb"))).kind(), SqlDialect::Desktop);
    EXPECT_EQ(kx::sqlDialect(kx::Database::open(QStringLiteral("sqlite::memory:"))).kind(), SqlDialect::Sqlite);
    EXPECT_EQ(kx::sqlDialect(kx::Database::open(QStringLiteral("postgresql://u@127.0.0.1:1/x"))).kind(), SqlDialect::Postgres);
}

TEST(SqlDialect, BadUrlsSayWhy)
{
    for (const char *url : {"mysql://x", "sqlite:", "postgresql://nohost", "postgresql://u@127.0.0.1:5432/db?schema=a;b"}) {
        kx::Database db = kx::Database::open(QString::fromLatin1(url));
        EXPECT_FALSE(db.isOpen()) << url;
        EXPECT_FALSE(db.lastError().isEmpty()) << url;
        EXPECT_FALSE(kx::sqlExec(db, {QStringLiteral("Select 1"), {}}).ok());
    }
}

TEST(SqlDialect, ServerAndDesktopTextsAreTheProductsOwn)
{
    for (SqlDialect::Kind kind : {SqlDialect::Server, SqlDialect::Desktop}) {
        const auto d = SqlDialect::create(kind);
        SCOPED_TRACE(d->name().toStdString());
        EXPECT_EQ(text(d->journalById(7)), QStringLiteral("Select * From kxJournal Where asID=7"));
        const kx::SqlStatement subtree = d->journalSubtree(QStringLiteral("0102"));
        EXPECT_EQ(subtree.text, QStringLiteral("Select * From kxJournal Where Left(AssistCode,4)=? Order by AssistCode"));
        EXPECT_EQ(subtree.binds, QVariantList{QStringLiteral("0102")});
        const kx::SqlStatement group = d->journalGroup(QStringLiteral("0201"));
        EXPECT_EQ(group.text, QStringLiteral("Select AssistName,AssistCode From kxJournal Where AssistCode Like ? Order by AssistCode"));
        EXPECT_EQ(group.binds, QVariantList{QStringLiteral("0201%")});

        const QString load = QString::fromUtf8(kind == SqlDialect::Server ? serverLoad : desktopLoad);
        EXPECT_EQ(text(d->loadBook(12)), load + QStringLiteral("WHERE (((jr.DocID)=12)) ORDER BY jr.Row,jr.RecID"));
        EXPECT_EQ(text(d->loadConsolidated({5, 7, 9})),
                  load + QStringLiteral("Where jr.docid in (5,7,9) ORDER BY jr.jnlDate,jr.Row,jr.RecID"));

        EXPECT_EQ(text(d->recordsOfBook(3)), QStringLiteral("Select * From kxJournalRecs Where DocID=3 Order by RecID"));
        EXPECT_EQ(text(d->deleteRecord(41)), QStringLiteral("Delete From kxJournalRecs Where RecID=41"));
        EXPECT_EQ(text(d->deleteBook(3)), QStringLiteral("Delete * From kxJournalRecs Where DocID=3"));
        EXPECT_EQ(text(d->firstRecordOfBook(3)), QStringLiteral("Select Top 1 * From kxJournalRecs Where DocID=3 Order by RecID"));
        EXPECT_EQ(text(d->recentExplains()), QStringLiteral("Select Top 20 Explain From kxJournalRecs Order by JnlDate DESC "));
        EXPECT_EQ(text(d->bookExplains(3)),
                  QStringLiteral("Select Top 30  Explain From kxJournalRecs Where DocID=3 Order by RecID DESC"));

        EXPECT_EQ(text(d->accountById(1002)), QStringLiteral("Select * From kxAccClass Where AccID=1002"));
        EXPECT_EQ(text(d->accountByCode(QStringLiteral("1002"))), QStringLiteral("Select * From kxAccClass Where AccCode=?"));
        EXPECT_EQ(text(d->accountIdByCode(QStringLiteral("1002"))),
                  QStringLiteral("Select Top 1 AccID From kxAccClass Where AccCode=? Order by AccCode"));
        EXPECT_EQ(text(d->accountIdByName(QStringLiteral("现金"))), QStringLiteral("Select AccID From kxAccClass Where AccName=?"));
        EXPECT_EQ(text(d->accountIdByEnterCode(QStringLiteral("xj"))), QStringLiteral("Select AccID From kxAccClass Where EnterCode=?"));
        const kx::SqlStatement under = d->accountByNameUnder(QStringLiteral("基本户"), QStringLiteral("1002"));
        EXPECT_EQ(under.text, QStringLiteral("Select * From kxAccClass Where AccName=? And AccCode Like ?"));
        EXPECT_EQ(under.binds, (QVariantList{QStringLiteral("基本户"), QStringLiteral("1002%")}));
        EXPECT_EQ(text(d->accountByNameUnder(QStringLiteral("现金"), QString())), QStringLiteral("Select * From kxAccClass Where AccName=?"));
        EXPECT_EQ(text(d->accountByAnyName(QStringLiteral("x"))),
                  QStringLiteral("Select * From kxAccClass Where AccName=? Or AccCode =? Or EnterCode=?"));
        EXPECT_EQ(text(d->voucherById(8)), QStringLiteral("Select * From kxDocDir Where DocID=8"));
        EXPECT_EQ(text(d->chartOfAccounts()),
                  QStringLiteral("Select AccID, AccCode, AccName, EnterCode From kxAccClass Order by AccCode"));
        EXPECT_EQ(text(d->accountUse(3)),
                  QStringLiteral("Select AccID, Count(*) As Uses From kxJournalRecs Where DocID=3 Group by AccID"));
    }
}

TEST(SqlDialect, VoucherNumberingBindsTheTypeAndThePeriod)
{
    const QDate start(2025, 1, 1), end(2025, 1, 31);
    const QString type = QStringLiteral("记' Or '1'='1");
    for (SqlDialect::Kind kind : {SqlDialect::Server, SqlDialect::Desktop}) {
        const auto d = SqlDialect::create(kind);
        const kx::SqlStatement typed = d->highestVoucherNo(type, start, end);
        EXPECT_EQ(typed.text, QStringLiteral("Select Top 1 DocNo From kxDocDir Where DocType=? And DocDate Between ? and ? "
                                             "Order by DocNo DESC "));
        EXPECT_EQ(typed.binds, (QVariantList{type, start, end}));
        EXPECT_EQ(d->highestVoucherNo(QString(), start, end).text,
                  QStringLiteral("Select Top 1 DocNo From kxDocDir Where DocDate Between ? and ? Order by DocNo DESC "));
        const kx::SqlStatement dated = d->voucherDateOfPeriod(QStringLiteral("202501"));
        EXPECT_EQ(dated.text, QStringLiteral("Select Top 1 DocDate From kxDocDir Where AccPeriod=? Order by AccPeriod DESC"));
        EXPECT_EQ(dated.binds, QVariantList{QStringLiteral("202501")});
    }
    for (SqlDialect::Kind kind : {SqlDialect::Sqlite, SqlDialect::Postgres}) {
        const auto d = SqlDialect::create(kind);
        EXPECT_EQ(d->highestVoucherNo(type, start, end).text,
                  QStringLiteral("Select DocNo From kxDocDir Where DocType=? And DocDate Between ? and ? Order by DocNo DESC  Limit 1"));
        const kx::SqlStatement listed = d->vouchersBetween(start, end, 100);
        EXPECT_FALSE(listed.text.contains(QStringLiteral("2025")));
        EXPECT_EQ(listed.binds, (QVariantList{start, end}));
        EXPECT_TRUE(d->vouchersBetween(QDate(), QDate(), 100).text.endsWith(QStringLiteral(" Limit 100")));
    }
}

TEST(SqlDialect, SingleFieldUpdatesBindEverythingButIntegers)
{
    for (SqlDialect::Kind kind : {SqlDialect::Server, SqlDialect::Desktop, SqlDialect::Sqlite, SqlDialect::Postgres}) {
        const auto d = SqlDialect::create(kind);
        const auto linked = d->updateRecordField(QStringLiteral("DirID"), 12, 5);
        ASSERT_TRUE(linked.ok());
        EXPECT_EQ(linked.value().text, QStringLiteral("Update kxJournalRecs Set DirID=12 Where RecID=5"));
        EXPECT_TRUE(linked.value().binds.isEmpty());

        const QString evil = QStringLiteral("x'; DROP TABLE kxJournalRecs; --");
        const auto textual = d->updateRecordField(QStringLiteral("Explain"), evil, 5);
        EXPECT_EQ(textual.value().text, QStringLiteral("Update kxJournalRecs Set Explain=? Where RecID=5"));
        EXPECT_EQ(textual.value().binds, QVariantList{evil});
        const auto dated = d->updateRecordField(QStringLiteral("JnlDate"), QDate(2026, 3, 1), 5);
        EXPECT_EQ(dated.value().text, QStringLiteral("Update kxJournalRecs Set JnlDate=? Where RecID=5"));
        const auto amount = d->updateRecordField(QStringLiteral("Debit"), 12.5, 5);
        EXPECT_EQ(amount.value().binds, QVariantList{12.5});

        const auto injected = d->updateRecordField(QStringLiteral("DirID=0; DROP TABLE kxJournal; --"), 1, 5);
        EXPECT_FALSE(injected.ok());
        EXPECT_TRUE(injected.error().contains(QStringLiteral("DROP TABLE")));
    }
}

TEST(SqlDialect, RecordWritesReturnTheNewKeyTheEnginesWay)
{
    const QStringList fields{QStringLiteral("JnlDate"), QStringLiteral("Explain")};
    const QVariantList values{QStringLiteral("2026-01-02"), QStringLiteral("x'); DROP TABLE kxJournal; --")};
    const char *expected[] = {
        "Insert Into kxJournalRecs (JnlDate,Explain) Output Inserted.RecID Values (?,?)",
        "Insert Into kxJournalRecs (JnlDate,Explain) Values (?,?)",
        "Insert Into kxJournalRecs (JnlDate,Explain) Values (?,?) Returning RecID",
        "Insert Into kxJournalRecs (JnlDate,Explain) Values (?,?) Returning RecID",
    };
    for (SqlDialect::Kind kind : {SqlDialect::Server, SqlDialect::Desktop, SqlDialect::Sqlite, SqlDialect::Postgres}) {
        const auto d = SqlDialect::create(kind);
        const kx::SqlStatement insert = d->insertRecord(fields, values);
        EXPECT_EQ(insert.text, QString::fromLatin1(expected[kind])) << d->name().toStdString();
        EXPECT_EQ(insert.binds, values);
        EXPECT_EQ(d->updateRecord(9, fields, values).text, QStringLiteral("Update kxJournalRecs Set JnlDate=?,Explain=? Where RecID=9"));
        EXPECT_EQ(d->lastInsertedKey().text.isEmpty(), kind != SqlDialect::Desktop);
        EXPECT_EQ(d->countRecords(4).text, QStringLiteral("Select count(*) From kxJournalRecs Where DocID=4"));
    }
}

TEST(SqlDialect, EmbeddedDialectsUseTheirOwnSyntax)
{
    const auto lite = SqlDialect::create(SqlDialect::Sqlite);
    EXPECT_EQ(text(lite->firstRecordOfBook(3)), QStringLiteral("Select * From kxJournalRecs Where DocID=3 Order by RecID Limit 1"));
    EXPECT_EQ(text(lite->journalSubtree(QStringLiteral("01"))),
              QStringLiteral("Select * From kxJournal Where substr(AssistCode,1,2)=? Order by AssistCode"));
    EXPECT_EQ(text(lite->deleteBook(3)), QStringLiteral("Delete From kxJournalRecs Where DocID=3"));
    const auto pg = SqlDialect::create(SqlDialect::Postgres);
    EXPECT_EQ(text(pg->bookExplains(3)),
              QStringLiteral("Select  Explain From kxJournalRecs Where DocID=3 Order by RecID DESC Limit 30"));
    EXPECT_TRUE(text(pg->loadBook(3)).endsWith(QStringLiteral("WHERE (((jr.DocID)=3)) ORDER BY jr.Row,jr.RecID")));
}
