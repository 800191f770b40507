#include "rows/BlockPaste.h"

#include <utility>

#include "editing/BalanceReach.h"
#include "editing/EditContext.h"
#include "editing/EditPipeline.h"
#include "editing/EditRules.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "rows/GridClipboard.h"

#include <algorithm>
#include <iterator>

namespace kx {

BlockPaste::BlockPaste(EditContext &ctx, const EditRules &rules) : m_ctx(ctx), m_rules(rules) {}

void BlockPaste::finish(int firstRow, bool changed)
{
    // The accounts a batch found are remembered for its rows only.
    m_ctx.accountIds.clear();
    m_ctx.accountsById.clear();
    if (!changed)
        return;
    BalanceCalculator(m_ctx.book).recalculateFrom(firstRow);
    EditPipeline(m_ctx, m_rules).markBook();
}

bool BlockPaste::begin(const QString &text)
{
    m_begun = false;
    if (GridClipboard::parse(text).size() < LongFrom)
        return true;
    // The report lets the user interface catch up: what runs then may
    // change the grid the paste is to be laid out on.
    const quint64 revision = m_ctx.grid.revision();
    m_ctx.host.progress(0);
    if (m_ctx.host.stopped())
        return false;
    if (m_ctx.grid.revision() != revision) {
        m_ctx.host.progress(-1);
        m_ctx.host.prompt(QStringLiteral("粘贴时表格被改动，没有粘贴。"), true);
        return false;
    }
    m_begun = true;
    return true;
}

bool BlockPaste::paste(const QString &text)
{
    m_rejected.clear();
    Sheet &grid = m_ctx.grid;
    const QList<QStringList> block = GridClipboard::parse(text);
    if (block.isEmpty() || !m_ctx.state.mayModify() || m_ctx.state.isConsolidated() || !grid.isDataRow(grid.row()))
        return false;
    m_ctx.columns = JournalColumns(grid);
    const int top = std::max(grid.row(), grid.fixedRows() + 1);
    QList<int> targets;
    for (int c = grid.col(); c < grid.cols(); ++c)
        if (!grid.isColHidden(c))
            targets << c;
    // The date goes in first: the other columns' checks read the row's day.
    const int dateCol = m_ctx.columns[JournalColumns::ShowName];
    QList<int> order;
    for (int j = 0; j < targets.size(); ++j)
        (targets.at(j) == dateCol ? order.prepend(j) : order.append(j));

    if (const QString why = misplaced(block, top, targets); !why.isEmpty()) {
        m_ctx.host.prompt(why, true);
        return false;
    }

    const int count = int(block.size());
    const bool big = count >= LongFrom;
    if (big && !std::exchange(m_begun, false) && !begin(text))
        return false;
    const int rowsBefore = grid.rows();
    if (top + count > grid.rows()) {
        const int old = grid.rows();
        grid.setRows(top + count);
        for (int r = old; r < grid.rows(); ++r)
            grid.setRowData(r, int(BookRow::Unchanged));
    }
    EditPipeline pipeline(m_ctx, m_rules);
    int reported = -1;
    bool changed = false;
    // A host may change the grid from a progress report: rows moved under
    // the paste are no longer the ones it was given, so it stops there.
    int stoppedAt = -1;
    {
        const int amountCols[] = {m_ctx.columns[JournalColumns::Debit], m_ctx.columns[JournalColumns::Credit],
                                  m_ctx.columns[JournalColumns::Forex], m_ctx.columns[JournalColumns::Rate]};
        QString heldAmounts[4];
        QList<int> amountsEntered;
        BalanceReach reach(m_ctx);
        for (int i = 0; i < count && stoppedAt < 0; ++i) {
            const int row = top + i;
            const QStringList &cells = block.at(i);
            const BalanceReach::Share before = reach.share(row);
            for (int k = 0; k < 4; ++k)
                heldAmounts[k] = amountCols[k] >= 0 ? grid.text(row, amountCols[k]) : QString();
            amountsEntered.clear();
            for (int j : std::as_const(order)) {
                // A short line leaves the cells past its end alone; a field on
                // a column that takes no typing is what misplaced() let pass.
                if (j >= cells.size() || !pipeline.takesText(targets.at(j)))
                    continue;
                const int col = targets.at(j);
                const Result<bool> entered = pipeline.enter(row, col, cells.at(j), EditOrigin::Paste);
                if (entered.ok()) {
                    changed = entered.value() || changed;
                    if (entered.value() && std::find(std::begin(amountCols), std::end(amountCols), col) != std::end(amountCols))
                        amountsEntered << j;
                    continue;
                }
                m_rejected << QStringLiteral("第%1行 %2“%3”：%4").arg(row).arg(grid.text(0, col)).arg(cells.at(j), entered.error());
            }
            // The balances from here down must stay what the engine stores
            // exactly; the row's figures go back when they would not.
            BalanceReach::Share after = reach.share(row);
            const QString why = reach.check(row, {after.local - before.local, after.foreign - before.foreign});
            if (!why.isEmpty() && !amountsEntered.isEmpty()) {
                for (int k = 0; k < 4; ++k)
                    if (amountCols[k] >= 0)
                        grid.setText(row, amountCols[k], heldAmounts[k]);
                for (int j : std::as_const(amountsEntered))
                    m_rejected << QStringLiteral("第%1行 %2“%3”：%4").arg(row).arg(grid.text(0, targets.at(j))).arg(cells.at(j), why);
                after = reach.share(row);
            }
            reach.accept({after.local - before.local, after.foreign - before.foreign});
            const int percent = int(qint64(i + 1) * 100 / count);
            if (big && percent != reported && percent < 100) {
                reported = percent;
                const quint64 revision = grid.revision();
                m_ctx.host.progress(percent);
                if (grid.revision() != revision || m_ctx.host.stopped())
                    stoppedAt = i + 1;
            }
        }
    }
    // Rows grown for lines a stopped paste never reached go again (the last
    // rows: a host's change above them moved them all alike).
    const int unfilled = stoppedAt >= 0 ? top + count - std::max(rowsBefore, top + stoppedAt) : 0;
    if (unfilled > 0 && !m_ctx.host.stopped())
        grid.setRows(grid.rows() - unfilled);
    const int pastedRows = stoppedAt >= 0 ? stoppedAt : count;
    finish(top, changed);
    grid.select(top, targets.isEmpty() ? grid.col() : targets.first(), top + pastedRows - 1,
                targets.isEmpty() ? grid.col() : targets.at(std::min(int(targets.size()), int(block.first().size())) - 1));
    if (big)
        m_ctx.host.progress(-1);
    if (stoppedAt >= 0 && stoppedAt < count && !m_ctx.host.stopped())
        m_ctx.host.prompt(QStringLiteral("粘贴时表格被改动，只粘贴了前 %1 行。").arg(stoppedAt), true);
    if (!m_rejected.isEmpty()) {
        QStringList shown = m_rejected.mid(0, 20);
        if (m_rejected.size() > 20)
            shown << QStringLiteral("……共 %1 个单元格。").arg(m_rejected.size());
        m_ctx.host.prompt(QStringLiteral("以下单元格没有粘贴：\r\n") + shown.join(QStringLiteral("\r\n")), true);
    }
    return changed;
}

QString BlockPaste::misplaced(const QList<QStringList> &block, int top, const QList<int> &targets) const
{
    // Texts land on the visible columns from the cursor on, one field per
    // column. A field that falls on a column that takes no typing, or past
    // the last column, was meant for another column (a line laid out for
    // other columns, a field left out): nothing is pasted then. Worked-out
    // columns (balances, the direction) take what a copied block carries
    // without a word, and a field equal to what its cell holds changes nothing.
    const GridModel &grid = m_ctx.grid;
    const JournalColumns &columns = m_ctx.columns;
    const int workedOut[] = {columns[JournalColumns::Balance], columns[JournalColumns::fxBalance],
                             columns[JournalColumns::Dir]};
    for (int i = 0; i < block.size(); ++i) {
        const QStringList &cells = block.at(i);
        const int row = top + i;
        for (int j = 0; j < cells.size(); ++j) {
            const QString field = cells.at(j).trimmed();
            if (field.isEmpty())
                continue;
            QString where;
            if (j >= targets.size()) {
                where = QStringLiteral("最后一栏之后");
            } else {
                const int col = targets.at(j);
                const QString key = grid.colKey(col);
                const bool typed = JournalColumns::inList(m_ctx.state.fields.editFields, key) &&
                                   m_ctx.columnAt(col) != JournalColumns::AccDoc;
                if (typed || std::find(std::begin(workedOut), std::end(workedOut), col) != std::end(workedOut) ||
                    (row < grid.rows() && grid.text(row, col) == field))
                    continue;
                where = QStringLiteral("“%1”栏，这一栏不能输入").arg(grid.text(0, col).trimmed());
            }
            QStringList order;
            for (int k = 0; k < targets.size() && k < 12; ++k)
                order << (grid.text(0, targets.at(k)).trimmed().isEmpty() ? grid.colKey(targets.at(k))
                                                                          : grid.text(0, targets.at(k)).trimmed());
            return QStringLiteral("没有粘贴：第%1行第%2项“%3”会落在%4。粘贴的各项依次进入光标起显示的各栏：%5。")
                .arg(row)
                .arg(j + 1)
                .arg(field, where, order.join(QStringLiteral("、")));
        }
    }
    return {};
}

bool BlockPaste::clear()
{
    m_rejected.clear();
    Sheet &grid = m_ctx.grid;
    if (!m_ctx.state.mayModify() || m_ctx.state.isConsolidated())
        return false;
    m_ctx.columns = JournalColumns(grid);
    int r1, c1, r2, c2;
    grid.selection(r1, c1, r2, c2);
    if (!grid.isDataRow(r1))
        return false;
    const int dateCol = m_ctx.columns[JournalColumns::ShowName];
    const int accCol = m_ctx.columns[JournalColumns::AccName];
    EditPipeline pipeline(m_ctx, m_rules);
    bool changed = false;
    for (int r = r1; r <= r2; ++r)
        for (int c = c1; c <= c2; ++c) {
            if (c == dateCol || c == accCol || grid.isColHidden(c) || grid.isEmpty(r, c) || !pipeline.takesText(c))
                continue;
            const Result<bool> entered = pipeline.enter(r, c, QString(), EditOrigin::Paste);
            changed = (entered.ok() && entered.value()) || changed;
        }
    finish(r1, changed);
    return changed;
}

} // namespace kx
