#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace kx {

class EditRules;
struct EditContext;

/// Pasting a tab-separated block into the grid, and clearing a block.
///
/// A paste starts at the cursor and fills the visible columns to its right,
/// row under row, adding rows at the bottom as needed. Every field goes
/// through the edit pipeline as typing it would (dates in any accepted form,
/// accounts by code, name, path or initials, amounts as formulas, an empty
/// field empties its cell); a cell refused keeps what it held and is named,
/// with the reason typing gives, in one message at the end. Columns that
/// take no typing (balances, keys) and the cells past a short line's end are
/// passed over; rows that may not change (closed, summary or linked to a
/// voucher) are never written. Balances are recalculated and the book
/// marked once, at the end.
/// A field that would fall on a column that takes no typing (other than the
/// worked-out balances and direction), or past the last column, means the
/// block was laid out for other columns: nothing is pasted and the message
/// names the field and the order of the columns.
class BlockPaste
{
public:
    /// Enters through the edit pipeline with \a rules on what \a ctx holds.
    BlockPaste(EditContext &ctx, const EditRules &rules);
    /// Reports the start of a long paste of \a text, before anything
    /// changes and before the change is recorded for undo: the report lets
    /// the user interface catch up, and what changes the grid then is the
    /// host's own. False, with a message, when the grid changed meanwhile or
    /// the control is gone: nothing is to be pasted then.
    bool begin(const QString &text);
    /// Pastes \a text at the cursor. True when a cell changed. Without
    /// begin() first, a long paste reports its start itself.
    bool paste(const QString &text);
    /// Empties the editable cells of the selected block (dates and accounts
    /// stay: a record needs both). True when a cell changed.
    bool clear();
    /// The cells refused by the last paste: "第12行 日期“2025-13-01”：输入的日期错误；".
    const QStringList &rejected() const { return m_rejected; }

private:
    void finish(int firstRow, bool changed);
    /// From how many lines a paste reports its progress.
    static constexpr int LongFrom = 200;
    // Why \a block cannot land as the user sees it from row \a top on the
    // columns \a targets (empty when it can).
    QString misplaced(const QList<QStringList> &block, int top, const QList<int> &targets) const;
    EditContext &m_ctx;
    const EditRules &m_rules;
    QStringList m_rejected;
    bool m_begun = false;  ///< begin() reported the start
};

} // namespace kx
