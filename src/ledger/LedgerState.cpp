#include "ledger/LedgerState.h"

#include "kxjournal/GridModel.h"
#include "ledger/JournalColumns.h"

namespace kx {

int LedgerState::outlineColumn(const GridModel &grid) const
{
    return grid.colIndex(fields.outlineKey.isEmpty() ? JournalColumns::key(JournalColumns::JnlDate)
                                                     : fields.outlineKey);
}

} // namespace kx
