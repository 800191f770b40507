// Journal: typing records in — the edit rules, the pickers, the calculator, undo.
#include "kxjournal/Journal.h"
#include "control/AccountPickerPrivate.h"
#include "grid/GridViewPrivate.h"

#include "control/DatePicker.h"
#include "control/EntryOrder.h"
#include "control/JournalPrivate.h"
#include "editing/AccountLookup.h"
#include "editing/EditSession.h"
#include "editing/ExplainRule.h"
#include "grid/GridDelegate.h"
#include "kxjournal/AccountPicker.h"
#include "kxjournal/CalculatorPopup.h"
#include "kxjournal/EditCycle.h"
#include "grid/Sheet.h"
#include "kxjournal/GridView.h"
#include "kxjournal/VoucherPicker.h"
#include "ledger/BookRow.h"

#include <QScopedValueRollback>

namespace kx {

void JournalPrivate::setUpEditing()
{
    edit = new EditSession(EditContext(*grid, state, *this, [this] { return context(); }), q);
    accountPicker = new AccountPicker(q);
    calculator = new CalculatorPopup(q);
    datePicker = new DatePicker(q);
    QObject::connect(edit, &EditSession::pickerRequested, q,
                     [this](int row, int col, const QString &key) { openPicker(row, col, key); });
    QObject::connect(accountPicker, &AccountPicker::accountChosen, q, [this](int id) {
        const AccountChart::Account *a = edit->context().chart().byId(id);
        if (a)
            enterChosen(pickerRow, pickerCol, a->code);
    });
    QObject::connect(calculator, &CalculatorPopup::valueChanged, q, [this](const QString &value) {
        EditCycle *cycle = grid->editCycle();
        if (view->activeEditor() && cycle->editRow() == pickerRow && cycle->editCol() == pickerCol)
            GridDelegate::setEditorText(view->activeEditor(), value);
    });
    QObject::connect(calculator, &CalculatorPopup::finished, q,
                     [this](const QString &value) { enterChosen(pickerRow, pickerCol, value); });
    QObject::connect(datePicker, &DatePicker::datePicked, q, [this](int row, const QDate &date) {
        const int col = JournalColumns(*grid)[JournalColumns::ShowName];
        if (grid->isDataRow(row))
            enterChosen(row, col, date.toString(Qt::ISODate));
    });
    // Leaving the row with the calculator open takes its value, so nothing is left half entered.
    QObject::connect(grid, &Sheet::cursorChanged, q, [this](int row, int) {
        if (calculator->isVisible() && row != pickerRow) {
            calculator->hide();
            enterChosen(pickerRow, pickerCol, calculator->value());
        }
    });
    // A picker belongs to the row it was opened for: when rows go or the
    // book is read again, it closes rather than write into another record.
    QObject::connect(grid, &QAbstractItemModel::modelReset, q, [this] { closePickers(); });
    QObject::connect(grid, &QAbstractItemModel::rowsRemoved, q, [this] { closePickers(); });
    QObject::connect(grid, &QAbstractItemModel::rowsMoved, q, [this] { closePickers(); });
    GridViewPrivate::get(view).m_navigator = ([this](int row, int col, bool backwards, bool enter) {
        return EntryOrder::next(edit->context(), row, col, backwards, enter);
    });
}

void JournalPrivate::place(QWidget *popup, int row, int col)
{
    const QRect cell = view->visualRect(grid->indexAt(row, col));
    QPoint at = view->viewport()->mapTo(q, cell.bottomLeft());
    const QSize size = popup->sizeHint().expandedTo(popup->size());
    at.setX(std::max(0, std::min(at.x(), q->width() - size.width())));
    if (at.y() + size.height() > q->height())
        at.setY(std::max(0, view->viewport()->mapTo(q, cell.topLeft()).y() - size.height()));
    popup->move(at);
}

void JournalPrivate::closePickers()
{
    accountPicker->hide();
    calculator->hide();
    datePicker->hide();
    voucherPicker->hide();
}

void JournalPrivate::openPicker(int row, int col, const QString &key)
{
    // One picker at a time, so a pick lands in the cell it was opened for.
    closePickers();
    pickerRow = row;
    pickerCol = col;
    switch (JournalColumns::fromKey(key)) {
    case JournalColumns::ShowName: {
        const JournalColumns columns(*grid);
        place(datePicker, row, col);
        datePicker->open(row, BookRow::of(*grid, columns, row).date());
        break;
    }
    case JournalColumns::AccName:
        AccountPickerPrivate::get(accountPicker).setChart(edit->context().chart());
        accountPicker->setSearchText(QString());
        place(accountPicker, row, col);
        accountPicker->show();
        break;
    case JournalColumns::AccDoc:
        openVoucherPicker(row, col);
        break;
    case JournalColumns::Debit:
    case JournalColumns::Credit:
        calculator->setExpression(grid->editCycle()->isEditing() ? grid->editCycle()->editText() : grid->text(row, col));
        place(calculator, row, col);
        calculator->show();
        break;
    default:
        break;
    }
}

bool JournalPrivate::enterChosen(int row, int col, const QString &text)
{
    if (!grid->isDataRow(row) || !grid->isDataCol(col))
        return false;
    EditCycle *cycle = grid->editCycle();
    if (view->activeEditor() && cycle->isEditing() && cycle->editRow() == row && cycle->editCol() == col) {
        QScopedValueRollback<bool> picked(edit->context().fromPicker, true);
        GridDelegate::setEditorText(view->activeEditor(), text);
        return view->commitEditor();
    }
    return edit->applyChosen(row, col, text);
}

void JournalPrivate::dirtyRestored(bool dirty)
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (q)
        Q_EMIT q->dirtyChanged(dirty);
    if (dirty && q)
        Q_EMIT q->DataChanged(grid->colKey(grid->col()));
}

bool Journal::undo()
{
    // An undo raises events: the history stays while a handler deletes the control.
    const std::shared_ptr<JournalPrivate> keep = d;
    return keep->edit->history().undo();
}

bool Journal::redo()
{
    const std::shared_ptr<JournalPrivate> keep = d;
    return keep->edit->history().redo();
}
bool Journal::canUndo() const { return d->edit->history().canUndo(); }
bool Journal::canRedo() const { return d->edit->history().canRedo(); }
bool Journal::CellChanged() const { return d->edit->cellChanged(); }
QString Journal::ExplainHistory() const { return d->edit->explainHistory(); }
AccountPicker *Journal::accountPicker() const { return d->accountPicker; }
CalculatorPopup *Journal::calculator() const { return d->calculator; }

int Journal::FindAccID(const QString &rText)
{
    AccContext *acc = d->context();
    return acc ? AccountLookup(acc->Connection()).findAccId(rText) : 0;
}

int Journal::findAccountByPath(const QString &path)
{
    AccContext *acc = d->context();
    return acc ? AccountLookup(acc->Connection()).findByPath(path) : 0;
}

QString Journal::GetExplainList()
{
    return ExplainRule().comboList(d->edit->context(), d->grid->row(), d->grid->col());
}

} // namespace kx
