#include "ledger/ConflictCheck.h"

#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/RecordPrints.h"
#include "ledger/StoredForms.h"
#include "ledger/StoredRecords.h"

namespace kx {

Result<QList<int>> ConflictCheck::changedElsewhere(const std::vector<int> &keys, int docId, QList<int> *gone,
                                                   RecordPrints *rests, bool *allCurrent) const
{
    if (allCurrent)
        *allCurrent = false;
    // The keys still to be found, in a flat table: a million of them cost
    // two arrays, not a node each.
    RecordPrints remembered;
    remembered.reserve(int(keys.size()));
    for (int key : keys)
        if (key > 0 && m_stored.knows(key))
            remembered.insert(key, 0);
    QList<int> changed;
    // Most of a book is read faster whole, in one statement, than key by key;
    // what is not found there (moved to another book since) is read by key.
    if (remembered.size() > WholeBookFrom) {
        int matched = 0;
        const Result<void> read =
            compare(sqlDialect(m_db).recordsOfBook(docId), remembered, changed, rests, allCurrent ? &matched : nullptr);
        if (!read.ok())
            return Error(read.error());
        if (allCurrent)
            *allCurrent = changed.isEmpty() && matched == m_stored.count();
    }
    std::vector<int> left;
    for (int key : remembered.keys()) {
        quint64 seen = 0;
        if (remembered.find(key, seen) && seen == 0)
            left.push_back(key);
    }
    // A few hundred keys a statement keeps every engine's limits far off.
    constexpr std::size_t Chunk = 500;
    for (std::size_t from = 0; from < left.size(); from += Chunk) {
        const QList<int> chunk(left.begin() + qsizetype(from), left.begin() + qsizetype(std::min(left.size(), from + Chunk)));
        const Result<void> read = compare(sqlDialect(m_db).storedRecords(chunk), remembered, changed, rests);
        if (!read.ok())
            return Error(read.error());
    }
    // What no read found is no longer stored.
    if (gone) {
        gone->clear();
        for (int key : left) {
            quint64 seen = 0;
            if (remembered.find(key, seen) && seen == 0)
                *gone << key;
        }
    }
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

Result<void> ConflictCheck::compare(const SqlStatement &statement, RecordPrints &keys, QList<int> &changed,
                                    RecordPrints *rests, int *matched) const
{
    return readStored(m_db, statement, [&](const BookRow &row) {
        // A key found is marked 1 rather than removed: removing one of a
        // run of consecutive keys would shift the rest of the run back.
        quint64 seen = 1;
        if (!keys.find(row.recId(), seen) || seen != 0) {
            if (matched && m_stored.knows(row.recId()) && unchanged(m_stored, row))
                ++*matched;
            return;
        }
        if (matched && unchanged(m_stored, row))
            ++*matched;
        keys.insert(row.recId(), 1);
        if (!unchanged(m_stored, row)) {
            changed << row.recId();
        } else if (rests) {
            quint64 rest = 0;
            StoredRecords::fingerprint(row, int(row.number(JournalColumns::DocID)), int(row.number(JournalColumns::Row)),
                                       false, &rest);
            if (rest != 0)
                rests->insert(row.recId(), rest);
        }
    });
}

} // namespace kx
