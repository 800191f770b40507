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

void Book::noteBalancePeak(__int128 peak)
{
    m_balancePeak = peak;
    m_peakRevision = m_sheet->valueRevision();
    m_peakKnown = true;
}

bool Book::balancePeak(__int128 &peak) const
{
    if (!m_peakKnown || m_peakRevision != m_sheet->valueRevision())
        return false;
    peak = m_balancePeak;
    return true;
}

} // namespace kx
