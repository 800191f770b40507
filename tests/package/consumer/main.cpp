// A host built against the installed package: it sees only <kxjournal/...>.
// It makes a SQLite database, embeds a Journal on a book, types an amount
// through the edit cycle, saves, and reads the stored amount back with SQL.
#include <kxjournal/Currency.h>
#include <kxjournal/Database.h>
#include <kxjournal/EditCycle.h>
#include <kxjournal/Journal.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QApplication>
#include <QDir>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>
#include <cstdio>

namespace {

int fail(const char *what, const QString &why = QString())
{
    std::fprintf(stderr, "consumer: %s %s\n", what, qPrintable(why));
    return 1;
}

bool run(QSqlQuery &q, const QString &sql, const QVariantList &values = {})
{
    q.prepare(sql);
    for (const QVariant &v : values)
        q.addBindValue(v);
    return q.exec();
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir dir;
    const QString url = QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("host.db"));

    kx::Database db = kx::Database::open(url);
    if (!db.isOpen())
        return fail("open:", db.lastError());
    if (const kx::Result<void> made = kx::Schema::create(db); !made.ok())
        return fail("schema:", made.error());
    // A bank account and its book, written as the host's own code would.
    QSqlQuery q(db.handle());
    if (!run(q, QStringLiteral("INSERT INTO kxAccClass (AccCode, AccName, AccDir) VALUES (?, ?, ?)"),
             {QStringLiteral("1002"), QStringLiteral("银行存款"), QStringLiteral("借")}))
        return fail("account:", q.lastError().text());
    const int accId = q.lastInsertId().toInt();
    // kxJournal: ZipCode is the balance direction, Address "label|AccID" the book's account.
    if (!run(q, QStringLiteral("INSERT INTO kxJournal (AssistCode, AssistName, ZipCode, Address, Header) VALUES (?, ?, ?, ?, ?)"),
             {QStringLiteral("1002"), QStringLiteral("银行日记账"), QStringLiteral("借"),
              QStringLiteral("银行存款|%1").arg(accId), QString()}))
        return fail("book:", q.lastError().text());
    const int book = q.lastInsertId().toInt();

    kx::SqlAccContext acc(kx::Database::open(url));
    acc.setCurrentMonth(QDate(2026, 3, 15));
    acc.setBeginDate(QDate(2026, 1, 1));
    kx::Journal journal;
    QStringList said;
    QObject::connect(&journal, &kx::Journal::Notify, [&said](const QString &m, bool) { said << m; });
    journal.setAcc(&acc);
    journal.setDocID(book);
    if (!journal.Load())
        return fail("load:", said.join(QLatin1Char(' ')));

    // The first row below the opening row: a date (typed into the shown-date
    // column, as a person types it), then the amount.
    kx::GridModel *grid = journal.Grid();
    const int row = grid->fixedRows() + 1;
    if (!grid->editCycle()->editCell(row, grid->colIndex(QStringLiteral("ShowName")), QStringLiteral("2026-03-05")))
        return fail("date refused:", said.join(QLatin1Char(' ')));
    if (!grid->editCycle()->editCell(row, grid->colIndex(QStringLiteral("Debit")), QStringLiteral("12.5")))
        return fail("amount refused:", said.join(QLatin1Char(' ')));
    if (!journal.Save())
        return fail("save:", said.join(QLatin1Char(' ')));

    QSqlQuery back(db.handle());
    if (!run(back, QStringLiteral("SELECT Debit FROM kxJournalRecs WHERE DocID = ? AND JnlDate = ?"),
             {book, QStringLiteral("2026-03-05")}) || !back.next())
        return fail("no stored record:", back.lastError().text());
    const QString stored = back.value(0).toString();
    if (stored != QStringLiteral("12.5"))
        return fail("stored amount is", stored);
    if (back.next())
        return fail("more than one record stored");

    // Amounts add up through the library's arithmetic, as a host sums a book.
    kx::Currency total = grid->amount(row, QStringLiteral("Debit"));
    total += kx::Currency::fromUnits(3);
    total = total - kx::Currency::fromUnits(1);
    if (total.toString() != QStringLiteral("14.5"))
        return fail("12.5 + 3 - 1 is", total.toString());
    std::printf("consumer ok\n");
    return 0;
}
