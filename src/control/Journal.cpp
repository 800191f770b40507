#include "kxjournal/Journal.h"

#include "control/JournalFrame.h"
#include "control/JournalMenu.h"
#include "data/BookState.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridView.h"
#include "data/JournalDefinition.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookLoader.h"
#include "ledger/BookSaver.h"
#include "ledger/ColumnModel.h"
#include "ledger/SummaryRows.h"
#include "rows/GridClipboard.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMessageBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace kx {

Journal::Journal(QWidget *parent)
    : QWidget(parent), m_book(std::make_unique<BookState>()), m_grid(new GridModel(this)),
      m_view(new GridView), m_frame(new JournalFrame(m_view, this)), m_menu(new JournalMenu(this))
{
    m_view->setGridModel(m_grid);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_frame);
    setCaption(FmtName());

    m_book->prompt = [this](const QString &text, bool box) { Prompt(text, box); };
    m_book->cancelledByHost = [this](const QString &command) { return hostCancels(command); };
    m_book->process = [this](int n) { emit Process(n); };
    m_book->caption = [this](const QString &text) { setCaption(text); };
    m_book->markDirty = [this] { setIsDirty(true); };
    m_book->afterSaved = [this] { emit AfterSaved(); };
    m_book->optionIcon = [this](const QString &key) {
        QToolButton *b = m_frame->optionButton();
        b->setProperty("imageKey", key);
        b->setText(key == QLatin1String("Jnl1") ? QStringLiteral("合") : QStringLiteral("账"));
    };
    ColumnModel::define(*m_grid, *m_book);

    m_asker = [this](const QString &text, const QString &title) {
        return QMessageBox::question(this, title.isEmpty() ? Caption() : title, text,
                                     QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
    };

    connect(m_grid, &GridModel::cursorChanged, this, &Journal::onCursorChanged);
    connect(m_view, &GridView::mouseUp, this, [this](int button, int shift, float x, float y) {
        emit MouseUp(button, shift, x, y);
    });
    connect(m_frame->optionButton(), &QToolButton::clicked, this, [this] {
        m_menu->popup(m_frame->optionButton()->mapToGlobal(QPoint(0, m_frame->optionButton()->height())));
    });
    m_menu->bind(QStringLiteral("mnuCopy"), this, [this] { copySelection(); });
    m_menu->bind(QStringLiteral("mnuRecalc"), this, [this] { recalculateAll(); });
    m_menu->bind(QStringLiteral("mnuInsSumRow"), this, [this] { InsSumRow(); });
    m_menu->bind(QStringLiteral("mnuRemoveSumRow"), this, [this] { RemoveSumRow(); });
    m_menu->bind(QStringLiteral("mnuStatistics"), this, [this] { Prompt(Statistics(), true); });
    m_menu->bind(QStringLiteral("mnuRefresh"), this, [this] { refresh(); });
    m_menu->bind(QStringLiteral("mnuDefaultFormat"), this, [this] { defaultFormatCommand(); });
    connect(m_menu->item(QStringLiteral("mnuSideTask")), &QAction::triggered, this, [this](bool checked) {
        m_frame->setSidePanelVisible(checked);
        emit IconClick();
    });
    connect(m_menu->item(QStringLiteral("mnuPackJnl")), &QAction::toggled, this,
            [this](bool checked) { m_book->isPacked = checked; });
}

Journal::~Journal() = default;

void Journal::announce(const QString &name)
{
    emit propertyChanged(name);
}

bool Journal::hostCancels(const QString &command)
{
    bool cancel = false;
    emit CommandExecute(command, cancel);
    return cancel;
}

int Journal::rowOr(int row) const
{
    return row == 0 ? m_grid->row() : row;
}

void Journal::onCursorChanged(int row, int col)
{
    const bool rowMoved = row != m_lastRow;
    const bool colMoved = col != m_lastCol;
    m_lastRow = row;
    m_lastCol = col;
    if (rowMoved)
        emit AfterRowChanged();
    if (colMoved)
        emit AfterColChanged();
}

void Journal::contextMenuEvent(QContextMenuEvent *event)
{
    m_menu->popup(event->globalPos());
}

QMenu *Journal::contextMenu() const
{
    return m_menu;
}

QString Journal::Message() const { return m_message; }
void Journal::setMessage(const QString &value) { m_message = value; }

AccContext *Journal::Acc() const { return m_acc; }

void Journal::setAcc(AccContext *value)
{
    if (m_acc)
        disconnect(m_acc, nullptr, this, nullptr);
    m_acc = value;
    m_book->acc = value;
    if (value)
        connect(value, &AccContext::Announce, this, [this](const QString &message) { Prompt(message, false); });
}

QString Journal::Caption() const
{
    return m_frame->captionText().trimmed();
}

void Journal::setCaption(const QString &value)
{
    m_frame->setCaptionText(QStringLiteral("    ") + value);
}

QString Journal::FmtName() const { return QStringLiteral("流水账"); }
QString Journal::FmtFlag() const { return QString::number(m_book->docId); }
int Journal::fmtID() const { return m_book->docId; }

bool Journal::IsPackedJnl() const
{
    return m_menu->item(QStringLiteral("mnuPackJnl"))->isChecked();
}

void Journal::setIsPackedJnl(bool value)
{
    m_menu->item(QStringLiteral("mnuPackJnl"))->setChecked(value);
}

bool Journal::IsBottomClass() const { return m_book->isBottomClass; }

int Journal::AccID(int Row) const
{
    return int(m_grid->value(rowOr(Row), QStringLiteral("AccID")));
}

void Journal::setAccID(int value, int Row)
{
    m_grid->setText(rowOr(Row), QStringLiteral("AccID"), QString::number(value));
    m_book->accId = value;
}

QString Journal::accText(int accId, bool code) const
{
    // Reads of the context run under a trap: any failure gives empty text.
    if (!m_acc)
        return {};
    return code ? m_acc->GetAccCode(accId) : m_acc->GetAccName(accId, 0);
}

QString Journal::AccCode() const { return accText(m_book->accId, true); }
QString Journal::AccName() const { return accText(m_book->accId, false); }
int Journal::RelativeAccID() const { return m_book->relativeAccId; }
void Journal::setRelativeAccID(int value) { m_book->relativeAccId = value; }
QString Journal::RelativeAccCode() const { return accText(m_book->relativeAccId, true); }
QString Journal::RelativeAccName() const { return accText(m_book->relativeAccId, false); }

QString Journal::Direction() const { return m_book->direction; }

void Journal::setDirection(const QString &value)
{
    const QString kept = value == u"借" || value == u"贷" ? value : QString();
    if (kept == m_book->direction)
        return;
    m_book->direction = kept;
    calculate(m_grid->row());
}

QString Journal::ObjName() const { return QStringLiteral("JournalRec"); }
int Journal::LastSumRow() const { return m_book->lastSumRow; }
void Journal::setLastSumRow(int value) { m_book->lastSumRow = value; }
GridModel *Journal::Grid() const { return m_grid; }
GridView *Journal::gridView() const { return m_view; }

bool Journal::AllowAccDoc() const
{
    return m_grid->value(m_grid->row(), QStringLiteral("AccID")) != 0.0;
}

int Journal::Row() const { return m_grid->row(); }

void Journal::setRow(int value)
{
    if (!m_grid->isDataRow(value))
        return;
    if (m_grid->isRowHidden(value))
        m_grid->setRowHidden(value, false);
    const int col = m_grid->isDataCol(m_grid->col()) ? m_grid->col() : m_grid->fixedCols();
    m_grid->setCursor(value, col);
    const QModelIndex idx = m_grid->indexAt(value, col);
    const int topRow = m_view->rowAt(0);
    if (topRow >= 0 && idx.row() < topRow)
        m_view->scrollTo(idx, QAbstractItemView::PositionAtTop);
    else
        m_view->scrollTo(idx, QAbstractItemView::EnsureVisible);
}

bool Journal::AllowModify() const { return m_book->allowModify; }
void Journal::setAllowModify(bool value) { m_book->allowModify = m_book->docId < 1 ? false : value; }
bool Journal::AllowAudit() const { return m_book->allowAudit; }
int Journal::Rows() const { return m_grid->rows() - 1; }
bool Journal::IsDirty() const { return m_book->dirty; }

void Journal::setIsDirty(bool value)
{
    m_book->dirty = value;
    if (value)
        emit DataChanged(m_grid->colKey(m_grid->col()));
}

bool Journal::IsLastSumRow() const
{
    const int row = m_grid->row();
    if (row != m_book->lastSumRow || row + 1 >= m_grid->rows())
        return false;
    return !QDate::fromString(m_grid->text(row + 1, QStringLiteral("JnlDate")), Qt::ISODate).isValid();
}

int Journal::DocID() const { return m_book->docId; }

void Journal::setDocID(int value)
{
    if (!m_acc) {
        m_book->docId = value;
        return;
    }
    JournalDefinition(m_acc->Connection(), *m_book).read(value);
}

bool Journal::Load(int rDocID)
{
    const BookLoader::Outcome outcome = BookLoader(*m_grid, *m_book).load(rDocID);
    if (outcome == BookLoader::Loaded)
        emit AfterLoaded();
    return outcome == BookLoader::Loaded || outcome == BookLoader::Empty;
}

bool Journal::Save()
{
    return BookSaver(*m_grid, *m_book).save(Caption(), instanceNumber());
}

bool Journal::InsSumRow(int Row)
{
    return SummaryRows(*m_grid, *m_book).insert(Row);
}

bool Journal::RemoveSumRow(int Row)
{
    return SummaryRows(*m_grid, *m_book).remove(Row);
}

QString Journal::Statistics() const
{
    return SummaryRows(*m_grid, *m_book).statistics();
}

int Journal::instanceNumber() const
{
    // Any number that tells this control from the others in the host process.
    static int counter = 0;
    if (m_instance == 0)
        m_instance = ++counter;
    return m_instance;
}

void Journal::SetDefaultFormat()
{
    ColumnModel::define(*m_grid, *m_book);
}

void Journal::ApplyExplainTemplate(const QString &rTemplate)
{
    ColumnModel::applyExplainTemplate(*m_grid, *m_book, m_grid->row(), rTemplate);
}

void Journal::calculate(int startRow)
{
    BalanceCalculator(*m_grid, *m_book).calculate(startRow);
}

void Journal::recalculateAll()
{
    calculate(m_grid->fixedRows());
    Prompt(QStringLiteral("已经重新计算全部余额。"));
}

void Journal::refresh()
{
    if (!hostCancels(QStringLiteral("Refresh")))
        Load();
}

void Journal::defaultFormatCommand()
{
    if (hostCancels(QStringLiteral("BeforeFormat")))
        return;
    SetDefaultFormat();
    hostCancels(QStringLiteral("AfterFormated"));
}

void Journal::applyFormats()
{
    ColumnModel::applyFormats(*m_grid, *m_book);
}

QDate Journal::JnlDate() const
{
    return QDate::fromString(m_grid->text(m_grid->row(), QStringLiteral("JnlDate")), Qt::ISODate);
}

void Journal::setJnlDate(const QDate &value)
{
    const int row = m_grid->row();
    if (!m_grid->isDataRow(row))
        return;
    m_grid->setText(row, QStringLiteral("JnlDate"), value.toString(Qt::ISODate));
    const QString shown = m_grid->isSubtotal(row) ? value.toString(QStringLiteral("yyyy年MM月"))
                                                  : value.toString(QStringLiteral("yyyy年MM月dd日"));
    m_grid->setText(row, QStringLiteral("ShowName"), shown);
}

void Journal::Initial() {}

QString Journal::Get_AccCodeField(const QString &rFieldName, int rAccID)
{
    if (!m_acc)
        return {};
    const Database &db = m_acc->Connection();
    return db.firstRowField(db.dialect().accountById(rAccID), rFieldName).value().toString();
}

void Journal::Prompt(const QString &rMsg, bool ShowBox)
{
    emit Notify(rMsg, ShowBox);
}

void Journal::DoCommand(const QString &CommandName, const QString &CommandParameter)
{
    if (CommandName == QLatin1String("Copy")) {
        copySelection();
    } else if (CommandName == QLatin1String("Find")) {
        // Accepted and ignored: a find runs through Find().
    } else if (CommandName == QLatin1String("DefaultFormat")) {
        SetDefaultFormat();
    } else if (CommandName == QLatin1String("Refresh")) {
        refresh();
    } else if (CommandName == QLatin1String("AfterSetFormat") || CommandName == QLatin1String("SetColFont")) {
        applyFormats();
    } else if (CommandName == QLatin1String("SideVisible")) {
        const bool on = CommandParameter == QLatin1String("True");
        m_menu->item(QStringLiteral("mnuSideTask"))->setChecked(on);
        m_frame->setSidePanelVisible(on);
    }
}

void Journal::copySelection()
{
    QApplication::clipboard()->setText(GridClipboard::selectedText(*m_grid));
}

void Journal::setAsker(std::function<bool(const QString &, const QString &)> asker)
{
    if (asker)
        m_asker = std::move(asker);
}

bool Journal::ask(const QString &text, const QString &title) const
{
    return m_asker(text, title);
}

} // namespace kx
