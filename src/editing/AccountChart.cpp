#include "editing/AccountChart.h"

#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "data/SqlDialect.h"
#include "editing/PinyinInitials.h"
#include "kxjournal/Database.h"

#include <algorithm>

namespace kx {

bool AccountChart::read(const Database &db, int docId)
{
    if (!db.isOpen())
        return false;
    Result<FetchedRows> chart = RecordFetcher::fetch(db, sqlDialect(db).chartOfAccounts(), {});
    if (!chart.ok())
        return false;
    const FetchedRows rows = chart.takeValue();
    QHash<int, int> uses;
    if (docId > 0) {
        Result<FetchedRows> counted = RecordFetcher::fetch(db, sqlDialect(db).accountUse(docId), {});
        if (counted.ok()) {
            const FetchedRows c = counted.takeValue();
            for (int r = 0; r < c.cells.rows(); ++r)
                uses.insert(c.cells.text(r, 0).toInt(), c.cells.text(r, 1).toInt());
        }
    }
    QList<Account> accounts;
    accounts.reserve(rows.cells.rows());
    for (int r = 0; r < rows.cells.rows(); ++r) {
        Account a;
        a.id = rows.cells.text(r, 0).toInt();
        a.code = rows.cells.text(r, 1);
        a.name = rows.cells.text(r, 2);
        a.enterCode = rows.cells.text(r, 3);
        a.uses = uses.value(a.id);
        if (a.id != 0)
            accounts.push_back(std::move(a));
    }
    setAccounts(std::move(accounts));
    return true;
}

void AccountChart::setAccounts(QList<Account> accounts)
{
    m_accounts = std::move(accounts);
    m_byId.clear();
    for (int i = 0; i < m_accounts.size(); ++i) {
        Account &a = m_accounts[i];
        a.initials = PinyinInitials::masksOf(a.name);
        m_byId.insert(a.id, i);
    }
}

const AccountChart::Account *AccountChart::byId(int id) const
{
    const auto it = m_byId.constFind(id);
    return it == m_byId.constEnd() ? nullptr : &m_accounts.at(*it);
}

int AccountChart::score(const Account &a, const QString &text) const
{
    // Higher is better; 0 is no match. Exact matches first, then prefixes,
    // then matches inside the name.
    if (a.code == text || a.name == text || (!a.enterCode.isEmpty() && a.enterCode.compare(text, Qt::CaseInsensitive) == 0))
        return 100;
    if (a.code.startsWith(text))
        return 80 - std::min(int(a.code.size() - text.size()), 19);
    if (!a.enterCode.isEmpty() && a.enterCode.startsWith(text, Qt::CaseInsensitive))
        return 60;
    const int at = PinyinInitials::find(a.initials, text);
    if (at == 0)
        return 55;
    if (a.name.startsWith(text))
        return 50;
    if (a.name.contains(text, Qt::CaseInsensitive))
        return 40;
    if (at > 0)
        return 30;
    return 0;
}

QList<int> AccountChart::match(const QString &typed) const
{
    const QString text = typed.trimmed();
    QList<std::pair<int, int>> hits;  // score, index
    for (int i = 0; i < m_accounts.size(); ++i) {
        const int s = text.isEmpty() ? 1 : score(m_accounts.at(i), text);
        if (s > 0)
            hits.push_back({s, i});
    }
    std::stable_sort(hits.begin(), hits.end(), [this](const auto &x, const auto &y) {
        if (x.first != y.first)
            return x.first > y.first;
        return m_accounts.at(x.second).uses > m_accounts.at(y.second).uses;
    });
    QList<int> out;
    out.reserve(hits.size());
    for (const auto &h : hits)
        out.push_back(h.second);
    return out;
}

} // namespace kx
