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

} // namespace kx
