#include "control/EditingController.h"

#include "control/AccountPickerPrivate.h"
#include "control/DatePicker.h"
#include "control/EntryOrder.h"
#include "control/JournalPrivate.h"
#include "control/VoucherController.h"
#include "editing/EditSession.h"
#include "grid/GridDelegate.h"
#include "grid/GridViewPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/AccountPicker.h"
#include "kxjournal/CalculatorPopup.h"
#include "kxjournal/EditCycle.h"
#include "kxjournal/GridView.h"
#include "kxjournal/Journal.h"
#include "kxjournal/VoucherPicker.h"
#include "ledger/BookRow.h"

#include <QScopedValueRollback>

namespace kx {

void EditingController::setUp()
{
    d.edit = new EditSession(EditContext(d.book), d.q);
    accountPicker = new AccountPicker(d.q);
    calculator = new CalculatorPopup(d.q);
    datePicker = new DatePicker(d.q);
    QObject::connect(d.edit, &EditSession::pickerRequested, d.q,
                     [this](int row, int col, const QString &key) { openPicker(row, col, key); });
    QObject::connect(accountPicker, &AccountPicker::accountChosen, d.q, [this](int id) {
        const AccountChart::Account *a = d.edit->context().chart().byId(id);
        if (a)
            enterChosen(pickerRow, pickerCol, a->code);
    });
    QObject::connect(calculator, &CalculatorPopup::valueChanged, d.q, [this](const QString &value) {
        EditCycle *cycle = d.grid->editCycle();
        if (d.view->activeEditor() && cycle->editRow() == pickerRow && cycle->editCol() == pickerCol)
            GridDelegate::setEditorText(d.view->activeEditor(), value);
    });
    QObject::connect(calculator, &CalculatorPopup::finished, d.q,
                     [this](const QString &value) { enterChosen(pickerRow, pickerCol, value); });
    QObject::connect(datePicker, &DatePicker::datePicked, d.q, [this](int row, const QDate &date) {
        const int col = JournalColumns(*d.grid)[JournalColumns::ShowName];
        if (d.grid->isDataRow(row))
            enterChosen(row, col, date.toString(Qt::ISODate));
    });
    // Leaving the row with the calculator open takes its value, so nothing is left half entered.
    QObject::connect(d.grid, &Sheet::cursorChanged, d.q, [this](int row, int) {
        if (calculator->isVisible() && row != pickerRow) {
            calculator->hide();
            enterChosen(pickerRow, pickerCol, calculator->value());
        }
    });
    // A picker belongs to the row it was opened for: when rows go or the
    // book is read again, it closes rather than write into another record.
    QObject::connect(d.grid, &QAbstractItemModel::modelReset, d.q, [this] { closePickers(); });
    QObject::connect(d.grid, &QAbstractItemModel::rowsRemoved, d.q, [this] { closePickers(); });
    QObject::connect(d.grid, &QAbstractItemModel::rowsMoved, d.q, [this] { closePickers(); });
    GridViewPrivate::get(d.view).m_navigator = ([this](int row, int col, bool backwards, bool enter) {
        return EntryOrder::next(d.edit->context(), row, col, backwards, enter);
    });
}

void EditingController::place(QWidget *popup, int row, int col)
{
    const QRect cell = d.view->visualRect(d.grid->indexAt(row, col));
    QPoint at = d.view->viewport()->mapTo(d.q, cell.bottomLeft());
    const QSize size = popup->sizeHint().expandedTo(popup->size());
    at.setX(std::max(0, std::min(at.x(), d.q->width() - size.width())));
    if (at.y() + size.height() > d.q->height())
        at.setY(std::max(0, d.view->viewport()->mapTo(d.q, cell.topLeft()).y() - size.height()));
    popup->move(at);
}

void EditingController::closePickers()
{
    accountPicker->hide();
    calculator->hide();
    datePicker->hide();
    d.vouchers->picker->hide();
}

void EditingController::openPicker(int row, int col, const QString &key)
{
    // One picker at a time, so a pick lands in the cell it was opened for.
    closePickers();
    pickerRow = row;
    pickerCol = col;
    switch (JournalColumns::fromKey(key)) {
    case JournalColumns::ShowName: {
        const JournalColumns columns(*d.grid);
        place(datePicker, row, col);
        datePicker->open(row, BookRow::of(*d.grid, columns, row).date());
        break;
    }
    case JournalColumns::AccName:
        AccountPickerPrivate::get(accountPicker).setChart(d.edit->context().chart());
        accountPicker->setSearchText(QString());
        place(accountPicker, row, col);
        accountPicker->show();
        break;
    case JournalColumns::AccDoc:
        d.vouchers->openPicker(row, col);
        break;
    case JournalColumns::Debit:
    case JournalColumns::Credit:
        calculator->setExpression(d.grid->editCycle()->isEditing() ? d.grid->editCycle()->editText() : d.grid->text(row, col));
        place(calculator, row, col);
        calculator->show();
        break;
    default:
        break;
    }
}

bool EditingController::enterChosen(int row, int col, const QString &text)
{
    if (!d.grid->isDataRow(row) || !d.grid->isDataCol(col))
        return false;
    EditCycle *cycle = d.grid->editCycle();
    if (d.view->activeEditor() && cycle->isEditing() && cycle->editRow() == row && cycle->editCol() == col) {
        QScopedValueRollback<bool> picked(d.edit->context().fromPicker, true);
        GridDelegate::setEditorText(d.view->activeEditor(), text);
        return d.view->commitEditor();
    }
    return d.edit->applyChosen(row, col, text);
}

void EditingController::forgetWidgets()
{
    accountPicker = nullptr;
    calculator = nullptr;
    datePicker = nullptr;
}

} // namespace kx
