#include "DemoShot.h"

#include "DemoWindow.h"

#include <kxjournal/AccountPicker.h>
#include <kxjournal/EditCycle.h>
#include <kxjournal/GridModel.h>
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <cstdio>

namespace {

struct Beside {
    const char *item;
    const char *name;
    const char *what;
    int height;
};

// The window a shot opens beside the journal, or none.
const Beside *besideOf(const Shot &shot)
{
    static const Beside preview{"mnuPrint", "printPreview", "print preview", 820};
    static const Beside reconcile{"mnuReconcile", "reconcileView", "reconciliation view", 600};
    static const Beside daily{"mnuDailyReport", "dailyReportView", "daily fund report", 640};
    return shot.preview ? &preview : shot.reconcile ? &reconcile : shot.daily ? &daily : nullptr;
}

// Opens the explanation list on the empty row under the last record; the
// list's window, or nullptr.
QWidget *openExplainList(kx::Journal *journal)
{
    kx::GridModel *grid = journal->Grid();
    const int col = grid->colIndex(QStringLiteral("Explain"));
    const int row = grid->rows() - 1;
    grid->setCursor(row, col);
    journal->gridView()->edit(grid->indexAt(row, col));
    auto *box = qobject_cast<QComboBox *>(journal->gridView()->activeEditor());
    if (!box)
        return nullptr;
    box->showPopup();
    return box->view()->window();
}

// The daily fund report of this month so far, for every book.
void showMonthOfAllBooks(QWidget *view)
{
    auto *from = view->findChild<QDateEdit *>(QStringLiteral("dailyFrom"));
    auto *scope = view->findChild<QComboBox *>(QStringLiteral("dailyScope"));
    if (from)
        from->setDate(QDate(from->date().year(), from->date().month(), 1));
    if (scope)
        scope->setCurrentIndex(scope->count() - 1);
}

} // namespace

int takeShot(DemoWindow &window, const Shot &shot)
{
    kx::Journal *journal = window.journal();
    // Show the latest records, as a bookkeeper opening the book would see them.
    journal->setRow(journal->Rows());
    QWidget *over = nullptr;
    if (shot.side)
        journal->DoCommand(QStringLiteral("SideVisible"), QStringLiteral("True"));
    if (!shot.pickerSearch.isNull()) {
        kx::GridModel *grid = journal->Grid();
        const int col = grid->colIndex(QStringLiteral("AccName"));
        grid->setCursor(journal->Rows(), col);
        journal->gridView()->edit(grid->indexAt(journal->Rows(), col));
        grid->editCycle()->clickButton();
        journal->accountPicker()->setSearchText(shot.pickerSearch);
    }
    if (shot.explainList && !(over = openExplainList(journal))) {
        std::fprintf(stderr, "kxjournal: the explanation list did not open\n");
        return 1;
    }
    if (shot.menu) {
        const int row = std::max(journal->Rows() - 24, 1);
        journal->Grid()->setCursor(row, journal->Grid()->colIndex(QStringLiteral("Explain")));
        const QRect cell = journal->gridView()->visualRect(journal->Grid()->indexAt(row, journal->Grid()->colIndex(QStringLiteral("Explain"))));
        // Opened high enough that the whole menu lies inside the window's picture.
        QPoint at = journal->gridView()->viewport()->mapToGlobal(cell.center());
        const int bottom = window.mapToGlobal(QPoint(0, window.height())).y();
        at.setY(std::max(window.mapToGlobal(QPoint(0, 0)).y(),
                         std::min(at.y(), bottom - journal->contextMenu()->sizeHint().height() - 4)));
        journal->contextMenu()->popup(at);
        over = journal->contextMenu();
    }
    const Beside *beside = besideOf(shot);
    if (beside) {
        journal->menuAction(QLatin1String(beside->item))->trigger();
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->objectName() == QLatin1String(beside->name) && w->isVisible())
                over = w;
        if (!over) {
            std::fprintf(stderr, "kxjournal: the %s did not open\n", beside->what);
            return 1;
        }
        over->resize(1180, beside->height);
        if (shot.daily)
            showMonthOfAllBooks(over);
    }
    QCoreApplication::processEvents();
    // The chart's figures come in one pass of events, its layout in the next ones.
    for (int pass = 0; shot.side && pass < 3; ++pass)
        QCoreApplication::processEvents();
    QPixmap picture;
    if (beside) {
        picture = over->grab();
    } else {
        picture = window.grab();
        if (over) {
            QPainter painter(&picture);
            painter.drawPixmap(window.mapFromGlobal(over->mapToGlobal(QPoint(0, 0))), over->grab());
        }
    }
    if (!picture.save(shot.file)) {
        std::fprintf(stderr, "kxjournal: cannot write %s\n", qPrintable(shot.file));
        return 1;
    }
    return 0;
}
