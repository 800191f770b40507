#include "editing/AccountLookup.h"

#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "data/SqlDialect.h"
#include "kxjournal/Database.h"

namespace kx {

namespace {

/// The rows of \a statement, or none when it fails.
FetchedRows rowsOf(const Database &db, const SqlStatement &statement)
{
    Result<FetchedRows> r = RecordFetcher::fetch(db, statement, {});
    return r.ok() ? r.takeValue() : FetchedRows();
}

int fieldIndex(const FetchedRows &rows, const char *name)
{
    for (int i = 0; i < rows.fieldNames.size(); ++i)
        if (rows.fieldNames.at(i).compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

AccountLookup::Account firstAccount(const Database &db, const SqlStatement &statement)
{
    const FetchedRows rows = rowsOf(db, statement);
    const int id = fieldIndex(rows, "AccID");
    if (rows.cells.rows() == 0 || id < 0)
        return {};
    const int code = fieldIndex(rows, "AccCode");
    const int name = fieldIndex(rows, "AccName");
    AccountLookup::Account a;
    a.id = rows.cells.text(0, id).toInt();
    a.code = code < 0 ? QString() : rows.cells.text(0, code);
    a.name = name < 0 ? QString() : rows.cells.text(0, name);
    return a;
}

} // namespace

AccountLookup::AccountLookup(const Database &db) : m_db(db) {}

int AccountLookup::findAccId(const QString &text) const
{
    const QString t = text.trimmed();
    if (t.isEmpty() || !m_db.isOpen())
        return 0;
    const SqlDialect &d = sqlDialect(m_db);
    // Codes first: a text that is one account's code and another's name
    // means the code.
    for (const SqlStatement &st : {d.accountIdByCode(t), d.accountIdByName(t), d.accountIdByEnterCode(t)}) {
        const Result<QVariant> id = sqlScalar(m_db, st);
        if (id.ok() && id.value().isValid() && !id.value().isNull())
            return id.value().toInt();
    }
    return 0;
}

int AccountLookup::findByPath(const QString &path) const
{
    QString text = path.trimmed();
    if (text.isEmpty() || !m_db.isOpen())
        return 0;
    for (QChar sep : {QLatin1Char('_'), QLatin1Char('\\'), QLatin1Char('/')})
        text.replace(sep, QLatin1Char('.'));
    const SqlDialect &d = sqlDialect(m_db);
    QString prefix;
    qsizetype dot;
    while ((dot = text.indexOf(QLatin1Char('.'))) >= 0) {
        const QString part = text.left(dot).trimmed();
        text = text.mid(dot + 1);
        if (part.isEmpty())
            continue;
        // Each level is looked for among the accounts below the level before.
        const Account level = firstAccount(m_db, d.accountByNameUnder(part, prefix));
        if (level.isValid())
            prefix = level.code;
    }
    text = text.trimmed();
    if (text.isEmpty())
        return 0;
    if (!prefix.isEmpty()) {
        const Account under = firstAccount(m_db, d.accountByNameUnder(text, prefix));
        if (under.isValid())
            return under.id;
    }
    return firstAccount(m_db, d.accountByAnyName(text)).id;
}

AccountLookup::Account AccountLookup::byId(int id) const
{
    if (id == 0 || !m_db.isOpen())
        return {};
    return firstAccount(m_db, sqlDialect(m_db).accountById(id));
}

AccountLookup::Account AccountLookup::byCode(const QString &code) const
{
    if (code.isEmpty() || !m_db.isOpen())
        return {};
    return firstAccount(m_db, sqlDialect(m_db).accountByCode(code));
}

bool AccountLookup::isLedgerLabel(const QString &text)
{
    return text == u"本月结余" || text == u"期初余额" || text.endsWith(u"小结");
}

QString AccountLookup::bookExplains(int docId) const
{
    if (!m_db.isOpen())
        return {};
    const FetchedRows rows = rowsOf(m_db, sqlDialect(m_db).bookExplains(docId));
    QString list;
    QStringList seen;
    for (int r = 0; r < rows.cells.rows(); ++r) {
        const QString t = rows.cells.text(r, 0).trimmed();
        if (t.isEmpty() || isLedgerLabel(t) || seen.contains(t))
            continue;
        seen << t;
        list += QLatin1Char('|') + t;
    }
    return list;
}

QString AccountLookup::recentExplains() const
{
    if (!m_db.isOpen())
        return {};
    const FetchedRows rows = rowsOf(m_db, sqlDialect(m_db).recentExplains());
    QString list;
    for (int r = 0; r < rows.cells.rows(); ++r) {
        const QString t = rows.cells.text(r, 0).trimmed();
        if (!t.isEmpty())
            list += QLatin1Char('|') + t;
    }
    return list;
}

} // namespace kx
