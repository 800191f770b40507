#pragma once

#include "editing/EditRule.h"

class QString;

namespace kx {

class Sheet;

/// The explanation: offers as a drop-down list the explanations kept for
/// the book on purpose (常用摘要), then those typed in this session, then the
/// book's latest ones, each with the account and amount of the latest
/// record carrying it; remembers each new one typed (not those of a pasted
/// block). An explanation typed or picked that an
/// earlier record carries fills the row's empty account and amount from the
/// latest such record (unless the host turned it off: QuickFill).
class ExplainRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    /// Beside each explanation, the account and amount of its latest record.
    QStringList comboHints(EditContext &ctx, int row, int col, const QString &list) const override;
    /// The explanations offered, in order ("|a|b").
    static QString texts(EditContext &ctx);
    /// What the list says beside \a text: the account and amount of the
    /// latest record carrying it ("银行存款  借 1,250.00"), for each of
    /// \a texts; empty where no record carries it. One pass up the column
    /// at most.
    static QStringList hints(const EditContext &ctx, const QStringList &texts);
    void afterEdit(EditContext &ctx, int row, int col) override;

    /// The latest record (lowest row) but \a row whose explanation is the one
    /// in (\a row, \a col); -1 when there is none.
    static int latestWith(const Sheet &grid, const JournalColumns &columns, int row, int col);

private:
    // Fills the account and the amount of \a row, where still empty, from
    // the latest record with the same explanation (one undo step with it).
    static void quickFill(EditContext &ctx, int row, int col);
};

} // namespace kx
