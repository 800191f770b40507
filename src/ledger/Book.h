#pragma once

#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"

#include <functional>
#include <memory>

namespace kx {

class AccContext;
class LedgerHost;
class Sheet;

/// One journal book as the ledger works on it: its records, held in the
/// typed columns of the sheet it owns (days, fixed-point amounts, ids,
/// pooled texts, the derived balances and directions); what the ledger
/// knows beyond them (the definition, the summary rows, the removed keys,
/// the prints of what was loaded: LedgerState); where it reports
/// (LedgerHost); and the accounting context it is read from and stored to.
///
/// Every load, save, balance pass, edit rule, row operation, voucher link
/// and output takes a Book. The sheet is also the model views show: a
/// GridView draws it and sends what the user types back through the edit
/// pipeline, but keeps nothing of the book itself. A Book needs no widget
/// and no database: a test builds one, fills its sheet, and runs the rules.
class Book
{
public:
    /// Gives the context when an operation starts (nullptr: none, or its
    /// owner deleted it).
    using ContextSource = std::function<AccContext *()>;

    /// An empty book reporting to \a host (which must outlive it), with the
    /// context \a context gives.
    explicit Book(LedgerHost &host, ContextSource context = {});
    /// An empty book that reports to nobody and has no context.
    Book();
    ~Book();
    Book(const Book &) = delete;
    Book &operator=(const Book &) = delete;

    /// The records, and the model views show.
    Sheet &sheet() const { return *m_sheet; }
    /// What the ledger knows of the book beyond its records.
    LedgerState &state() { return m_state; }
    const LedgerState &state() const { return m_state; }
    /// Where operations on the book report.
    LedgerHost &host() const { return *m_host; }
    /// Operations started from now on report to \a host (which must outlive
    /// the book, or the next setHost()).
    void setHost(LedgerHost &host) { m_host = &host; }
    /// Operations started from now on take the context \a context gives.
    void setContext(ContextSource context) { m_context = std::move(context); }
    /// The accounting context, or nullptr.
    AccContext *context() const { return m_context ? m_context() : nullptr; }
    /// The source of the context, for what asks for it later (an edit session).
    const ContextSource &contextSource() const { return m_context; }
    /// Where the journal's columns sit on the sheet now (the user may move them).
    JournalColumns columns() const { return JournalColumns(*m_sheet); }
    /// The grid rows, the header row included.
    int rows() const;

    /// Notes \a peak as the largest magnitude any running balance or
    /// foreign balance of the book reaches now (beyond every amount when one
    /// overflowed), as a whole pass over the rows found it.
    void noteBalancePeak(__int128 peak);
    /// The peak noted last, while no value of the sheet has changed since
    /// (a write through the grid a host holds counts too) and the balances
    /// are read from the same columns (the host may name another column
    /// the one that makes a row a record); false when unknown.
    bool balancePeak(__int128 &peak) const;

private:
    /// The columns balances are read from, as one number.
    quint64 balanceColumns() const;

    std::unique_ptr<Sheet> m_sheet;
    LedgerState m_state;
    LedgerHost *m_host;
    ContextSource m_context;
    __int128 m_balancePeak = 0;
    quint64 m_peakRevision = 0;
    quint64 m_peakColumns = 0;
    bool m_peakKnown = false;
};

} // namespace kx
