#include "control/LayoutController.h"

#include "control/JournalFrame.h"
#include "control/JournalMenu.h"
#include "control/JournalPrivate.h"
#include "editing/EditSession.h"
#include "grid/GridViewPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridView.h"
#include "kxjournal/Journal.h"
#include "ledger/ColumnFit.h"
#include "ledger/JournalColumns.h"
#include "menu/FieldChoice.h"
#include "menu/MenuConditions.h"
#include "output/BookSheet.h"

#include <QClipboard>
#include <QCursor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QTimer>

namespace kx {

namespace {

// Widths are measured as the grid paints: the cell's font on the screen.
int measureText(const QString &text, const QFont &font)
{
    return QFontMetrics(font).horizontalAdvance(text);
}

} // namespace

void LayoutController::setUp()
{
    fieldMenu = new QMenu(d.menu);
    fieldMenu->setObjectName(QStringLiteral("fieldMenu"));
    if (QAction *fields = d.menu->item(CommandId::FieldShow))
        fields->setMenu(fieldMenu);
    QObject::connect(fieldMenu, &QMenu::aboutToShow, d.q, [this] {
        fieldMenu->clear();
        for (const FieldChoice::Field &field : FieldChoice(d.book).fields()) {
            QAction *a = fieldMenu->addAction(field.text);
            a->setObjectName(QStringLiteral("fld") + field.key);
            a->setCheckable(true);
            a->setChecked(field.shown);
            const QString fieldKey = field.key;
            QObject::connect(a, &QAction::toggled, d.q, [this, fieldKey](bool on) {
                if (!FieldChoice(d.book).setShown(fieldKey, on))
                    return;
                if (on)
                    fitColumns();
                Q_EMIT d.q->propertyChanged(QStringLiteral("FieldShow"));
                d.cancels(QStringLiteral("AfterFieldShow"));
            });
        }
    });

    QObject::connect(d.view, &GridView::columnResized, d.q, [this](int col, int width) {
        FieldChoice(d.book).rememberWidth(col, width);
        Q_EMIT d.q->propertyChanged(QStringLiteral("ColumnWidths"));
    });
    QObject::connect(d.frame, &JournalFrame::sizesChanged, d.q,
                     [this] { Q_EMIT d.q->propertyChanged(QStringLiteral("LayoutSizes")); });
    GridViewPrivate::get(d.view).setWarnNegativeKeys({JournalColumns::key(JournalColumns::Balance),
                               JournalColumns::key(JournalColumns::fxBalance)});

    // Figures typed or worked out may outgrow their column: the rows that
    // changed are looked at once the change is over.
    auto *refit = new QTimer(d.q);
    refit->setSingleShot(true);
    refit->setInterval(0);
    QObject::connect(refit, &QTimer::timeout, d.q, [this, refit] {
        // The grid is still being rewritten: its rows are looked at afterwards.
        if (!d.grid->tag().isEmpty()) {
            refit->start(50);
            return;
        }
        refit->setInterval(0);
        const std::vector<std::pair<int, int>> changed = std::exchange(m_refitRows, {});
        ColumnFit fit(d.book, measureText);
        for (int col = 0; col < int(changed.size()) && col < d.grid->cols(); ++col) {
            if (changed[std::size_t(col)].first >= 0)
                fit.fitFigures(changed[std::size_t(col)].first, changed[std::size_t(col)].second, col, col);
        }
    });
    QObject::connect(d.grid, &QAbstractItemModel::dataChanged, refit,
                     [this, refit](const QModelIndex &from, const QModelIndex &to) {
                         const int a = d.grid->gridRow(from), b = d.grid->gridRow(to);
                         const int l = d.grid->gridCol(from), r = d.grid->gridCol(to);
                         if (a < 0 || l < 0)
                             return;
                         if (m_refitRows.size() <= std::size_t(r))
                             m_refitRows.resize(std::size_t(r) + 1, {-1, -1});
                         for (int col = l; col <= r; ++col) {
                             std::pair<int, int> &rows = m_refitRows[std::size_t(col)];
                             rows.first = rows.first < 0 ? a : std::min(rows.first, a);
                             rows.second = std::max(rows.second, b);
                         }
                         refit->start();
                     });

    QObject::connect(d.grid, &Sheet::selectionBlockChanged, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.grid, &Sheet::cursorChanged, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.grid, &QAbstractItemModel::dataChanged, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.grid, &QAbstractItemModel::rowsInserted, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.grid, &QAbstractItemModel::rowsRemoved, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.grid, &QAbstractItemModel::modelReset, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.q, &Journal::bookChanged, d.q, [this] { syncMenuSoon(); });
    QObject::connect(d.q, &Journal::dirtyChanged, d.q, [this] { syncMenuSoon(); });
    // Read when it changes, not at every look: asking another program's
    // clipboard may wait on that program.
    if (auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        const auto readClipboard = [this, app] {
            const QMimeData *data = app->clipboard()->mimeData();
            clipboardHasText = data && data->hasText();
            syncMenuSoon();
        };
        QObject::connect(app->clipboard(), &QClipboard::dataChanged, d.q, readClipboard);
        readClipboard();
    }
    QObject::connect(d.q, &Journal::AfterLoaded, d.q, [this] {
        const QString period = BookSheet(*d.grid).period();
        d.frame->setPeriodText(period.isEmpty() ? QString() : QStringLiteral("期间：") + period);
    });
    applyLooks();
    fitColumns();
}

bool LayoutController::menuAllows(CommandCondition condition) const
{
    MenuFacts facts;
    facts.clipboardHasText = clipboardHasText;
    facts.canUndo = d.q->canUndo();
    facts.canRedo = d.q->canRedo();
    facts.connected = d.context() && d.context()->Connection().isOpen();
    return MenuConditions(d.edit->context(), facts).holds(condition);
}

void LayoutController::syncMenuSoon()
{
    // Many changes come at once (a paste, a load): the states are read once after them.
    if (m_menuSyncDue || !d.menu)
        return;
    m_menuSyncDue = true;
    QTimer::singleShot(0, d.menu, [this] {
        m_menuSyncDue = false;
        d.menu->sync();
    });
}

void LayoutController::openFieldMenu()
{
    fieldMenu->popup(QCursor::pos());
}

void LayoutController::fitColumns()
{
    ColumnFit fit(d.book, measureText);
    fit.fitFigures();
    fit.fitLabels();
    // The date and the number stay in sight while the rest scrolls sideways,
    // unless the user moved the number far from the date.
    const JournalColumns columns(*d.grid);
    const int date = columns[JournalColumns::ShowName];
    const int number = columns[JournalColumns::JnlNo];
    const int last = number > date && number <= date + 3 ? number : date;
    d.view->setFrozenColumns(last >= d.grid->fixedCols() ? last - d.grid->fixedCols() + 1 : 0);
}

void LayoutController::applyLooks()
{
    d.view->setHotBackColor(d.state.looks.hotBackColor);
    d.view->setWarnBackColor(d.state.looks.warnBackColor);
}

} // namespace kx
