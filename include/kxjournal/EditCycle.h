#pragma once

#include "kxjournal/kxjournal_export.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>

namespace kx {

class EditCyclePrivate;
class GridModel;

/// The edit cycle of one grid: the events a cell edit raises, in order,
/// whoever drives it.
///
/// A person drives it through a GridView (typing into the cell editor); code
/// drives it through editCell(), which raises the same events, so that paste
/// and tests take the same path as the keyboard. Handlers must be connected
/// directly (the default for objects on one thread): the events carry
/// references that the handler writes (cancel flags, key codes).
///
/// Order for one edit: beforeEdit → keyPressEdit per key typed → validateEdit
/// → the cell text is written → afterEdit. A cancel in beforeEdit opens no
/// editor; a cancel in validateEdit writes nothing and leaves the editor open
/// with the text typed.
class KXJOURNAL_EXPORT EditCycle : public QObject
{
    Q_OBJECT
public:
    /// Key codes passed to keyPressEdit for keys that are not characters.
    enum KeyCode { KeyBackspace = 8, KeyTab = 9, KeyEnter = 13, KeyEscape = 27 };

    /// The cycle of \a grid (which owns it).
    explicit EditCycle(GridModel *grid);
    ~EditCycle() override;

    /// The grid edited.
    GridModel *grid() const;
    /// True between begin() and the end of the edit.
    bool isEditing() const;
    /// Row of the edit in progress (-1 when none).
    int editRow() const;
    /// Column of the edit in progress (-1 when none).
    int editCol() const;
    /// The text in the editor; validateEdit handlers may rewrite it.
    QString editText() const;
    /// Replaces the text in the editor.
    void setEditText(const QString &text);
    /// The editor kind for the edit in progress: "|..." a text box with an
    /// ellipsis button, "a|b|c" a drop-down list, empty a plain text box.
    /// Reset to the column's list when an edit begins; beforeEdit may set it.
    QString comboList() const;
    /// Sets the editor kind (see comboList()); forgets the hints.
    void setComboList(const QString &list);
    /// What the drop-down list shows beside each item, dimmed, in the order
    /// of the items (an empty text: nothing); never part of an item.
    /// Emptied when an edit begins and when the list is set.
    QStringList comboHints() const;
    /// Sets the hints of the list's items (see comboHints()).
    void setComboHints(const QStringList &hints);

    /// Starts an edit of (\a row, \a col): raises beforeEdit; false when it
    /// was cancelled or the cell cannot be edited.
    bool begin(int row, int col);
    /// Passes a key typed in the editor through keyPressEdit; returns the
    /// code to use (0: the key is swallowed).
    int keyPress(int keyCode);
    /// Takes \a text as the editor's text and raises validateEdit; false when
    /// it was cancelled. editText() then holds the text to store.
    bool validate(const QString &text);
    /// Writes editText() into the cell; the edit stays open until finish().
    void store();
    /// Ends the edit; raises afterEdit when a text was stored.
    void finish();
    /// Ends the edit without writing anything.
    void cancel();

    /// The whole cycle for code, as a person typing \a text and pressing
    /// Enter: begin, each character through keyPress() (a swallowed one is
    /// left out), validate, store, finish. Returns true when the text was
    /// stored; a cancel at any step leaves the cell as it was.
    bool editCell(int row, int col, const QString &text);

    /// Tells handlers that the ellipsis button of the editor was pressed.
    void clickButton();

Q_SIGNALS:
    /// An edit of (row, col) is about to start; set \a cancel to refuse it.
    void beforeEdit(int row, int col, bool &cancel);
    /// A key was typed in the editor; set \a keyCode to 0 to swallow it or
    /// to another character code to type that instead.
    void keyPressEdit(int row, int col, int &keyCode);
    /// The edit text (editText()) is about to be stored; set \a cancel to refuse it.
    void validateEdit(int row, int col, bool &cancel);
    /// The edit of (row, col) ended with a stored text.
    void afterEdit(int row, int col);
    /// The ellipsis button of the editor of (row, col) was pressed.
    void cellButtonClick(int row, int col);
    /// The edit of (row, col) that began is over: after afterEdit when a
    /// text was stored (\a stored true), or cancelled or closed without one.
    void editEnded(int row, int col, bool stored);

private:
    std::unique_ptr<EditCyclePrivate> const d;
};

} // namespace kx
