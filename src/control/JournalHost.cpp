// Journal: what hosts drive from code — records entered by column key,
// columns shown and sized by key, the enum forms of export types, the
// balance direction and messages.
#include "control/JournalPrivate.h"
#include "control/LayoutController.h"
#include "editing/EditContext.h"
#include "editing/EditGate.h"
#include "editing/EditSession.h"
#include "kxjournal/EditCycle.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/GridView.h"
#include "kxjournal/Journal.h"
#include "ledger/JournalColumns.h"
#include "menu/FieldChoice.h"

#include <QPointer>
#include <algorithm>

namespace kx {

void Journal::Export(ExportType type) { Export(int(type)); }
bool Journal::ExportToFile(const QString &fileName, ExportType type) { return ExportToFile(fileName, int(type)); }

Journal::BalanceDirection Journal::balanceDirection() const
{
    switch (d->state.balanceSide()) {
    case BalanceSide::Debit:
        return DebitDirection;
    case BalanceSide::Credit:
        return CreditDirection;
    case BalanceSide::None:
        break;
    }
    return NoDirection;
}

void Journal::setBalanceDirection(BalanceDirection direction)
{
    setDirection(balanceSideText(direction == DebitDirection    ? BalanceSide::Debit
                                 : direction == CreditDirection ? BalanceSide::Credit
                                                                : BalanceSide::None));
}

QStringList Journal::enterableKeys() const
{
    QStringList keys;
    const GridModel &g = *d->grid;
    for (int c = g.fixedCols(); c < g.cols(); ++c) {
        const QString key = g.colKey(c);
        if (JournalColumns::inList(d->state.fields.editFields, key) &&
            key != JournalColumns::key(JournalColumns::AccDoc))
            keys << key;
    }
    return keys;
}

bool Journal::enterRecord(const QMap<QString, QString> &fieldsByKey, int row)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    JournalPrivate *const p = d.get();
    if (!p->mayStart())
        return false;
    if (fieldsByKey.isEmpty()) {
        Prompt(QStringLiteral("没有要输入的字段。"), true);
        return false;
    }
    // Every key is looked at before a cell is written.
    const QStringList enterable = enterableKeys();
    QStringList unknown, untyped;
    for (auto it = fieldsByKey.cbegin(); it != fieldsByKey.cend(); ++it) {
        if (p->grid->colIndex(it.key()) < p->grid->fixedCols())
            unknown << it.key();
        else if (!enterable.contains(p->grid->colKey(p->grid->colIndex(it.key()))))
            untyped << QStringLiteral("%1（%2）").arg(it.key(), p->grid->text(0, p->grid->colIndex(it.key())).trimmed());
    }
    if (!unknown.isEmpty() || !untyped.isEmpty()) {
        QStringList why;
        if (!unknown.isEmpty())
            why << QStringLiteral("没有这些栏：") + unknown.join(QStringLiteral("、"));
        if (!untyped.isEmpty())
            why << QStringLiteral("这些栏不能输入：") + untyped.join(QStringLiteral("、"));
        Prompt(QStringLiteral("记录没有输入。") + why.join(QStringLiteral("；")) + QStringLiteral("。"), true);
        return false;
    }
    // What an open editor holds is stored first, as a click elsewhere would.
    if (!p->settleEditor() || !keep->alive())
        return false;
    EditContext &ctx = p->edit->context();
    GridModel &g = *p->grid;
    bool blank = true;
    if (row == 0) {
        p->edit->keepBlankRow();
        row = g.rows() - 1;
        for (int c = g.fixedCols(); c < g.cols() && blank; ++c)
            blank = g.isEmpty(row, c);
    }
    if (!blank || !g.isDataRow(row) || !EditGate::canEditRow(ctx, row)) {
        Prompt(QStringLiteral("第%1行不能输入记录。").arg(row), true);
        return false;
    }
    // The date goes in first: the other columns' checks read the row's day;
    // then the account, whose lookup the amounts' checks need; then grid order.
    QStringList order = fieldsByKey.keys();
    // Keys are taken in any case, as colIndex() finds them.
    const auto rank = [&g](const QString &key) {
        const QString found = g.colKey(g.colIndex(key));
        if (found == JournalColumns::key(JournalColumns::ShowName))
            return -2;
        if (found == JournalColumns::key(JournalColumns::AccName))
            return -1;
        return g.colIndex(key);
    };
    std::sort(order.begin(), order.end(), [&](const QString &a, const QString &b) { return rank(a) < rank(b); });
    EditCycle *cycle = g.editCycle();
    for (const QString &key : std::as_const(order)) {
        const int col = g.colIndex(key);
        const QString text = fieldsByKey.value(key);
        if (g.text(row, col) == text.trimmed())
            continue;
        // A refused text has been told to the user by its rule.
        if (!cycle->editCell(row, col, text) || !keep->alive())
            return false;
    }
    return true;
}

bool Journal::setColumnVisible(const QString &key, bool visible)
{
    if (!FieldChoice(d->book).setShown(key, visible))
        return false;
    if (visible)
        d->layout->fitColumns();
    Q_EMIT propertyChanged(QStringLiteral("FieldShow"));
    return true;
}

bool Journal::isColumnVisible(const QString &key) const
{
    const int col = d->grid->colIndex(key);
    return col >= d->grid->fixedCols() && !d->grid->isColHidden(col);
}

bool Journal::setColumnWidth(const QString &key, int width)
{
    const int col = d->grid->colIndex(key);
    if (col < d->grid->fixedCols() || width <= 0 || width > 4000)
        return false;
    // The same path as a drag in the view: the grid's width, then the
    // user's choice kept for the property bag.
    d->grid->setColWidth(col, width);
    FieldChoice(d->book).rememberWidth(col, width);
    Q_EMIT propertyChanged(QStringLiteral("ColumnWidths"));
    return true;
}

int Journal::columnWidth(const QString &key) const
{
    const int col = d->grid->colIndex(key);
    return col < d->grid->fixedCols() ? -1 : d->grid->colWidth(col);
}

} // namespace kx
