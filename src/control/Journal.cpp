#include "kxjournal/Journal.h"

#include "control/BalanceChart.h"
#include "control/EditingController.h"
#include "control/JournalCommands.h"
#include "control/JournalFrame.h"
#include "control/JournalMenu.h"
#include "control/JournalPrivate.h"
#include "control/LayoutController.h"
#include "control/OutputController.h"
#include "control/RowController.h"
#include "control/VoucherController.h"
#include "editing/EditSession.h"
#include "kxjournal/EditCycle.h"
#include "data/JournalDefinition.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridView.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookLoader.h"
#include "ledger/BookRow.h"
#include "ledger/BookSaver.h"
#include "ledger/ColumnModel.h"
#include "ledger/SummaryRows.h"
#include "data/SqlAccess.h"

#include <QContextMenuEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace kx {

Journal::Journal(QWidget *parent) : QWidget(parent), d(std::make_shared<JournalPrivate>(this))
{
    d->view = new GridView;
    d->view->setGridModel(d->grid);
    d->frame = new JournalFrame(d->view, this);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(d->frame);
    setCaption(FmtName());
    ColumnModel::define(d->book);

    d->editing->setUp();
    d->rows->setUp();
    d->vouchers->setUp();
    d->output->setUp();
    JournalCommands::offer(*d);
    JournalCommands::bindKeys(*d);
    d->holdWhileCommandsRun();
    d->commands.setGate([this](const Command &) { return d->mayStart(); });
    d->menu = new JournalMenu(d->commands, this);
    d->layout->setUp();
    // The side panel shows the book's year until the host puts its own widgets there.
    auto *chart = new BalanceChart(d->book, d->frame->sidePanel());
    connect(chart, &BalanceChart::monthChosen, this, [this](int row) { setRow(row); });

    d->asker = [this](const QString &text, const QString &title) {
        return QMessageBox::question(this, title.isEmpty() ? Caption() : title, text,
                                     QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
    };
    d->choiceAsker = [this](const QString &text, const QString &title, const QStringList &answers) {
        QMessageBox box(QMessageBox::Question, title.isEmpty() ? Caption() : title, text, QMessageBox::NoButton, this);
        QList<QAbstractButton *> buttons;
        for (int i = 0; i < int(answers.size()); ++i) {
            const bool last = i == int(answers.size()) - 1;
            buttons << box.addButton(answers.at(i), i == 0 ? QMessageBox::AcceptRole
                                                    : last ? QMessageBox::RejectRole
                                                           : QMessageBox::DestructiveRole);
        }
        if (!buttons.isEmpty()) {
            box.setDefaultButton(qobject_cast<QPushButton *>(buttons.first()));
            box.setEscapeButton(buttons.last());
        }
        box.exec();
        return int(buttons.indexOf(box.clickedButton()));
    };
    connect(d->grid, &Sheet::cursorChanged, this, &Journal::onCursorChanged);
    connect(d->view, &GridView::mouseUp, this,
            [this](int button, int shift, float x, float y) { Q_EMIT MouseUp(button, shift, x, y); });
    QToolButton *option = d->frame->optionButton();
    connect(option, &QToolButton::clicked, this,
            [this, option] { d->menu->popup(option->mapToGlobal(QPoint(0, option->height()))); });
}

Journal::~Journal()
{
    // The grid's view goes (or is put away) while the state its handlers use
    // is still here. A host may delete the control inside a handler of an
    // operation or edit still running: it finishes on the state, without the widget.
    d->controlGone();
}

void Journal::announce(const QString &name)
{
    Q_EMIT propertyChanged(name);
}

void Journal::onCursorChanged(int row, int col)
{
    const bool rowMoved = row != d->lastRow;
    const bool colMoved = col != d->lastCol;
    d->lastRow = row;
    d->lastCol = col;
    if (rowMoved)
        Q_EMIT AfterRowChanged();
    if (colMoved)
        Q_EMIT AfterColChanged();
}

void Journal::contextMenuEvent(QContextMenuEvent *event)
{
    d->menu->popup(event->globalPos());
}

QMenu *Journal::contextMenu() const { return d->menu; }
QAction *Journal::menuAction(const QString &name) const
{
    // A host may trigger an item without showing the menu: its state is made current first.
    d->menu->sync();
    return d->menu->item(name);
}

QString Journal::Message() const { return d->message; }
void Journal::setMessage(const QString &value) { d->message = value; }
AccContext *Journal::Acc() const { return d->context(); }

void Journal::setAcc(AccContext *value)
{
    if (AccContext *old = d->context())
        disconnect(old, nullptr, this, nullptr);
    d->setContext(value);
    if (value)
        connect(value, &AccContext::Announce, this, [this](const QString &message) { Prompt(message, false); });
}

QString Journal::Caption() const { return d->caption; }

void Journal::setCaption(const QString &value)
{
    if (value == d->caption)
        return;
    d->caption = value;
    d->frame->setCaptionText(QStringLiteral("    ") + value);
    Q_EMIT captionChanged(value);
}

QString Journal::FmtName() const { return QStringLiteral("流水账"); }
QString Journal::FmtFlag() const { return QString::number(d->state.book.docId); }
int Journal::fmtID() const { return d->state.book.docId; }
bool Journal::IsPackedJnl() const { return d->state.isPacked; }

void Journal::setIsPackedJnl(bool value)
{
    if (value == d->state.isPacked)
        return;
    d->state.isPacked = value;
    d->menu->sync();
    Q_EMIT packedChanged(value);
}

bool Journal::IsBottomClass() const { return d->state.book.isBottomClass; }

int Journal::AccID(int Row) const
{
    const JournalColumns columns(*d->grid);
    return BookRow::of(*d->grid, columns, d->rowOr(Row)).accId();
}

void Journal::setAccID(int value, int Row)
{
    const JournalColumns columns(*d->grid);
    BookRow(*d->grid, columns, d->rowOr(Row)).setText(JournalColumns::AccID, QString::number(value));
    d->state.book.accId = value;
}

namespace {

QString accText(AccContext *acc, int accId, bool code)
{
    if (!acc)
        return {};
    return code ? acc->GetAccCode(accId) : acc->GetAccName(accId, 0);
}

} // namespace

QString Journal::AccCode() const { return accText(d->context(), d->state.book.accId, true); }
QString Journal::AccName() const { return accText(d->context(), d->state.book.accId, false); }
int Journal::RelativeAccID() const { return d->state.book.relativeAccId; }
void Journal::setRelativeAccID(int value) { d->state.book.relativeAccId = value; }
QString Journal::RelativeAccCode() const { return accText(d->context(), d->state.book.relativeAccId, true); }
QString Journal::RelativeAccName() const { return accText(d->context(), d->state.book.relativeAccId, false); }
QString Journal::Direction() const { return balanceSideText(d->state.book.direction); }

void Journal::setDirection(const QString &value)
{
    const BalanceSide kept = balanceSideOf(value);
    if (kept == d->state.book.direction)
        return;
    d->exclusive(QStringLiteral("Direction"), false, [&] {
        d->state.book.direction = kept;
        BalanceCalculator(d->book).calculate(d->grid->row());
        return true;
    });
}

QString Journal::ObjName() const { return QStringLiteral("JournalRec"); }
int Journal::LastSumRow() const { return d->state.lastSumRow; }
void Journal::setLastSumRow(int value) { d->state.lastSumRow = value; }
GridModel *Journal::Grid() const { return d->grid; }
GridView *Journal::gridView() const { return d->view; }
bool Journal::AllowAccDoc() const { return AccID() > 0; }
int Journal::Row() const { return d->grid->row(); }

void Journal::setRow(int value)
{
    Sheet *g = d->grid;
    if (!g->isDataRow(value))
        return;
    if (g->isRowHidden(value))
        g->setRowHidden(value, false);
    const int col = g->isDataCol(g->col()) ? g->col() : g->fixedCols();
    g->setCursor(value, col);
    // A row above the view comes to the top, as a person scrolling up would see it.
    const QModelIndex idx = g->indexAt(value, col);
    const int topRow = d->view->rowAt(0);
    d->view->scrollTo(idx, topRow >= 0 && idx.row() < topRow ? QAbstractItemView::PositionAtTop
                                                              : QAbstractItemView::EnsureVisible);
}

bool Journal::AllowModify() const { return d->state.mayModify(); }
void Journal::setAllowModify(bool value) { d->state.allowModify = d->state.book.docId < 1 ? false : value; }
bool Journal::AllowAudit() const { return d->state.allowAudit; }
int Journal::Rows() const { return d->grid->rows() - 1; }
bool Journal::IsDirty() const { return d->state.dirty; }

void Journal::setIsDirty(bool value)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    const bool changed = value != keep->state.dirty;
    keep->state.dirty = value;
    if (changed)
        Q_EMIT dirtyChanged(value);
    if (value && keep->alive())
        Q_EMIT DataChanged(keep->grid->colKey(keep->grid->col()));
}

bool Journal::IsLastSumRow() const
{
    const int row = d->grid->row();
    if (row != d->state.lastSumRow || row + 1 >= d->grid->rows())
        return false;
    const JournalColumns columns(*d->grid);
    return !BookRow::of(*d->grid, columns, row + 1).date().isValid();
}

int Journal::DocID() const { return d->state.book.docId; }

void Journal::setDocID(int value)
{
    JournalPrivate *const p = d.get();
    p->exclusive(QStringLiteral("DocID"), false, [p, value] {
        const int before = p->state.book.docId;
        if (AccContext *acc = p->context())
            JournalDefinition(acc->Connection(), p->state.book).read(value);
        else
            p->state.book.docId = value;
        if (p->state.book.docId != before)
            Q_EMIT p->q->docIdChanged(p->state.book.docId);
        return true;
    });
}

// The operations below raise events: a handler may delete the control, so
// after each call that raises one they reach the control only through p,
// which the operation holds, and only while p->alive().

bool Journal::Load(int rDocID)
{
    JournalPrivate *const p = d.get();
    return p->exclusive(QStringLiteral("Load"), false, [p, rDocID] {
        const BookLoader::Outcome outcome = BookLoader(p->book).load(rDocID);
        const bool filled = outcome == BookLoader::Loaded || outcome == BookLoader::Empty;
        if (!p->alive())
            return filled;
        p->edit->context().forgetBook();
        if (outcome == BookLoader::Loaded) {
            p->edit->keepBlankRow();
            // The book opens where the cashier goes on: the empty row under
            // the last record, on its date.
            const int dateCol = p->grid->colIndex(JournalColumns::key(JournalColumns::ShowName));
            p->grid->setCursor(p->grid->rows() - 1, dateCol >= 0 ? dateCol : p->grid->col());
        }
        p->edit->clearHistory();
        p->layout->fitColumns();
        if (outcome == BookLoader::Loaded)
            Q_EMIT p->q->AfterLoaded();
        return filled;
    });
}

bool Journal::Save()
{
    JournalPrivate *const p = d.get();
    return p->exclusive(QStringLiteral("Save"), false, [p] {
        BookSaver saver(p->book);
        const bool saved = saver.save(p->caption, p->instanceNumber());
        if (!p->alive())
            return saved;
        // A failed save changes nothing: the steps before it can still be undone.
        if (saved || saver.reloaded())
            p->edit->clearHistory();
        if (saver.reloaded())
            Q_EMIT p->q->AfterLoaded();
        return saved;
    });
}

bool Journal::InsSumRow(int Row)
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("InsSumRow"), QStringLiteral("插入汇总行"),
                   [p, Row] { return SummaryRows(p->book).insert(Row); });
}

bool Journal::RemoveSumRow(int Row)
{
    JournalPrivate *const p = d.get();
    return p->step(QStringLiteral("RemoveSumRow"), QStringLiteral("删除汇总行"),
                   [p, Row] { return SummaryRows(p->book).remove(Row); });
}

QString Journal::Statistics() const { return SummaryRows(d->book).statistics(); }

void Journal::SetDefaultFormat()
{
    JournalPrivate *const p = d.get();
    p->exclusive(QStringLiteral("DefaultFormat"), false, [p] {
        // The default format is the defaults: what the host chose goes too.
        p->state.columns = {};
        p->state.chosen = {};
        ColumnModel::define(p->book);
        ColumnModel::applyFormats(p->book);
        p->layout->fitColumns();
        return true;
    });
}

void Journal::ApplyExplainTemplate(const QString &rTemplate)
{
    ColumnModel::applyExplainTemplate(d->book, d->grid->row(), rTemplate);
}

QDate Journal::JnlDate() const
{
    const JournalColumns columns(*d->grid);
    return BookRow::of(*d->grid, columns, d->grid->row()).date();
}

void Journal::setJnlDate(const QDate &value)
{
    const int row = d->grid->row();
    if (!d->grid->isDataRow(row))
        return;
    const JournalColumns columns(*d->grid);
    const BookRow line(*d->grid, columns, row);
    line.setText(JournalColumns::JnlDate, value.toString(Qt::ISODate));
    line.setText(JournalColumns::ShowName,
                 BookRow::dateLabel(value, d->grid->isSubtotal(row) ? BookRow::Label::Summary : BookRow::Label::Record));
}

void Journal::Initial() {}

QString Journal::Get_AccCodeField(const QString &rFieldName, int rAccID)
{
    AccContext *acc = d->context();
    if (!acc)
        return {};
    const Database &db = acc->Connection();
    return sqlFirstRowField(db, sqlDialect(db).accountById(rAccID), rFieldName).valueOr(QVariant()).toString();
}

void Journal::Prompt(const QString &rMsg, bool ShowBox)
{
    d->say(rMsg, ShowBox, ShowBox ? WarningMessage : InformationMessage);
}

void Journal::DoCommand(const QString &CommandName, const QString &CommandParameter)
{
    // The registry and the command stay while a handler deletes the control.
    const std::shared_ptr<JournalPrivate> keep = d;
    if (const Command *command = keep->commands.byCommand(CommandName))
        keep->commands.run(*command, CommandParameter);
}

void Journal::setAsker(std::function<bool(const QString &, const QString &)> asker)
{
    if (asker)
        d->asker = std::move(asker);
}

bool Journal::ask(const QString &text, const QString &title) const
{
    return d->asker(text, title);
}

void Journal::setChoiceAsker(std::function<int(const QString &, const QString &, const QStringList &)> asker)
{
    if (asker)
        d->choiceAsker = std::move(asker);
}

int Journal::choose(const QString &text, const QStringList &answers, const QString &title) const
{
    if (answers.isEmpty())
        return -1;
    const int answer = d->choiceAsker(text, title, answers);
    return answer >= 0 && answer < int(answers.size()) ? answer : int(answers.size()) - 1;
}

} // namespace kx
