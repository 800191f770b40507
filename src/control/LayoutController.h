#pragma once

#include <utility>
#include <vector>

#include "ledger/CommandRegistry.h"

class QMenu;

namespace kx {

class JournalPrivate;

/// The control's layout: frozen columns, the show-fields list, widths that
/// fit the figures, the looks the host set, and menu states kept current.
class LayoutController
{
public:
    /// The layout of the control whose state is \a d.
    explicit LayoutController(JournalPrivate &d) : d(d) {}

    /// Sets up the show-fields list, the widths, the looks and the menu's states.
    void setUp();
    /// True when \a condition holds now.
    bool menuAllows(CommandCondition condition) const;
    /// Brings the menu's enabled states up to date once events settle.
    void syncMenuSoon();
    /// Opens the show-fields list at the mouse.
    void openFieldMenu();
    /// Widens columns to what they show, and freezes the date and number.
    void fitColumns();
    /// Brings the looks the host set over to the grid's view.
    void applyLooks();
    /// Forgets the widgets, which went with the control.
    void forgetWidgets() { fieldMenu = nullptr; }

    QMenu *fieldMenu = nullptr;     ///< the show-fields list
    bool clipboardHasText = false;  ///< as the clipboard said when it last changed

private:
    JournalPrivate &d;
    bool m_menuSyncDue = false;
    /// Per grid column, the rows changed since the widths were last fitted
    /// ((-1, -1): none). Kept apart per column: one amount typed beside a
    /// pass over a whole balance column asks for one row of the amount's.
    std::vector<std::pair<int, int>> m_refitRows;
};

} // namespace kx
