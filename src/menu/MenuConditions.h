#pragma once

#include "ledger/CommandRegistry.h"

namespace kx {

struct EditContext;

/// What the menu needs to know beyond the grid and the ledger state.
struct MenuFacts {
    bool clipboardHasText = false;  ///< something a paste would enter
    bool canUndo = false;
    bool canRedo = false;
    bool connected = false;  ///< a context whose database is open
};

/// Decides which context-menu items can run now, from the current row, the
/// selected block and the book's state: the same tests the operations
/// themselves apply, so an item is enabled exactly when choosing it would do
/// something. It reads the grid once per question and keeps nothing, so a
/// menu asks it afresh every time it shows.
class MenuConditions
{
public:
    /// Conditions on the grid and state of \a ctx, with \a facts from outside.
    MenuConditions(const EditContext &ctx, const MenuFacts &facts);

    /// True when \a condition, a command's condition in the command
    /// table, holds now.
    bool holds(CommandCondition condition) const;

    /// True when the book can be changed at all: changes allowed, a book
    /// chosen, not shown consolidated.
    bool changeable() const;
    /// True when the grid holds at least one row below the header.
    bool hasRows() const;
    /// True when some row below the opening balance holds a dated record:
    /// a book of its opening balance alone has nothing to close, check or count.
    bool hasRecords() const;
    /// True when some row of the selected block takes edits.
    bool selectionEditable() const;
    /// True when the current row takes edits.
    bool currentEditable() const;
    /// True when some row of the selected block could be linked to a voucher.
    bool selectionLinkable() const;
    /// True when some row of the selected block is linked to a voucher.
    bool selectionLinked() const;

    /// True when the selected block reaches below the opening row.
    bool selectionBelowOpening() const;
    /// True when rows opened above the selection would not land among the
    /// records of a closed period.
    bool insertionOpen() const;
    /// True when a deletion of the selected block would take some row.
    bool selectionDeletable() const;
    /// True when renumbering would number some row of the selected block.
    bool selectionRenumberable() const;

private:
    template <typename Test>
    bool anySelected(Test test) const;

    const EditContext &m_ctx;
    MenuFacts m_facts;
};

} // namespace kx
