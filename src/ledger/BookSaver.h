#pragma once

#include "ledger/Book.h"
#include "kxjournal/Result.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QSet>
#include <QString>
#include <vector>

namespace kx {

class AccContext;
class BookRow;
class JournalColumns;
class Database;
class RecordPrints;
class Sheet;
class LedgerHost;
struct LedgerState;

/// Stores the grid's records: deletes the rows taken out since the last
/// save, writes the dated rows that differ from what the database holds
/// (updated in place, or added with its new key brought back into the grid),
/// all in one transaction. A pass that fails leaves the database as it was,
/// the grid's keys unchanged, the removed rows still waiting and the grid
/// still dirty. A record somebody else changed since this control read it is
/// merged field by field first (ConflictMerge); the book is read again after
/// a save that took values from the database.
class BookSaver
{
public:
    /// Works on \a book, writing through its context (a save without a
    /// context fails) and reporting to its host.
    explicit BookSaver(Book &book);

    /// The whole save: refuses a consolidated journal, asks the host, writes
    /// when dirty, then notifies the context (\a instance tells this control
    /// from others) and reports "已存储“\a caption”的记录;".
    bool save(const QString &caption, int instance);
    /// True when the save took values other users stored and read the book again.
    bool reloaded() const { return m_reloaded; }

    /// A row a pass writes, and what its record will be known by once stored.
    /// How often a pass starts over when the host keeps changing the grid
    /// while it reports.
    static constexpr int MaxPlans = 3;
    struct Pending {
        int gridRow;
        int recId;
        quint64 print;
        bool atPlace;         ///< stored with this Row and DocID already
        quint64 rest;         ///< its print without the balances (0: none)
        bool balancesOnly;    ///< its balances alone differ from what is stored
    };

private:
    static constexpr int MergeRounds = 20;
    /// Writes the pass. Fails with m_conflicts filled when records it would
    /// write or delete were changed or deleted elsewhere since they were read.
    Result<void> writeRecords();
    /// Fails with m_conflicts filled when records were changed elsewhere;
    /// \a rests gets the print without balances of each record found unchanged.
    /// \a allCurrent tells whether every record remembered was found as remembered.
    Result<void> checkConflicts(const Database &db, const std::vector<Pending> &pending, RecordPrints &rests,
                                bool &allCurrent);
    /// Whether \a row holds anything a user enters into a record.
    static bool holdsRecord(const BookRow &row);
    /// The refusal naming rows that hold a record but no date.
    static QString undatedRows(const QList<int> &rows);
    /// What is wrong with the first amount a save would store for \a row
    /// ("" when nothing): past the money range, or a text that is no amount.
    QString badAmount(const JournalColumns &columns, const BookRow &row) const;
    bool anyDatedAfter(int row) const;
    /// Whether the database can be reached (opened again when it dropped).
    Result<void> reachDatabase();

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    QPointer<AccContext> m_acc;  ///< the host may delete it inside any call to the host
    QHash<int, int> m_conflicts;        // keys changed elsewhere → grid row (-1: removed here)
    bool m_readAgain = false;           // the grid took stored values: read the book again once stored
    bool m_reloaded = false;
    QList<int> m_notStored;             // rows edited that hold values this control cannot store
};

} // namespace kx
