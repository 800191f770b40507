#pragma once

#include "ledger/Book.h"
#include "kxjournal/Result.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace kx {

class Database;
class Sheet;
class LedgerHost;
struct LedgerState;

/// Brings records that somebody else stored since this control read them
/// up to date, field by field, before a save writes them.
///
/// Each entered field is judged against the value it had when the book was
/// read: a field only the other side changed takes the stored value; one
/// only this side changed keeps the grid's; balances and directions are
/// worked out again, never judged. Only a field both sides changed, to
/// different values, is asked about, together with records one side deleted
/// and the other changed: one question, "是" keeping this user's values and
/// "否" taking the stored ones. Afterwards every record merged is known as
/// stored now, so the next pass writes over nothing it has not merged.
class ConflictMerge
{
public:
    /// Works on \a book, asking through its host.
    explicit ConflictMerge(Book &book);

    /// Merges the records \a rows names (key → grid row; -1 for a record
    /// this user removed) with what \a db holds for them now in book \a docId.
    Result<void> merge(const Database &db, const QHash<int, int> &rows, int docId);
    /// True when the grid took values or records from the database that it
    /// cannot show whole (names, labels): the book is best read again once stored.
    bool tookStored() const { return m_tookStored; }

private:
    struct Stored;
    struct Clash;

    QString question(const QStringList &lines, int total) const;
    QString describe(int row) const;
    void removeRows(QList<int> rows, QStringList &said);

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    bool m_tookStored = false;
};

} // namespace kx
