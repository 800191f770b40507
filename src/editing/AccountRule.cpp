#include "editing/AccountRule.h"

#include "editing/AccountLookup.h"
#include "editing/EditContext.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerHost.h"

#include <algorithm>

namespace kx {

bool AccountRule::handles(JournalColumns::Column column) const
{
    return column == JournalColumns::AccName;
}

QString AccountRule::comboList(EditContext &, int, int) const
{
    return QStringLiteral("|...");
}

int AccountRule::resolve(EditContext &ctx, const QString &text)
{
    if (ctx.batch) {
        const auto known = ctx.accountIds.constFind(text);
        if (known != ctx.accountIds.constEnd())
            return known.value();
        const int id = find(ctx, text);
        ctx.accountIds.insert(text, id);
        return id;
    }
    return find(ctx, text);
}

int AccountRule::find(EditContext &ctx, const QString &text)
{
    const Database *db = ctx.db();
    if (!db || text.trimmed().isEmpty())
        return 0;
    const AccountLookup lookup(*db);
    if (const int id = lookup.findAccId(text))
        return id;
    static const QString separators = QStringLiteral("/\\_.");
    if (std::any_of(text.begin(), text.end(), [](QChar c) { return separators.contains(c); }))
        if (const int id = lookup.findByPath(text))
            return id;
    // Enter takes the best match, as the picker would show it first.
    const AccountChart &chart = ctx.chart();
    const QList<int> hits = chart.match(text);
    return hits.isEmpty() ? 0 : chart.accounts().at(hits.first()).id;
}

bool AccountRule::validate(EditContext &ctx, int row, int, QString &text)
{
    const int id = resolve(ctx, text);
    BookRow(ctx.grid, ctx.columns, row).setText(JournalColumns::AccID, QString::number(id));
    return id != 0;
}

void AccountRule::fillRow(EditContext &ctx, int row, int accId, const QString &code)
{
    const Database *db = ctx.db();
    if (!db)
        return;
    const AccountLookup lookup(*db);
    AccountLookup::Account account;
    if (ctx.batch && accId != 0 && ctx.accountsById.contains(accId)) {
        account = ctx.accountsById.value(accId);
    } else {
        account = accId != 0 ? lookup.byId(accId) : lookup.byCode(code);
        if (ctx.batch && accId != 0)
            ctx.accountsById.insert(accId, account);
    }
    if (!account.isValid())
        return;
    const BookRow line(ctx.grid, ctx.columns, row);
    line.setText(JournalColumns::AccName, account.name);
    line.setText(JournalColumns::AccCode, account.code);
    line.setText(JournalColumns::AccID, QString::number(account.id));
    ctx.host.cancels(QStringLiteral("AccNameChanged"));
}

void AccountRule::afterEdit(EditContext &ctx, int row, int)
{
    fillRow(ctx, row, BookRow::of(ctx.grid, ctx.columns, row).accId(), QString());
}

} // namespace kx
