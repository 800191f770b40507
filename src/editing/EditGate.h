#pragma once

#include <QString>

namespace kx {

struct EditContext;

/// Which cells open for editing, and which keys an editor takes.
///
/// A row may be changed when the book is not shown consolidated, changes
/// are allowed, and the row is neither a summary row, nor in a closed
/// period, nor linked to a voucher, nor holding values the control cannot
/// store. On other rows only the voucher and account pickers open, and
/// only for stored records.
class EditGate
{
public:
    /// True when the records of \a row may be changed.
    static bool canEditRow(const EditContext &ctx, int row);
    /// True when (\a row, \a col) may open; \a comboList gets its editor kind.
    static bool mayOpen(const EditContext &ctx, int row, int col, QString &comboList);
    /// True when \a col takes only the characters of numbers and formulas.
    static bool isNumericColumn(const EditContext &ctx, int col);
    /// The key code to use for \a key typed into an editor of \a col (0: swallowed).
    static int filterKey(const EditContext &ctx, int col, int key);
    /// \a text with each tab and line break (CR LF counted once) turned into a
    /// blank and the other characters 0 to 31 left out.
    static QString stripControlChars(const QString &text);
};

} // namespace kx
