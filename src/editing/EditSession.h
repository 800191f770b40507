#pragma once

#include "editing/EditContext.h"
#include "editing/EditPipeline.h"
#include "editing/EditRules.h"
#include "ledger/EditHistory.h"
#include "ledger/GridStepCommand.h"

#include <QObject>
#include <memory>
#include <vector>

namespace kx {

class EditRule;

/// Connects a grid's edit cycle to the edit pipeline and keeps the undo
/// history of what the edits did.
///
/// Before an edit it decides whether the cell opens and with which editor;
/// it filters the keys of numeric columns. The text to store is checked by
/// the pipeline (a refusal is told to the host and keeps the editor open);
/// after a stored change the pipeline completes the row and marks the book.
/// Everything an edit changed, including what handlers of the cycle's
/// events wrote, becomes one step of the history.
class EditSession : public QObject
{
    Q_OBJECT
public:
    /// Works on \a ctx's grid (whose edit cycle it listens to).
    explicit EditSession(EditContext ctx, QObject *parent = nullptr);
    ~EditSession() override;

    /// The editing state and what the rules work on.
    EditContext &context() { return m_ctx; }
    /// The undo history.
    EditHistory &history() { return m_history; }

    /// Whether the edit under way changed its cell.
    bool cellChanged() const { return m_ctx.cellChanged; }
    /// The explanations typed, newest first, each followed by "|".
    QString explainHistory() const { return m_ctx.explainHistory; }

    /// Adds an empty row at the bottom, for the next record, when the last
    /// row is not empty and the book may be changed.
    void keepBlankRow();
    /// Drops the undo history; a step being recorded is dropped too.
    void clearHistory();
    /// The journal's edit rules.
    const EditRules &rules() const { return m_rules; }
    /// Runs an edit of (\a row, \a col) with \a text chosen in a picker or
    /// the calculator: through the open editor's edit when one is under
    /// way for that cell, else as a whole edit. Dates chosen are not held
    /// to the typed-date bounds. True when the text was stored.
    bool applyChosen(int row, int col, const QString &text);

Q_SIGNALS:
    /// The ellipsis of (row, col) was pressed: a picker or the calculator
    /// should open for \a column ("ShowName", "AccName", "Debit" …).
    void pickerRequested(int row, int col, const QString &column);

private:
    void onBeforeEdit(int row, int col, bool &cancel);
    void onKeyPress(int row, int col, int &key);
    void onValidate(int row, int col, bool &cancel);
    void onAfterEdit(int row, int col);
    void onEnded(int row, int col, bool stored);
    EditRule *ruleFor(int col) const;
    EditOrigin origin() const { return m_ctx.fromPicker ? EditOrigin::Picker : EditOrigin::Typing; }

    EditContext m_ctx;
    EditHistory m_history;
    EditRules m_rules;
    EditPipeline m_pipeline{m_ctx, m_rules};
    bool m_recording = false;
    bool m_dropStep = false;
    LedgerMarks m_before;
    bool m_historyFit = false;
};

} // namespace kx
