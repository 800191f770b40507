#pragma once

#include "editing/EditRule.h"

namespace kx {

/// The account column: what was typed names an account by its code, name
/// or entry code, by a path of names, or else by the best match of the
/// chart (a code prefix, part of the name, pinyin initials); the row then
/// takes the account's name, code and id.
class AccountRule : public EditRule
{
public:
    bool handles(JournalColumns::Column column) const override;
    QString comboList(EditContext &ctx, int row, int col) const override;
    bool validate(EditContext &ctx, int row, int col, QString &text) override;
    void afterEdit(EditContext &ctx, int row, int col) override;

    /// The account \a text names, 0 when none.
    static int resolve(EditContext &ctx, const QString &text);
    /// Writes the name, code and id of account \a accId (or, when it is 0,
    /// of the account with code \a code) into \a row and tells the host
    /// ("AccNameChanged"). Leaves the row as it is when there is no such account.
    static void fillRow(EditContext &ctx, int row, int accId, const QString &code);

private:
    static int find(EditContext &ctx, const QString &text);
};

} // namespace kx
