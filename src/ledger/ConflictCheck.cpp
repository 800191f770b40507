#include "ledger/ConflictCheck.h"

#include "data/RecordFetcher.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridModel.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/StoredRecords.h"

namespace kx {

Result<QList<int>> ConflictCheck::changedElsewhere(const QList<int> &keys) const
{
    QList<int> remembered;
    for (int key : keys)
        if (key > 0 && m_stored.knows(key))
            remembered << key;
    QList<int> changed;
    // A few hundred keys a statement keeps every engine's limits far off.
    constexpr int Chunk = 500;
    for (int from = 0; from < remembered.size(); from += Chunk) {
        const QList<int> part = remembered.mid(from, Chunk);
        // Read into a grid of their own, so the fingerprints come from the
        // very cells a load would have made.
        GridModel scratch;
        Result<FetchedRows> fetched = RecordFetcher::fetch(m_db, m_db.dialect().storedRecords(part),
                                                           BookLoader::amountFields(), int(part.size()),
                                                           scratch.fixedCols());
        if (!fetched.ok())
            return Error(fetched.error());
        const QStringList names = fetched.value().fieldNames;
        scratch.loadArray(std::move(fetched.value().cells), scratch.fixedRows(), 0);
        for (int i = 0; i < names.size(); ++i)
            scratch.setColKey(scratch.fixedCols() + i, names.at(i));
        const JournalColumns columns(scratch);
        for (int r = scratch.fixedRows(); r < scratch.rows(); ++r) {
            const BookRow row(scratch, columns, r);
            const int docId = int(row.number(JournalColumns::DocID));
            const int storedRow = int(row.number(JournalColumns::Row));
            // Whether the record was its book's first row decides only
            // whether a total row's amounts count; either reading will do.
            if (!m_stored.holds(row.recId(), StoredRecords::fingerprint(row, docId, storedRow, false)) &&
                !m_stored.holds(row.recId(), StoredRecords::fingerprint(row, docId, storedRow, true)))
                changed << row.recId();
        }
    }
    return changed;
}

} // namespace kx
