#pragma once

namespace kx {

class JournalPrivate;

/// The control's row work that is not a plain ledger operation: dragging
/// rows, the clipboard, emptying cells. Each change is one undo step.
class RowController
{
public:
    /// The row work of the control whose state is \a d.
    explicit RowController(JournalPrivate &d) : d(d) {}

    /// Lets rows be dragged to another place.
    void setUp();
    /// Puts the selected block on the clipboard; \a cut empties it too.
    void copyToClipboard(bool cut);
    /// Pastes the clipboard's text at the cursor.
    void pasteFromClipboard();
    /// Asks, then empties the selected cells.
    bool clearCells();

private:
    JournalPrivate &d;
};

} // namespace kx
