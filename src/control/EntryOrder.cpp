#include "control/EntryOrder.h"

#include "editing/EditContext.h"
#include "grid/Sheet.h"
#include "ledger/LedgerState.h"

#include <QList>

namespace kx {

namespace {

QList<int> fieldsInOrder(const EditContext &ctx)
{
    const Sheet &g = ctx.grid;
    const JournalColumns columns(g);
    QList<int> order;
    auto take = [&](int col) {
        if (col >= g.fixedCols() && !g.isColHidden(col) && !order.contains(col) &&
            JournalColumns::inList(ctx.state.fields.editFields, g.colKey(col)))
            order << col;
    };
    for (JournalColumns::Column c : {JournalColumns::ShowName, JournalColumns::AccName, JournalColumns::Explain,
                                     JournalColumns::Debit, JournalColumns::Credit})
        take(columns[c]);
    // Picking a voucher and numbering documents are not part of typing a record.
    for (int col = g.fixedCols(); col < g.cols(); ++col) {
        const JournalColumns::Column c = JournalColumns::fromKey(g.colKey(col));
        if (c != JournalColumns::AccDoc && c != JournalColumns::JnlNo)
            take(col);
    }
    return order;
}

} // namespace

std::pair<int, int> EntryOrder::next(const EditContext &ctx, int row, int col, bool backwards, bool enter)
{
    const Sheet &g = ctx.grid;
    const QList<int> order = fieldsInOrder(ctx);
    if (order.isEmpty() || !g.isDataRow(row))
        return {-1, -1};
    const int at = int(order.indexOf(col));
    if (backwards) {
        if (at > 0)
            return {row, order.at(at - 1)};
        return row > g.fixedRows() ? std::pair<int, int>{row - 1, order.last()} : std::pair<int, int>{-1, -1};
    }
    const JournalColumns columns(g);
    const int debitAt = int(order.indexOf(columns[JournalColumns::Debit]));
    const bool rowDone = at + 1 >= order.size() || (enter && debitAt >= 0 && at >= debitAt);
    if (!rowDone)
        return {row, order.at(at < 0 ? 0 : at + 1)};
    if (row + 1 >= g.rows())
        return {-1, -1};
    return {row + 1, order.first()};
}

} // namespace kx
