#pragma once

#include <QString>

namespace kx {

class JournalPrivate;
class VoucherPicker;

/// The control's voucher work: the picker, the double-click on a voucher
/// cell, looking at a row's voucher and making a voucher file.
class VoucherController
{
public:
    /// The voucher work of the control whose state is \a d.
    explicit VoucherController(JournalPrivate &d) : d(d) {}

    /// Builds the picker and answers the double-click on a voucher cell.
    void setUp();
    /// Opens the picker next to (\a row, \a col), its list read afresh.
    void openPicker(int row, int col);
    /// Asks the host to show the current row's voucher, or makes one of the
    /// selected rows when it has none.
    void lookAt();
    /// Makes a voucher file of the selected rows in the folder \a into; the file
    /// written, or empty when none was.
    QString make(const QString &into);
    /// Forgets the widgets, which went with the control.
    void forgetWidgets() { picker = nullptr; }

    VoucherPicker *picker = nullptr;
    QString folder;                          ///< where Make writes (empty: the temporary folder)
    QString codec = QStringLiteral("GBK");  ///< the voucher file's code page

private:
    JournalPrivate &d;
};

} // namespace kx
