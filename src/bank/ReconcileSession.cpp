#include "bank/ReconcileSession.h"

#include "editing/EditContext.h"
#include "editing/EditPipeline.h"
#include "grid/Sheet.h"
#include "ledger/Book.h"
#include "ledger/ReconciledRows.h"
#include "ledger/BookRow.h"

#include <algorithm>

namespace kx {

ReconcileSession::ReconcileSession(Book &book, Database &db, const QString &user)
    : m_book(book), m_db(db), m_user(user)
{
}

Result<void> ReconcileSession::read()
{
    StatementStore store(m_db);
    const int docId = m_book.state().savedDocId();
    Result<QList<StoredLine>> lines = store.lines(docId);
    if (!lines.ok())
        return Error(lines.error());
    Result<QMultiHash<int, int>> matches = store.matches(docId);
    if (!matches.ok())
        return Error(matches.error());
    m_lines = lines.takeValue();
    m_matches = matches.takeValue();
    m_records = BankRecord::of(m_book);
    std::stable_sort(m_records.begin(), m_records.end(),
                     [](const BankRecord &a, const BankRecord &b) { return a.date < b.date; });
    m_matchedRecords.clear();
    for (auto it = m_matches.cbegin(); it != m_matches.cend(); ++it)
        m_matchedRecords.insert(it.value());
    return {};
}

void ReconcileSession::setMonth(const QDate &day)
{
    m_month = day.isValid() ? QDate(day.year(), day.month(), 1) : QDate();
}

bool ReconcileSession::inMonth(const QDate &day) const
{
    return !m_month.isValid() || (day.year() == m_month.year() && day.month() == m_month.month());
}

QList<StoredLine> ReconcileSession::monthLines() const
{
    QList<StoredLine> out;
    for (const StoredLine &l : m_lines)
        if (inMonth(l.line.date))
            out << l;
    return out;
}

QList<BankRecord> ReconcileSession::monthRecords() const
{
    QList<BankRecord> out;
    for (const BankRecord &r : m_records)
        if (inMonth(r.date))
            out << r;
    return out;
}

QList<StoredLine> ReconcileSession::openLines() const
{
    QList<StoredLine> out;
    for (const StoredLine &l : m_lines)
        if (inMonth(l.line.date) && !m_matches.contains(l.id))
            out << l;
    return out;
}

QList<BankRecord> ReconcileSession::openRecords() const
{
    QList<BankRecord> out;
    for (const BankRecord &r : m_records)
        if (inMonth(r.date) && !m_matchedRecords.contains(r.recId))
            out << r;
    return out;
}

void ReconcileSession::markBook()
{
    QSet<qint64> matched;
    for (const int recId : m_matchedRecords)
        matched.insert(recId);
    ReconciledRows::mark(m_book.sheet(), matched);
}

void ReconcileSession::note(const QList<QPair<int, int>> &pairs, bool on)
{
    for (const QPair<int, int> &p : pairs) {
        if (on) {
            m_matches.insert(p.first, p.second);
            m_matchedRecords.insert(p.second);
        } else {
            m_matches.remove(p.first, p.second);
            m_matchedRecords.remove(p.second);
        }
    }
    markBook();
}

Result<void> ReconcileSession::apply(const Step &step, bool backwards)
{
    StatementStore store(m_db);
    const QList<QPair<int, int>> &adding = backwards ? step.removed : step.added;
    const QList<QPair<int, int>> &removing = backwards ? step.added : step.removed;
    QList<int> lines;
    for (const QPair<int, int> &p : removing)
        if (!lines.contains(p.first))
            lines << p.first;
    if (!lines.isEmpty())
        if (const Result<int> gone = store.unmatch(lines); !gone.ok())
            return Error(gone.error());
    if (!adding.isEmpty())
        if (const Result<void> made = store.match(adding, m_user, false); !made.ok())
            return made;
    note(removing, false);
    note(adding, true);
    return {};
}

Result<int> ReconcileSession::autoMatch(int *ambiguous)
{
    QSet<int> lines(m_matches.keyBegin(), m_matches.keyEnd());
    const StatementMatcher::Outcome found = StatementMatcher::match(m_lines, m_records, lines, m_matchedRecords);
    if (ambiguous)
        *ambiguous = found.ambiguous;
    if (found.pairs.isEmpty())
        return 0;
    if (const Result<void> made = StatementStore(m_db).match(found.pairs, m_user, true); !made.ok())
        return Error(made.error());
    note(found.pairs, true);
    m_steps.append(Step{found.pairs, {}});
    return int(found.pairs.size());
}

Result<void> ReconcileSession::match(int lineId, const QList<int> &recIds)
{
    const auto line = std::find_if(m_lines.cbegin(), m_lines.cend(), [&](const StoredLine &l) { return l.id == lineId; });
    if (line == m_lines.cend())
        return Error(QStringLiteral("没有这一行对账单。"));
    if (m_matches.contains(lineId))
        return Error(QStringLiteral("这一行对账单已经勾对过了，请先取消勾对。"));
    if (recIds.isEmpty())
        return Error(QStringLiteral("请选出与这一行对账单相对的日记账记录。"));
    Currency sum;
    Step step;
    for (const int recId : recIds) {
        const auto rec = std::find_if(m_records.cbegin(), m_records.cend(), [&](const BankRecord &r) { return r.recId == recId; });
        if (rec == m_records.cend() || m_matchedRecords.contains(recId))
            return Error(QStringLiteral("所选的记录已经勾对过了，或者还没有存储。"));
        if (rec->side != line->line.side)
            return Error(QStringLiteral("对账单是%1，所选的记录是%2，不能勾对。")
                             .arg(StatementStore::sideText(line->line.side), StatementStore::sideText(rec->side)));
        sum = sum + rec->amount;
        step.added.append({lineId, recId});
    }
    if (sum != line->line.amount)
        return Error(QStringLiteral("所选记录合计 %1，对账单是 %2，金额不符，不能勾对。")
                         .arg(sum.format(QStringLiteral("#,##0.00")), line->line.amount.format(QStringLiteral("#,##0.00"))));
    if (const Result<void> done = apply(step, false); !done.ok())
        return done;
    m_steps.append(step);
    return {};
}

Result<void> ReconcileSession::unmatch(int lineId)
{
    Step step;
    for (auto it = m_matches.constFind(lineId); it != m_matches.cend() && it.key() == lineId; ++it)
        step.removed.append({lineId, it.value()});
    if (step.removed.isEmpty())
        return Error(QStringLiteral("这一行对账单还没有勾对。"));
    if (const Result<void> done = apply(step, false); !done.ok())
        return done;
    m_steps.append(step);
    return {};
}

Result<bool> ReconcileSession::undo()
{
    if (m_steps.isEmpty())
        return false;
    if (const Result<void> done = apply(m_steps.last(), true); !done.ok())
        return Error(done.error());
    m_steps.removeLast();
    return true;
}

Result<int> ReconcileSession::recordFrom(int lineId, EditContext &ctx, const EditRules &rules)
{
    const auto line = std::find_if(m_lines.cbegin(), m_lines.cend(), [&](const StoredLine &l) { return l.id == lineId; });
    if (line == m_lines.cend())
        return Error(QStringLiteral("没有这一行对账单。"));
    const StatementLine &l = line->line;
    if (!m_book.state().mayModify() || m_book.state().isConsolidated())
        return Error(QStringLiteral("这本账现在不能增加记录。"));
    Sheet &grid = m_book.sheet();
    const JournalColumns columns = m_book.columns();
    // The account the latest record naming this counterparty was booked to.
    QString account;
    for (int r = grid.rows() - 1; r >= grid.fixedRows() && account.isEmpty() && !l.counterparty.isEmpty(); --r) {
        const BookRow row = BookRow::of(grid, columns, r);
        if (!row.isSummary() && row.text(JournalColumns::Explain).contains(l.counterparty))
            account = row.text(JournalColumns::AccName);
    }
    ctx.keepBlankRow();
    const int row = grid.rows() - 1;
    if (BookRow::of(grid, columns, row).isDated())
        return Error(QStringLiteral("这本账的末尾没有空行可以填写。"));
    QString explain = l.memo;
    if (!l.counterparty.isEmpty())
        explain = explain.isEmpty() ? l.counterparty : explain + QStringLiteral("（") + l.counterparty + QStringLiteral("）");
    EditPipeline pipeline(ctx, rules);
    const QList<QPair<JournalColumns::Column, QString>> fields{
        {JournalColumns::ShowName, l.date.toString(Qt::ISODate)},  // the date as the cashier types it
        {JournalColumns::Explain, explain},
        {JournalColumns::AccName, account},
        {l.side == StatementSide::Receipt ? JournalColumns::Debit : JournalColumns::Credit, l.amount.toString()},
    };
    for (const auto &[column, text] : fields) {
        const int col = columns[column];
        if (col < 0 || text.isEmpty())
            continue;
        const Result<bool> entered = pipeline.enter(row, col, text, EditOrigin::Picker);
        // An account the chart does not know stays empty for the cashier to choose.
        if (!entered.ok() && column != JournalColumns::AccName)
            return Error(entered.error());
    }
    pipeline.markBook();
    return row;
}

} // namespace kx
