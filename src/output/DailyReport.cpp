#include "output/DailyReport.h"

#include "data/SqlAccess.h"
#include "kxjournal/Database.h"

#include <QDateTime>
#include <QHash>
#include <functional>

namespace kx {

namespace {

// A day as the engine compares it with JnlDate, written from whole numbers
// only (a date is never spliced in as text).
QString dayLiteral(const Database &db, const QDate &day)
{
    if (sqlDialect(db).kind() == SqlDialect::Postgres)
        return QStringLiteral("make_date(%1, %2, %3)").arg(day.year()).arg(day.month()).arg(day.day());
    // The format's own "%0…" marks stay out of QString::arg's reach.
    return QStringLiteral("printf('%04d-%02d-%02d', ") + QString::number(day.year()) + QStringLiteral(", ") +
           QString::number(day.month()) + QStringLiteral(", ") + QString::number(day.day()) + QLatin1Char(')');
}

// Ids are typed integers: they are the one thing written into a statement.
QString idList(const QList<int> &ids)
{
    QStringList out;
    for (const int id : ids)
        out << QString::number(id);
    return out.join(QLatin1Char(','));
}

// A day as the engines give it back: a date, a time stamp or ISO text.
QDate dateOf(const QVariant &value)
{
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().date();
    return QDate::fromString(value.toString().left(10), Qt::ISODate);
}

struct Sums {
    qint64 opening = 0, receipts = 0, payments = 0;
    int receiptCount = 0, paymentCount = 0;
};

} // namespace

QStringList DailyReport::headers()
{
    return {QStringLiteral("编码"), QStringLiteral("日记账"), QStringLiteral("期初余额"), QStringLiteral("收入笔数"),
            QStringLiteral("收入金额"), QStringLiteral("支出笔数"), QStringLiteral("支出金额"), QStringLiteral("期末余额")};
}

Result<QList<DailyReport::Line>> DailyReport::make(const Database &db, int rootId, const QDate &from, const QDate &to)
{
    if (!from.isValid() || !to.isValid() || to < from)
        return Error(QStringLiteral("日期范围不对：开始日期不能晚于结束日期。"));
    const Result<BookDirectory> read = BookDirectory::read(db);
    if (!read.ok())
        return Error(read.error());
    const BookDirectory &books = read.value();
    if (rootId != 0 && !books.byId(rootId))
        return Error(QStringLiteral("没有这本日记账（编号 %1）。").arg(rootId));

    // Amounts in ten-thousandths, summed exactly by the engine.
    const QString debit = QStringLiteral("CAST(ROUND(COALESCE(r.Debit, 0) * 10000) AS BIGINT)");
    const QString credit = QStringLiteral("CAST(ROUND(COALESCE(r.Credit, 0) * 10000) AS BIGINT)");
    const QString before = QStringLiteral("(r.JnlDate < %1 OR r.Row = f.FirstRow)").arg(dayLiteral(db, from));
    const QString inside = QStringLiteral("(r.JnlDate >= %1 AND r.JnlDate <= %2 AND r.Row <> f.FirstRow)")
                               .arg(dayLiteral(db, from), dayLiteral(db, to));
    const QString sql =
        QStringLiteral("SELECT r.DocID, SUM(CASE WHEN %1 THEN %3 - %4 ELSE 0 END), "
                       "SUM(CASE WHEN %2 AND %3 > 0 THEN 1 ELSE 0 END), SUM(CASE WHEN %2 THEN %3 ELSE 0 END), "
                       "SUM(CASE WHEN %2 AND %4 > 0 THEN 1 ELSE 0 END), SUM(CASE WHEN %2 THEN %4 ELSE 0 END) "
                       "FROM kxJournalRecs r INNER JOIN (SELECT DocID, MIN(Row) AS FirstRow FROM kxJournalRecs "
                       "WHERE Tag >= 0 GROUP BY DocID) f ON f.DocID = r.DocID WHERE r.Tag >= 0 GROUP BY r.DocID")
            .arg(before, inside, debit, credit);
    Result<QSqlQuery> q = sqlExec(db, {sql, {}});
    if (!q.ok())
        return Error(q.error());
    QHash<int, Sums> own;
    QSqlQuery query = q.takeValue();
    while (query.next()) {
        Sums s;
        s.opening = query.value(1).toLongLong();
        s.receiptCount = query.value(2).toInt();
        s.receipts = query.value(3).toLongLong();
        s.paymentCount = query.value(4).toInt();
        s.payments = query.value(5).toLongLong();
        own.insert(query.value(0).toInt(), s);
    }

    // Down the tree: each book, then the books below it; a book with books
    // below it holds their totals (it keeps no records of its own).
    QList<Line> out;
    const std::function<Sums(const BookDirectory::Book &)> walk = [&](const BookDirectory::Book &book) {
        const int at = int(out.size());
        out << Line{book, {}, {}, {}, 0, 0};
        Sums total = own.value(book.id);
        for (const BookDirectory::Book &child : books.children(book.id)) {
            const Sums s = walk(child);
            total.opening += s.opening;
            total.receipts += s.receipts;
            total.payments += s.payments;
            total.receiptCount += s.receiptCount;
            total.paymentCount += s.paymentCount;
        }
        Line &line = out[at];
        line.opening = Currency::fromRaw(total.opening);
        line.receipts = Currency::fromRaw(total.receipts);
        line.payments = Currency::fromRaw(total.payments);
        line.receiptCount = total.receiptCount;
        line.paymentCount = total.paymentCount;
        return total;
    };
    if (rootId != 0) {
        walk(*books.byId(rootId));
    } else {
        for (const BookDirectory::Book &book : books.books())
            if (book.parentId == 0)
                walk(book);
    }
    return out;
}

QString DailyReport::span(const QDate &from, const QDate &to)
{
    if (from == to)
        return from.toString(Qt::ISODate);
    return QStringLiteral("%1 至 %2").arg(from.toString(Qt::ISODate), to.toString(Qt::ISODate));
}

Result<QHash<int, QList<DailyReport::Entry>>> DailyReport::entries(const Database &db, const QList<int> &bookIds,
                                                                   const QDate &from, const QDate &to)
{
    if (!from.isValid() || !to.isValid() || to < from)
        return Error(QStringLiteral("日期范围不对：开始日期不能晚于结束日期。"));
    QHash<int, QList<Entry>> out;
    if (bookIds.isEmpty())
        return out;
    const QString books = idList(bookIds);
    // The opening row is a book's first stored row, whatever its day, as the
    // report counts it; the amounts come as whole ten-thousandths.
    const QString sql =
        QStringLiteral("SELECT r.DocID, r.JnlDate, r.JnlNo, r.Explain, a.AccName, "
                       "CAST(ROUND(COALESCE(r.Debit, 0) * 10000) AS BIGINT), "
                       "CAST(ROUND(COALESCE(r.Credit, 0) * 10000) AS BIGINT) "
                       "FROM kxJournalRecs r INNER JOIN (SELECT DocID, MIN(Row) AS FirstRow FROM kxJournalRecs "
                       "WHERE Tag >= 0 AND DocID IN (%1) GROUP BY DocID) f ON f.DocID = r.DocID "
                       "LEFT JOIN kxAccClass a ON a.AccID = r.AccID "
                       "WHERE r.Tag >= 0 AND r.Row <> f.FirstRow AND r.JnlDate >= %2 AND r.JnlDate <= %3 "
                       "ORDER BY r.DocID, r.Row, r.RecID")
            .arg(books, dayLiteral(db, from), dayLiteral(db, to));
    Result<QSqlQuery> q = sqlExec(db, {sql, {}});
    if (!q.ok())
        return Error(q.error());
    QSqlQuery query = q.takeValue();
    while (query.next()) {
        Entry e;
        e.date = dateOf(query.value(1));
        e.number = query.value(2).toString();
        e.explain = query.value(3).toString();
        e.account = query.value(4).toString();
        e.debit = Currency::fromRaw(query.value(5).toLongLong());
        e.credit = Currency::fromRaw(query.value(6).toLongLong());
        out[query.value(0).toInt()] << e;
    }
    return out;
}

Result<QDate> DailyReport::lastDay(const Database &db, int rootId, const QDate &upTo)
{
    QString sql = QStringLiteral("SELECT MAX(JnlDate) FROM kxJournalRecs WHERE Tag >= 0 AND JnlDate IS NOT NULL");
    if (rootId != 0) {
        const Result<BookDirectory> read = BookDirectory::read(db);
        if (!read.ok())
            return Error(read.error());
        QList<int> ids;
        for (const BookDirectory::Book &book : read.value().subtree(rootId))
            ids << book.id;
        if (ids.isEmpty())
            return Error(QStringLiteral("没有这本日记账（编号 %1）。").arg(rootId));
        sql += QStringLiteral(" AND DocID IN (%1)").arg(idList(ids));
    }
    if (upTo.isValid())
        sql += QStringLiteral(" AND JnlDate <= ") + dayLiteral(db, upTo);
    Result<QSqlQuery> q = sqlExec(db, {sql, {}});
    if (!q.ok())
        return Error(q.error());
    QSqlQuery query = q.takeValue();
    return query.next() ? dateOf(query.value(0)) : QDate();
}

} // namespace kx
