// Journal: the layout — frozen columns, the show-fields list, widths that fit
// the figures, the looks the host set, and menu states kept current.
#include "control/JournalFrame.h"
#include "grid/GridViewPrivate.h"
#include "control/JournalMenu.h"
#include "control/JournalPrivate.h"
#include "editing/EditSession.h"
#include "grid/Sheet.h"
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

void JournalPrivate::setUpLayout()
{
    fieldMenu = new QMenu(menu);
    fieldMenu->setObjectName(QStringLiteral("fieldMenu"));
    if (QAction *fields = menu->item(CommandId::FieldShow))
        fields->setMenu(fieldMenu);
    QObject::connect(fieldMenu, &QMenu::aboutToShow, q, [this] {
        fieldMenu->clear();
        for (const FieldChoice::Field &field : FieldChoice(*grid, state).fields()) {
            QAction *a = fieldMenu->addAction(field.text);
            a->setObjectName(QStringLiteral("fld") + field.key);
            a->setCheckable(true);
            a->setChecked(field.shown);
            const QString fieldKey = field.key;
            QObject::connect(a, &QAction::toggled, q, [this, fieldKey](bool on) {
                if (!FieldChoice(*grid, state).setShown(fieldKey, on))
                    return;
                if (on)
                    fitColumns();
                Q_EMIT q->propertyChanged(QStringLiteral("FieldShow"));
                cancels(QStringLiteral("AfterFieldShow"));
            });
        }
    });

    QObject::connect(view, &GridView::columnResized, q, [this](int col, int width) {
        FieldChoice(*grid, state).rememberWidth(col, width);
        Q_EMIT q->propertyChanged(QStringLiteral("ColumnWidths"));
    });
    QObject::connect(frame, &JournalFrame::sizesChanged, q,
                     [this] { Q_EMIT q->propertyChanged(QStringLiteral("LayoutSizes")); });
    GridViewPrivate::get(view).setWarnNegativeKeys({JournalColumns::key(JournalColumns::Balance),
                               JournalColumns::key(JournalColumns::fxBalance)});

    // Figures typed or worked out may outgrow their column: the rows that
    // changed are looked at once the change is over.
    auto *refit = new QTimer(q);
    refit->setSingleShot(true);
    refit->setInterval(0);
    QObject::connect(refit, &QTimer::timeout, q, [this, refit] {
        // The grid is still being rewritten: its rows are looked at afterwards.
        if (!grid->tag().isEmpty()) {
            refit->start(50);
            return;
        }
        refit->setInterval(0);
        const int first = refitFirst, last = refitLast;
        refitFirst = refitLast = -1;
        if (first >= 0)
            ColumnFit(*grid, state, measureText).fitFigures(first, last);
    });
    QObject::connect(grid, &QAbstractItemModel::dataChanged, refit,
                     [this, refit](const QModelIndex &from, const QModelIndex &to) {
                         const int a = grid->gridRow(from), b = grid->gridRow(to);
                         refitFirst = refitFirst < 0 ? a : std::min(refitFirst, a);
                         refitLast = std::max(refitLast, b);
                         refit->start();
                     });

    QObject::connect(grid, &Sheet::selectionBlockChanged, q, [this] { syncMenuSoon(); });
    QObject::connect(grid, &Sheet::cursorChanged, q, [this] { syncMenuSoon(); });
    QObject::connect(grid, &QAbstractItemModel::dataChanged, q, [this] { syncMenuSoon(); });
    QObject::connect(grid, &QAbstractItemModel::rowsInserted, q, [this] { syncMenuSoon(); });
    QObject::connect(grid, &QAbstractItemModel::rowsRemoved, q, [this] { syncMenuSoon(); });
    QObject::connect(grid, &QAbstractItemModel::modelReset, q, [this] { syncMenuSoon(); });
    QObject::connect(q, &Journal::bookChanged, q, [this] { syncMenuSoon(); });
    QObject::connect(q, &Journal::dirtyChanged, q, [this] { syncMenuSoon(); });
    // Read when it changes, not at every look: asking another program's
    // clipboard may wait on that program.
    if (auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        const auto readClipboard = [this, app] {
            const QMimeData *data = app->clipboard()->mimeData();
            clipboardHasText = data && data->hasText();
            syncMenuSoon();
        };
        QObject::connect(app->clipboard(), &QClipboard::dataChanged, q, readClipboard);
        readClipboard();
    }
    QObject::connect(q, &Journal::AfterLoaded, q, [this] {
        const QString period = BookSheet(*grid).period();
        frame->setPeriodText(period.isEmpty() ? QString() : QStringLiteral("期间：") + period);
    });
    applyLooks();
    fitColumns();
}

bool JournalPrivate::menuAllows(CommandCondition condition) const
{
    MenuFacts facts;
    facts.clipboardHasText = clipboardHasText;
    facts.canUndo = q->canUndo();
    facts.canRedo = q->canRedo();
    return MenuConditions(edit->context(), facts).holds(condition);
}

void JournalPrivate::syncMenuSoon()
{
    // Many changes come at once (a paste, a load): the states are read once after them.
    if (menuSyncDue || !menu)
        return;
    menuSyncDue = true;
    QTimer::singleShot(0, menu, [this] {
        menuSyncDue = false;
        menu->sync();
    });
}

void JournalPrivate::openFieldMenu()
{
    fieldMenu->popup(QCursor::pos());
}

void JournalPrivate::fitColumns()
{
    ColumnFit fit(*grid, state, measureText);
    fit.fitFigures();
    fit.fitLabels();
    // The date and the number stay in sight while the rest scrolls sideways,
    // unless the user moved the number far from the date.
    const JournalColumns columns(*grid);
    const int date = columns[JournalColumns::ShowName];
    const int number = columns[JournalColumns::JnlNo];
    const int last = number > date && number <= date + 3 ? number : date;
    view->setFrozenColumns(last >= grid->fixedCols() ? last - grid->fixedCols() + 1 : 0);
}

void JournalPrivate::applyLooks()
{
    view->setHotBackColor(state.looks.hotBackColor);
    view->setWarnBackColor(state.looks.warnBackColor);
}

} // namespace kx
