#pragma once

#include <QString>

class QWidget;

namespace kx {

class AccountPicker;
class CalculatorPopup;
class DatePicker;
class JournalPrivate;

/// The control's typing: the edit session with its rules on the grid's edit
/// cycle, the pickers and the calculator that fill a cell, the order Enter
/// and Tab walk the cells in.
class EditingController
{
public:
    /// The typing of the control whose state is \a d.
    explicit EditingController(JournalPrivate &d) : d(d) {}

    /// Builds the edit session, the pickers and the calculator.
    void setUp();
    /// Closes the pickers and the calculator without a pick.
    void closePickers();
    /// Opens the picker or calculator of (\a row, \a col) next to the cell.
    void openPicker(int row, int col, const QString &key);
    /// Enters \a text chosen in a picker into (\a row, \a col): into the
    /// open editor when one is open there, else as a whole edit.
    bool enterChosen(int row, int col, const QString &text);
    /// Places \a popup below the cell (\a row, \a col), inside the control.
    void place(QWidget *popup, int row, int col);
    /// Forgets the widgets, which went with the control.
    void forgetWidgets();

    AccountPicker *accountPicker = nullptr;
    CalculatorPopup *calculator = nullptr;
    DatePicker *datePicker = nullptr;
    int pickerRow = -1;  ///< the cell a picker or the calculator was opened for
    int pickerCol = -1;

private:
    JournalPrivate &d;
};

} // namespace kx
