#pragma once

#include "voucher/VoucherPlan.h"

#include <QString>
#include <QStringList>

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
    /// Makes the voucher files of the selected rows in the folder \a into,
    /// grouped as grouping says; the files written, in voucher order.
    QStringList make(const QString &into);
    /// Forgets the widgets, which went with the control.
    void forgetWidgets() { picker = nullptr; }

    VoucherPicker *picker = nullptr;
    QString folder;                          ///< where Make writes (empty: the temporary folder)
    QString codec = QStringLiteral("GBK");  ///< the voucher file's code page
    VoucherGrouping grouping = VoucherGrouping::All;  ///< one voucher, one per record, or per 收/付

private:
    JournalPrivate &d;
};

} // namespace kx
