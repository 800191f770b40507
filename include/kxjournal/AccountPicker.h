#pragma once

#include "kxjournal/kxjournal_export.h"

#include <QFrame>
#include <memory>

namespace kx {

class AccountPickerPrivate;

/// The control's account picker: the chart of accounts as a tree, with a
/// search box above it. What is typed in the box narrows the list to the
/// accounts whose code starts with it, whose name contains it, whose entry
/// code starts with it, or whose name's pinyin initials contain it ("yhck"
/// or "yh" for 银行存款), best matches first and, among equals, the accounts
/// the book uses most. Works from the keyboard alone: type, ↑/↓, Enter
/// picks, Esc closes. The journal places it next to the account cell.
class KXJOURNAL_EXPORT AccountPicker : public QFrame
{
    Q_OBJECT
public:
    /// An empty picker.
    explicit AccountPicker(QWidget *parent = nullptr);
    ~AccountPicker() override;

    /// The text in the search box.
    QString searchText() const;
    /// Puts \a text into the search box (and narrows the list).
    void setSearchText(const QString &text);
    /// The ids of the accounts listed, in their order (a tree's accounts
    /// depth first).
    QList<int> listedAccounts() const;
    /// The id of the account highlighted (0: none).
    int currentAccount() const;
    /// Picks account \a id as the user's Enter would: emits accountChosen()
    /// and closes.
    void choose(int id);

Q_SIGNALS:
    /// The user picked account \a id.
    void accountChosen(int id);
    /// The picker closed without a pick.
    void dismissed();

protected:
    /// Keys typed in the search line move in the list, pick (Enter) or close it (Escape).
    bool eventFilter(QObject *watched, QEvent *event) override;
    /// Puts the keyboard focus into the search line.
    void showEvent(QShowEvent *event) override;

private:
    friend class AccountPickerPrivate;
    std::unique_ptr<AccountPickerPrivate> const d;
};

} // namespace kx
