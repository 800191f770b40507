#include "ledger/ConflictCheck.h"

#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/StoredForms.h"
#include "ledger/StoredRecords.h"

namespace kx {

Result<QList<int>> ConflictCheck::changedElsewhere(const QList<int> &keys, int docId, QList<int> *gone) const
{
    QSet<int> remembered;
    for (int key : keys)
        if (key > 0 && m_stored.knows(key))
            remembered.insert(key);
    QList<int> changed;
    // Most of a book is read faster whole, in one statement, than key by key;
    // what is not found there (moved to another book since) is read by key.
    if (remembered.size() > WholeBookFrom) {
        const Result<void> read = compare(sqlDialect(m_db).recordsOfBook(docId), remembered, changed);
        if (!read.ok())
            return Error(read.error());
    }
    const QList<int> left(remembered.cbegin(), remembered.cend());
    // A few hundred keys a statement keeps every engine's limits far off.
    constexpr int Chunk = 500;
    for (int from = 0; from < left.size(); from += Chunk) {
        const Result<void> read = compare(sqlDialect(m_db).storedRecords(left.mid(from, Chunk)), remembered, changed);
        if (!read.ok())
            return Error(read.error());
    }
    // What no read found is no longer stored.
    if (gone)
        *gone = QList<int>(remembered.cbegin(), remembered.cend());
    return changed;
}

Result<void> ConflictCheck::readStored(const Database &db, const SqlStatement &statement, const StoredVisit &visit)
{
    // Read into a grid of their own, so the fingerprints come from cells typed
    // as a load types them. Only the stored fields count, so the records are
    // read from their table alone, without a load's joins and labels.
    Sheet scratch;
    Result<FetchedRows> fetched = RecordFetcher::fetch(db, statement, BookLoader::amountFields(), 0, scratch.fixedCols());
    if (!fetched.ok())
        return Error(fetched.error());
    const QStringList names = fetched.value().fieldNames;
    scratch.loadArray(std::move(fetched.value().cells), scratch.fixedRows(), 0);
    // Some engines fold unquoted names to lower case.
    for (int i = 0; i < names.size(); ++i) {
        QString key = names.at(i);
        for (int c = 0; c < JournalColumns::Count; ++c)
            if (key.compare(JournalColumns::key(JournalColumns::Column(c)), Qt::CaseInsensitive) == 0)
                key = JournalColumns::key(JournalColumns::Column(c));
        scratch.setColKey(scratch.fixedCols() + i, key);
    }
    const JournalColumns columns(scratch);
    for (int r = scratch.fixedRows(); r < scratch.rows(); ++r) {
        StoredForms::readDate(scratch, columns, r);
        visit(BookRow(scratch, columns, r));
    }
    return {};
}

bool ConflictCheck::unchanged(const StoredRecords &stored, const BookRow &row)
{
    const int docId = int(row.number(JournalColumns::DocID));
    const int storedRow = int(row.number(JournalColumns::Row));
    // Whether the record was its book's first row decides only whether a
    // total row's amounts count; either reading will do.
    return stored.holds(row.recId(), StoredRecords::fingerprint(row, docId, storedRow, false)) ||
           stored.holds(row.recId(), StoredRecords::fingerprint(row, docId, storedRow, true));
}

Result<void> ConflictCheck::compare(const SqlStatement &statement, QSet<int> &keys, QList<int> &changed) const
{
    return readStored(m_db, statement, [&](const BookRow &row) {
        if (keys.remove(row.recId()) && !unchanged(m_stored, row))
            changed << row.recId();
    });
}

} // namespace kx
