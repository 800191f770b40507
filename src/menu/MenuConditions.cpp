#include "menu/MenuConditions.h"

#include "editing/EditContext.h"
#include "editing/EditGate.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"
#include "ledger/RecordGuard.h"
#include "voucher/VoucherLink.h"

#include <QHash>
#include <algorithm>
#include <functional>

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

bool MenuConditions::allows(const QString &item) const
{
    using Test = std::function<bool(const MenuConditions &)>;
    static const QHash<QString, Test> tests = {
        {QStringLiteral("mnuUndo"), [](const MenuConditions &m) { return m.m_facts.canUndo; }},
        {QStringLiteral("mnuRedo"), [](const MenuConditions &m) { return m.m_facts.canRedo; }},
        {QStringLiteral("mnuCopy"), [](const MenuConditions &m) { return m.hasRows(); }},
        {QStringLiteral("mnuCut"), [](const MenuConditions &m) { return m.selectionEditable(); }},
        {QStringLiteral("mnuClear"), [](const MenuConditions &m) { return m.selectionEditable(); }},
        {QStringLiteral("mnuPaste"),
         [](const MenuConditions &m) { return m.m_facts.clipboardHasText && m.changeable() && m.currentEditable(); }},
        // The opening row is never inserted above, deleted or renumbered;
        // nor are records of a closed period or on vouchers (RecordGuard).
        {QStringLiteral("mnuInsertRows"),
         [](const MenuConditions &m) { return m.changeable() && m.selectionBelowOpening() && m.insertionOpen(); }},
        {QStringLiteral("mnuDeleteRows"),
         [](const MenuConditions &m) { return m.changeable() && m.selectionBelowOpening() && m.selectionDeletable(); }},
        {QStringLiteral("mnuRenumber"),
         [](const MenuConditions &m) { return m.changeable() && m.hasRows() && m.selectionRenumberable(); }},
        {QStringLiteral("mnuDelHistory"), [](const MenuConditions &m) { return m.changeable() && m.hasRecords(); }},
        {QStringLiteral("mnuSave"), [](const MenuConditions &m) { return m.m_ctx.state.dirty && m.m_ctx.state.mayModify(); }},
        {QStringLiteral("mnuInsSumRow"),
         [](const MenuConditions &m) {
             const int r = m.m_ctx.grid.row();
             return m.changeable() && r > m.m_ctx.grid.fixedRows() && m.m_ctx.grid.isDataRow(r) &&
                    BookRow::of(m.m_ctx.grid, m.m_ctx.columns, r).isDated();
         }},
        {QStringLiteral("mnuRemoveSumRow"),
         [](const MenuConditions &m) {
             const int r = m.m_ctx.grid.row();
             return m.changeable() && r > m.m_ctx.grid.fixedRows() && m.m_ctx.grid.isDataRow(r) &&
                    BookRow::of(m.m_ctx.grid, m.m_ctx.columns, r).isSummary();
         }},
        {QStringLiteral("mnuCloseBook"), [](const MenuConditions &m) { return m.changeable() && m.hasRecords(); }},
        {QStringLiteral("mnuCheckBook"), [](const MenuConditions &m) { return m.hasRecords(); }},
        {QStringLiteral("mnuRecalc"), [](const MenuConditions &m) { return m.hasRecords(); }},
        {QStringLiteral("mnuStatistics"), [](const MenuConditions &m) { return m.hasRecords(); }},
        {QStringLiteral("mnuAccDoc"),
         [](const MenuConditions &m) {
             // Looks at the row's voucher, or makes one when the row has none.
             const int r = m.m_ctx.grid.row();
             if (m.m_ctx.grid.isDataRow(r) && BookRow::of(m.m_ctx.grid, m.m_ctx.columns, r).dirId() > 0)
                 return true;
             return !m.m_ctx.state.isConsolidated() && m.selectionLinkable();
         }},
        {QStringLiteral("mnuDocSelect"),
         [](const MenuConditions &m) { return m.m_ctx.state.mayModify() && m.selectionLinkable(); }},
        {QStringLiteral("mnuRemoveDoc"),
         [](const MenuConditions &m) { return m.m_ctx.state.mayModify() && m.selectionLinked(); }},
        {QStringLiteral("mnuMakeDoc"),
         [](const MenuConditions &m) { return !m.m_ctx.state.isConsolidated() && m.selectionLinkable(); }},
        {QStringLiteral("mnuFind"), [](const MenuConditions &m) { return m.hasRows(); }},
        {QStringLiteral("mnuExport"), [](const MenuConditions &m) { return m.hasRows(); }},
        {QStringLiteral("mnuPrint"), [](const MenuConditions &m) { return m.hasRows(); }},
        {QStringLiteral("mnuRefresh"), [](const MenuConditions &m) { return m.m_ctx.state.book.docId >= 1; }},
    };
    const auto test = tests.constFind(item);
    return test == tests.constEnd() || (*test)(*this);
}

bool MenuConditions::insertionOpen() const
{
    const Sheet &g = m_ctx.grid;
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    g.selection(r1, c1, r2, c2);
    // Rows open above the selection, below the opening row.
    return !RecordGuard(g, m_ctx.state).closesAt(std::max(r1, g.fixedRows() + 1));
}

bool MenuConditions::selectionDeletable() const
{
    int r1 = 0, c1 = 0, r2 = 0, c2 = 0;
    m_ctx.grid.selection(r1, c1, r2, c2);
    const RecordGuard guard(m_ctx.grid, m_ctx.state);
    return anySelected([&](int r) { return guard.deletes(r, r1, r2); });
}

bool MenuConditions::selectionRenumberable() const
{
    const RecordGuard guard(m_ctx.grid, m_ctx.state);
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
