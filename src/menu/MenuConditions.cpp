#include "menu/MenuConditions.h"

#include "editing/EditContext.h"
#include "editing/EditGate.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"
#include "ledger/RecordGuard.h"
#include "voucher/VoucherLink.h"

#include <algorithm>

namespace kx {

MenuConditions::MenuConditions(const EditContext &ctx, const MenuFacts &facts) : m_ctx(ctx), m_facts(facts) {}

bool MenuConditions::changeable() const
{
    return m_ctx.state.mayModify() && !m_ctx.state.isConsolidated();
}

bool MenuConditions::hasRows() const
{
    return m_ctx.grid.rows() > m_ctx.grid.fixedRows();
}

bool MenuConditions::hasRecords() const
{
    const Sheet &g = m_ctx.grid;
    for (int r = g.fixedRows() + 1; r < g.rows(); ++r)
        if (BookRow::of(g, m_ctx.columns, r).isDated())
            return true;
    return false;
}

template <typename Test>
bool MenuConditions::anySelected(Test test) const
{
    const Sheet &g = m_ctx.grid;
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    g.selection(r1, c1, r2, c2);
    r1 = std::max(r1, g.fixedRows());
    r2 = std::min(r2, g.rows() - 1);
    // Stops at the first row that passes: a whole book selected costs one
    // row when its first row passes.
    for (int r = r1; r <= r2; ++r)
        if (test(r))
            return true;
    return false;
}

bool MenuConditions::selectionEditable() const
{
    return changeable() && anySelected([this](int r) { return EditGate::canEditRow(m_ctx, r); });
}

bool MenuConditions::currentEditable() const
{
    return EditGate::canEditRow(m_ctx, m_ctx.grid.row());
}

bool MenuConditions::selectionLinkable() const
{
    const int relative = m_ctx.state.book.relativeAccId;
    return anySelected([this, relative](int r) {
        return VoucherLink::isCandidate(BookRow::of(m_ctx.grid, m_ctx.columns, r), relative);
    });
}

bool MenuConditions::selectionLinked() const
{
    return anySelected([this](int r) {
        const BookRow line = BookRow::of(m_ctx.grid, m_ctx.columns, r);
        return !line.isSummary() && line.tag() >= 0 && line.dirId() > 0;
    });
}

bool MenuConditions::holds(CommandCondition condition) const
{
    using C = CommandCondition;
    const Sheet &g = m_ctx.grid;
    const LedgerState &state = m_ctx.state;
    const int row = g.row();
    switch (condition) {
    case C::Always:
        return true;
    case C::CanUndo:
        return m_facts.canUndo;
    case C::CanRedo:
        return m_facts.canRedo;
    case C::HasRows:
        return hasRows();
    case C::HasRecords:
        return hasRecords();
    case C::OneBookRecords:
        return !state.isConsolidated() && hasRecords();
    case C::SelectionEditable:
        return selectionEditable();
    case C::PasteTarget:
        return m_facts.clipboardHasText && changeable() && currentEditable();
    // The opening row is never inserted above, deleted or renumbered; nor
    // are records of a closed period or on vouchers (RecordGuard).
    case C::InsertionOpen:
        return changeable() && selectionBelowOpening() && insertionOpen();
    case C::SelectionDeletable:
        return changeable() && selectionBelowOpening() && selectionDeletable();
    case C::SelectionRenumberable:
        return changeable() && hasRows() && selectionRenumberable();
    case C::ChangeableRecords:
        return changeable() && hasRecords();
    case C::Dirty:
        return state.dirty && state.mayModify();
    case C::DatedCurrentRow:
        return changeable() && row > g.fixedRows() && g.isDataRow(row) && BookRow::of(g, m_ctx.columns, row).isDated();
    case C::SummaryCurrentRow:
        return changeable() && row > g.fixedRows() && g.isDataRow(row) &&
               BookRow::of(g, m_ctx.columns, row).isSummary();
    case C::VoucherToLookAt:
        // Looks at the row's voucher, or makes one when the row has none.
        if (g.isDataRow(row) && BookRow::of(g, m_ctx.columns, row).dirId() > 0)
            return true;
        return !state.isConsolidated() && selectionLinkable();
    case C::SelectionLinkable:
        return state.mayModify() && selectionLinkable();
    case C::SelectionLinked:
        return state.mayModify() && selectionLinked();
    case C::VoucherToMake:
        return !state.isConsolidated() && selectionLinkable();
    case C::BookChosen:
        return state.book.docId >= 1;
    case C::ChangeableBook:
        return changeable() && state.book.docId >= 1;
    case C::Connected:
        return m_facts.connected;
    }
    return true;
}

bool MenuConditions::insertionOpen() const
{
    const Sheet &g = m_ctx.grid;
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    g.selection(r1, c1, r2, c2);
    // Rows open above the selection, below the opening row.
    return !RecordGuard(m_ctx.book).closesAt(std::max(r1, g.fixedRows() + 1));
}

bool MenuConditions::selectionDeletable() const
{
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    m_ctx.grid.selection(r1, c1, r2, c2);
    const RecordGuard guard(m_ctx.book);
    return anySelected([&](int r) { return guard.deletes(r, r1, r2); });
}

bool MenuConditions::selectionRenumberable() const
{
    const RecordGuard guard(m_ctx.book);
    return anySelected([&](int r) { return !m_ctx.grid.isSubtotal(r) && !guard.keeps(r); });
}

bool MenuConditions::selectionBelowOpening() const
{
    const Sheet &g = m_ctx.grid;
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    g.selection(r1, c1, r2, c2);
    return g.isDataRow(r2) && r2 > g.fixedRows();
}

} // namespace kx
