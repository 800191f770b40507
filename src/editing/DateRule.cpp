#include "editing/DateRule.h"

#include "ledger/BalanceCalculator.h"

#include "editing/BalanceReach.h"
#include "editing/DateEntry.h"
#include "editing/EditContext.h"
#include "kxjournal/AccContext.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

namespace kx {

bool DateRule::handles(JournalColumns::Column column) const
{
    return column == JournalColumns::ShowName;
}

QString DateRule::comboList(EditContext &, int, int) const
{
    return QStringLiteral("|...");
}

QDate DateRule::firstAllowed(const EditContext &ctx, int row)
{
    // Below the last summary row there is none nearer: start there, not
    // at every row of a long paste.
    int start = row - 1;
    if (ctx.state.lastSumRow > ctx.grid.fixedRows() && ctx.state.lastSumRow < row)
        start = ctx.state.lastSumRow;
    for (int r = start; r > ctx.grid.fixedRows(); --r) {
        const BookRow above = BookRow::of(ctx.grid, ctx.columns, r);
        if (!above.isSummary())
            continue;
        const QDate d = above.date();
        if (d.isValid())
            return QDate(d.year(), d.month(), 1).addMonths(1);
    }
    return QDate(2000, 1, 1);
}

QDate DateRule::lastAllowed(const EditContext &ctx)
{
    if (AccContext *acc = ctx.acc()) {
        const QDate end = acc->PeriodEnd();
        if (end.isValid())
            return QDate(end.year(), 12, 31);
        const QString period = acc->CurPeriod();
        bool ok = false;
        const int year = period.left(4).toInt(&ok);
        if (ok && year > 1900)
            return QDate(year, 12, 31);
    }
    return QDate(9999, 12, 31);
}

QDate DateRule::reference(const EditContext &ctx, int row)
{
    if (AccContext *acc = ctx.acc()) {
        const QDate start = acc->PeriodStart();
        if (start.isValid())
            return start;
    }
    for (int r = row; r >= ctx.grid.fixedRows(); --r) {
        const QDate d = BookRow::of(ctx.grid, ctx.columns, r).date();
        if (d.isValid())
            return d;
    }
    return QDate::currentDate();
}

bool DateRule::validate(EditContext &ctx, int row, int, QString &text)
{
    const QDate date = DateEntry::parse(text, reference(ctx, row));
    if (!date.isValid())
        return false;
    const BookRow line(ctx.grid, ctx.columns, row);
    if (date == line.date() && line.accId() != 0) {
        // The same day in another spelling changes nothing.
        ctx.cellChanged = false;
        text = line.text(JournalColumns::ShowName);
        return true;
    }
    if (!ctx.fromPicker) {
        if (row > ctx.grid.fixedRows()) {
            if (date < firstAllowed(ctx, row) || date > lastAllowed(ctx)) {
                ctx.refuse(QStringLiteral("输入的日期错误；"), false);
                return false;
            }
        } else if (AccContext *acc = ctx.acc()) {
            // The opening row holds the balance brought in: it lies before the books begin.
            const QDate begin = acc->BeginDate();
            if (begin.isValid() && date >= begin)
                return false;
        }
    }
    // A row without a day counts towards no balance; with one, its figures
    // move every balance below, which must stay what the book stores.
    if (!ctx.batch && row > ctx.grid.fixedRows() && ctx.grid.isEmpty(row, ctx.state.outlineColumn(ctx.grid))) {
        const BalanceReach reach(ctx);
        const QString why = reach.check(row, {line.debit() - line.credit(), line.forex()});
        if (!why.isEmpty()) {
            ctx.refuse(why, true);
            return false;
        }
    }
    text = date.toString(Qt::ISODate);
    return true;
}

void DateRule::setRowDate(EditContext &ctx, int row, const QDate &date)
{
    const BookRow line(ctx.grid, ctx.columns, row);
    line.setText(JournalColumns::JnlDate, date.toString(Qt::ISODate));
    BookRow::Label label = BookRow::Label::Record;
    if (ctx.grid.isSubtotal(row))
        label = row == ctx.grid.fixedRows() ? BookRow::Label::Opening : BookRow::Label::Summary;
    line.setText(JournalColumns::ShowName, BookRow::dateLabel(date, label));
}

void DateRule::afterEdit(EditContext &ctx, int row, int col)
{
    const QDate date = QDate::fromString(ctx.grid.text(row, col), Qt::ISODate);
    if (!date.isValid())
        return;
    setRowDate(ctx, row, date);
    // A row with amounts typed before its date becomes a record now: its
    // balance and those below move (a paste works them out once at its end).
    const BookRow line(ctx.grid, ctx.columns, row);
    const bool holdsAmount = !line.text(JournalColumns::Debit).isEmpty() || !line.text(JournalColumns::Credit).isEmpty() ||
                             !line.text(JournalColumns::Forex).isEmpty();
    if (holdsAmount && !ctx.batch)
        BalanceCalculator(ctx.book).calculate(row);
    if (ctx.state.autoNumber && !ctx.batch)
        numberNewRecord(ctx, row);
}

void DateRule::numberNewRecord(EditContext &ctx, int row)
{
    // A new record, dated and still without a number, takes the one after
    // the nearest number above it, as renumbering would give it.
    const BookRow line(ctx.grid, ctx.columns, row);
    if (line.recId() > 0 || !line.text(JournalColumns::JnlNo).isEmpty() || line.isSummary())
        return;
    for (int r = row - 1; r > ctx.grid.fixedRows(); --r) {
        const BookRow above = BookRow::of(ctx.grid, ctx.columns, r);
        if (above.isSummary())
            continue;
        const QString next = BookRow::nextNumber(above.text(JournalColumns::JnlNo));
        if (next.isEmpty())
            continue;
        line.setText(JournalColumns::JnlNo, next);
        return;
    }
}

} // namespace kx
