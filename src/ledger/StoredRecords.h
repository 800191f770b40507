#pragma once

#include <QStringList>

#include "data/RecordWriter.h"
#include "ledger/JournalColumns.h"
#include "ledger/RecordPrints.h"

#include <vector>

namespace kx {

class BookRow;

/// What the database holds for each record the grid shows, as a 64-bit
/// fingerprint of its stored fields. A save compares a row's values with it
/// and writes only the rows that differ; a row the control never changed is
/// never written, so another user's change to it stays.
class StoredRecords
{
public:
    /// The values a save writes for \a row of book \a docId, stored as row
    /// \a storedRow; \a opening: the book's first row (it always writes its amounts).
    static RecordValues recordOf(const BookRow &row, int docId, int storedRow, bool opening);
    /// Sets \a out to what recordOf() gives, reusing its storage.
    static void fill(const BookRow &row, int docId, int storedRow, bool opening, RecordValues &out);
    /// Takes NUL characters out of \a row's stored texts (an engine that
    /// cannot store them); gives the headers of the columns it changed.
    static QStringList dropNul(const BookRow &row);
    /// The fingerprint of the fields recordOf() would give for the same
    /// arguments, read straight off the cells (no text is made). \a rest,
    /// when given, is set to the print of those fields without the balances
    /// (0 when the row keeps its stored amounts: then none is made).
    static quint64 fingerprint(const BookRow &row, int docId, int storedRow, bool opening, quint64 *rest = nullptr);

    /// A field a user enters (balances, worked out by the control, are not).
    struct Entered {
        RecordField field;
        JournalColumns::Column column;
        FieldValue::Kind kind;
    };
    /// Every entered field, in stored order.
    static const std::vector<Entered> &entered();
    /// The grid columns of the entered fields.
    static QList<int> enteredColumns(const JournalColumns &columns);
    /// The value of an entered field of kind \a kind whose cell reads \a text,
    /// as recordOf() would store it (an amount by its first line).
    static FieldValue valueOf(FieldValue::Kind kind, const QString &text);
    /// Whether the value \a field stores for \a row is the one it had at
    /// the last load or save; a row that was not there then has none.
    static bool sameAsLoaded(const BookRow &row, const Entered &field);
    /// Whether a save writes \a field of \a row (a summary row keeps its
    /// stored amounts; \a opening: the book's first row, which writes them).
    static bool writes(const BookRow &row, const Entered &field, bool opening);

    /// Forgets everything (a new book is loaded).
    void clear()
    {
        m_prints.clear();
        m_stamped = false;
    }
    /// Remembers that the database holds a record with fingerprint \a print under key \a recId.
    void remember(int recId, quint64 print) { m_prints.insert(recId, print); }
    /// Remembers as above, with \a rest, the print of the record without
    /// its balances (see fingerprint()).
    void remember(int recId, quint64 print, quint64 rest)
    {
        m_prints.insert(recId, print);
        if (rest != 0)
            m_prints.setRest(recId, rest);
    }
    /// The print of record \a recId without its balances, as last stored
    /// by a save (0: unknown).
    quint64 rest(int recId) const { return m_prints.rest(recId); }
    /// Forgets record \a recId (it was deleted).
    void forget(int recId) { m_prints.remove(recId); }
    /// True when a fingerprint is remembered for record \a recId.
    bool knows(int recId) const
    {
        quint64 print = 0;
        return m_prints.find(recId, print);
    }
    /// True when the database held a record with fingerprint \a print under
    /// key \a recId when last read or written.
    bool holds(int recId, quint64 print) const;
    /// How many records are remembered.
    int count() const { return m_prints.size(); }
    /// Makes room for \a records records.
    void reserve(int records) { m_prints.reserve(records); }

    /// Notes that every fingerprint remembered is what the database held
    /// when it had change stamp \a stamp (taken inside the transaction that
    /// stored them).
    void setStamp(const ChangeStamp &stamp)
    {
        m_stamp = stamp;
        m_stamped = true;
    }
    /// True when the database, now at \a now, cannot have changed since the
    /// fingerprints were noted as current: then it still holds what they say.
    bool currentAt(const ChangeStamp &now) const { return m_stamped && m_stamp == now; }

private:
    RecordPrints m_prints;
    ChangeStamp m_stamp;
    bool m_stamped = false;
};

} // namespace kx
