#include "ledger/Book.h"

#include "grid/Sheet.h"
#include "ledger/LedgerHost.h"

namespace kx {

Book::Book(LedgerHost &host, ContextSource context)
    : m_sheet(std::make_unique<Sheet>()), m_host(&host), m_context(std::move(context))
{
}

Book::Book() : Book(LedgerHost::none()) {}

Book::~Book() = default;

int Book::rows() const
{
    return m_sheet->rows();
}

quint64 Book::balanceColumns() const
{
    const JournalColumns at = columns();
    quint64 key = quint64(m_state.outlineColumn(*m_sheet) + 1);
    for (JournalColumns::Column c : {JournalColumns::Debit, JournalColumns::Credit, JournalColumns::Forex, JournalColumns::Tag})
        key = key * 1024 + quint64(at[c] + 1);
    return key;
}

void Book::noteBalancePeak(__int128 peak)
{
    m_balancePeak = peak;
    m_peakRevision = m_sheet->valueRevision();
    m_peakColumns = balanceColumns();
    m_peakKnown = true;
}

bool Book::balancePeak(__int128 &peak) const
{
    if (!m_peakKnown || m_peakRevision != m_sheet->valueRevision() || m_peakColumns != balanceColumns())
        return false;
    peak = m_balancePeak;
    return true;
}

} // namespace kx
