#include "bank/Reconciliation.h"

#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/BookRow.h"

#include <QHash>
#include <algorithm>

namespace kx {

Currency Reconciliation::total(Part part) const
{
    Currency sum;
    for (const Item &item : items[part])
        sum = sum + item.amount;
    return sum;
}

QString Reconciliation::partName(Part part)
{
    switch (part) {
    case BankReceived:
        return QStringLiteral("银收企未收");
    case BankPaid:
        return QStringLiteral("银付企未付");
    case BookReceived:
        return QStringLiteral("企收银未收");
    case BookPaid:
        break;
    }
    return QStringLiteral("企付银未付");
}

Currency Reconciliation::balanceOf(const Book &book, const QDate &to)
{
    const Sheet &grid = book.sheet();
    const JournalColumns columns = book.columns();
    Currency balance;
    for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
        const BookRow row = BookRow::of(grid, columns, r);
        if (row.isSummary())
            continue;
        // Rows never saved are no records yet: the statement is reconciled
        // with what is stored.
        if (!row.isOpening() && (!row.isDated() || row.date() > to || row.recId() <= 0))
            continue;
        balance = balance + row.debit() - row.credit();
    }
    return balance;
}

Result<Reconciliation> Reconciliation::of(const Book &book, Database &db, const QDate &to)
{
    StatementStore store(db);
    const int docId = book.state().savedDocId();
    const Result<QList<StoredLine>> lines = store.lines(docId, to);
    if (!lines.ok())
        return Error(lines.error());
    const Result<QMultiHash<int, int>> matches = store.matches(docId);
    if (!matches.ok())
        return Error(matches.error());
    const Result<QList<QPair<QDate, Currency>>> closings = store.closings(docId);
    if (!closings.ok())
        return Error(closings.error());
    Result<Reconciliation> made =
        of(BankRecord::of(book), balanceOf(book, to), lines.value(), matches.value(), closings.value(), to);
    if (!made.ok())
        return made;
    Reconciliation r = made.value();
    r.bookName = book.state().book.journalName;
    return r;
}

Result<Reconciliation> Reconciliation::of(const QList<BankRecord> &records, Currency bookBalance,
                                          const QList<StoredLine> &lines, const QMultiHash<int, int> &matches,
                                          const QList<QPair<QDate, Currency>> &closings, const QDate &to)
{
    if (!to.isValid())
        return Error(QStringLiteral("没有给出调节到哪一天。"));
    QList<const StoredLine *> upTo;
    for (const StoredLine &l : lines)
        if (l.line.date.isValid() && l.line.date <= to)
            upTo << &l;
    if (upTo.isEmpty())
        return Error(QStringLiteral("%1 以前没有导入过这本账的银行对账单。").arg(to.toString(Qt::ISODate)));
    std::stable_sort(upTo.begin(), upTo.end(),
                     [](const StoredLine *a, const StoredLine *b) { return a->line.date < b->line.date; });

    // The bank's balance: the last one it gave by then (after a line, or
    // closing a file), carried on by the lines after it.
    int anchor = -1;
    Currency anchorBalance;
    QDate closingDay;
    for (int i = int(upTo.size()) - 1; i >= 0 && anchor < 0; --i)
        if (upTo.at(i)->line.balance) {
            anchor = i;
            anchorBalance = *upTo.at(i)->line.balance;
        }
    for (const QPair<QDate, Currency> &c : closings) {
        if (!c.first.isValid() || c.first > to)
            continue;
        const bool later = anchor < 0 ? !closingDay.isValid() || c.first > closingDay
                                      : c.first >= upTo.at(anchor)->line.date && (!closingDay.isValid() || c.first > closingDay);
        if (later) {
            closingDay = c.first;
            anchorBalance = c.second;
        }
    }
    if (anchor < 0 && !closingDay.isValid())
        return Error(QStringLiteral("对账单没有给出 %1 以前的余额，不能编制余额调节表。").arg(to.toString(Qt::ISODate)));
    Currency bank = anchorBalance;
    for (int i = 0; i < int(upTo.size()); ++i) {
        const StatementLine &l = upTo.at(i)->line;
        const bool after = closingDay.isValid() ? l.date > closingDay : i > anchor;
        if (after)
            bank = l.side == StatementSide::Receipt ? bank + l.amount : bank - l.amount;
    }

    Reconciliation r;
    r.to = to;
    r.bookBalance = bookBalance;
    r.bankBalance = bank;
    QHash<int, const BankRecord *> byKey;
    for (const BankRecord &rec : records)
        byKey.insert(rec.recId, &rec);
    // A line is open while none of its records is in the journal by then; a
    // record while no line of the statement by then stands for it.
    QSet<int> closedRecords;
    for (const StoredLine *l : upTo) {
        // Closed only when every record it stands for is in the journal by
        // then: a line ticked to a record of a later day is still open, and
        // so are its records of earlier days.
        QList<int> records;
        bool closed = matches.contains(l->id);
        for (auto it = matches.constFind(l->id); it != matches.cend() && it.key() == l->id; ++it) {
            const BankRecord *rec = byKey.value(it.value());
            closed = closed && rec && rec->date <= to;
            if (rec)
                records << rec->recId;
        }
        if (closed) {
            for (const int recId : records)
                closedRecords.insert(recId);
            continue;
        }
        Item item{l->id, l->line.date, l->line.memo, l->line.reference, l->line.amount};
        if (!l->line.counterparty.isEmpty())
            item.text = item.text.isEmpty() ? l->line.counterparty : item.text + QStringLiteral("（") + l->line.counterparty + QStringLiteral("）");
        r.items[l->line.side == StatementSide::Receipt ? BankReceived : BankPaid] << item;
    }
    // Reconciling starts with the month the first statement begins in: the
    // bank's balance before it stands for the records before that month.
    const QDate firstLine = upTo.first()->line.date;
    const QDate start(firstLine.year(), firstLine.month(), 1);
    QList<const BankRecord *> byDate;
    for (const BankRecord &rec : records)
        byDate << &rec;
    std::stable_sort(byDate.begin(), byDate.end(), [](const BankRecord *a, const BankRecord *b) { return a->date < b->date; });
    for (const BankRecord *rec : byDate) {
        if (rec->date < start || rec->date > to || closedRecords.contains(rec->recId))
            continue;
        r.items[rec->side == StatementSide::Receipt ? BookReceived : BookPaid]
            << Item{rec->recId, rec->date, rec->explain, rec->number, rec->amount};
    }
    return r;
}

} // namespace kx
