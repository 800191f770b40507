#pragma once

#include "kxjournal/Result.h"

#include <QString>

namespace kx {

class EditRules;
struct EditContext;

/// Where a text entered into a cell comes from. The rules are the same for
/// every origin; only a picked date is not held to the typed-date bounds, and
/// a paste enters many cells at once (balances and the book's marks wait for
/// its end, the explanations typed are not remembered).
enum class EditOrigin { Typing, Picker, Paste };

/// The one way a text gets into a cell of the journal, whoever enters it:
/// the keyboard (through the edit cycle), a picker or the calculator, a
/// paste or a clear.
///
/// check() cleans the text (control characters out, blanks at either end
/// off), asks whether the row and the column take it, refuses an empty date
/// or account, and lets the column's rule check and rewrite it; a refusal
/// says why. Once the text is in the cell, complete() lets the rule complete
/// the row, marks the row changed and colours the cell; markBook() then keeps
/// one empty row at the bottom and marks the book dirty. enter() is the
/// three for one cell, for code that writes the cell itself.
class EditPipeline
{
public:
    /// Works with \a rules on what \a ctx holds.
    EditPipeline(EditContext &ctx, const EditRules &rules);

    /// True when column \a col takes entered texts at all.
    bool takesText(int col) const;
    /// Checks \a text for (\a row, \a col) and gives what the cell is to
    /// hold; the context's cellChanged tells whether that changes the cell.
    /// A refusal gives the reason; refusalBox() whether it is meant for a
    /// message box. The account check leaves the row's account id as it was.
    Result<QString> check(int row, int col, const QString &text, EditOrigin origin);
    /// Whether the last refusal of check() is meant for a message box.
    bool refusalBox() const { return m_box; }
    /// Completes the row after (\a row, \a col) took a changed text: the
    /// column's rule, the change mark, the changed colour.
    void complete(int row, int col, EditOrigin origin);
    /// The end of an edit or of a batch that changed cells: one empty row
    /// waits at the bottom and the book is dirty (marked twice, as hosts
    /// count on).
    void markBook();
    /// check(), the write and complete() for one cell. True when the cell
    /// changed; the book is not marked (see markBook()).
    Result<bool> enter(int row, int col, const QString &text, EditOrigin origin);

private:
    EditContext &m_ctx;
    const EditRules &m_rules;
    bool m_box = false;
};

} // namespace kx
