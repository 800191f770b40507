#include "control/OutputController.h"

#include "control/FindBar.h"
#include "control/JournalFrame.h"
#include "control/JournalPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/GridView.h"
#include "kxjournal/Journal.h"
#include "output/BookExporter.h"
#include "output/BookFinder.h"
#include "output/BookPrinter.h"
#include "output/FileOutput.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QStandardPaths>

namespace kx {

OutputController::OutputController(JournalPrivate &d) : d(d) {}
OutputController::~OutputController() = default;

void OutputController::setUp()
{
    printGrid = new Sheet(d.q);
    printGrid->setObjectName(QStringLiteral("fg1"));
    findBar = new FindBar(*d.grid, d.frame);
    d.frame->addFooter(findBar);
    QObject::connect(findBar, &FindBar::rowChosen, d.q, [this](int row) {
        d.q->setRow(row);
        d.grid->setCursor(row, std::max(d.grid->col(), d.grid->fixedCols()));
    });
    QObject::connect(findBar, &FindBar::closed, d.q, [this] { d.view->setFocus(); });
    fileNameAsker = [this](const QString &suggested) {
        // The dialog adds the chosen kind's extension itself, so the name it
        // asks about overwriting is the name written.
        const QStringList filters{QStringLiteral("逗号分隔 (*.csv)"), QStringLiteral("制表符分隔 (*.tsv *.txt)"),
                                  QStringLiteral("电子表格 (*.xlsx)")};
        const QStringList suffixes{QStringLiteral("csv"), QStringLiteral("tsv"), QStringLiteral("xlsx")};
        QFileDialog dialog(d.q, QStringLiteral("导出"), suggested);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setNameFilters(filters);
        const int start = std::max(0, int(suffixes.indexOf(QFileInfo(suggested).suffix())));
        dialog.selectNameFilter(filters[start]);
        dialog.setDefaultSuffix(suffixes[start]);
        QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&](const QString &filter) {
            dialog.setDefaultSuffix(suffixes.value(int(filters.indexOf(filter)), suffixes[0]));
        });
        return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
    };
}

void OutputController::openFindBar()
{
    findBar->open();
}

QStringList OutputController::databaseFiles()
{
    AccContext *acc = d.context();
    if (!acc || acc->Connection().engine() != Database::SqliteEngine)
        return {};
    return FileOutput::databaseFiles(acc->Connection().handle().databaseName());
}

QString OutputController::exportBook(bool ask, QString path, int type)
{
    if (Result<void> known = BookExporter::checkType(type); !known.ok()) {
        d.failure(known.error(), false);
        return QString();
    }
    // The host's veto and the question for a name come before the operation
    // starts, so the name is asked for without the wait cursor.
    const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
    const QPointer<Journal> alive(d.q);
    if (!d.mayStart() || d.cancels(QStringLiteral("Export")) || !alive)
        return QString();
    const auto kind = BookExporter::Type(type);
    if (ask) {
        const QString book = d.state.book.journalName.trimmed();
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        const QString suggested = QDir(folder).filePath((book.isEmpty() ? QStringLiteral("日记账") : book) +
                                                        BookExporter::suffix(BookExporter::typeFor(QString(), kind)));
        path = fileNameAsker ? fileNameAsker(suggested) : QString();
        if (!alive || path.isEmpty())
            return QString();
        if (QFileInfo(path).suffix().isEmpty())
            path += BookExporter::suffix(BookExporter::typeFor(path, kind));
    }
    return d.exclusive(QStringLiteral("Export"), QString(), [&] {
        if (!d.settleEditor() || !alive)
            return QString();
        const Result<int> written = BookExporter(d.book).write(path, type, d.q->Caption(), databaseFiles());
        if (!alive)
            return QString();
        if (!written.ok()) {
            d.failure(written.error(), false);
            return QString();
        }
        d.prompt(QStringLiteral("已导出到 %1").arg(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath())), false);
        // Texts the spreadsheet had to cut are said, never passed over.
        if (const QString cut = BookExporter::cutNotice(written.value()); !cut.isEmpty() && alive)
            d.prompt(cut, true);
        return path;
    });
}

void OutputController::printPreview()
{
    const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
    if (!d.mayStart() || d.cancels(QStringLiteral("Print")) || !d.alive() || !d.settleEditor() || !d.alive())
        return;
    if (!printer) {
        printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        BookPrinter::setUpPage(*printer);
    }
    auto *dialog = new QPrintPreviewDialog(printer.get(), d.q);
    dialog->setObjectName(QStringLiteral("printPreview"));
    dialog->setWindowTitle(QStringLiteral("打印预览 - %1").arg(d.q->Caption().trimmed()));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QPrintPreviewDialog::paintRequested, d.q, [this](QPrinter *target) {
        d.exclusive(QStringLiteral("Print"), false, [&] {
            const Result<void> printed = BookPrinter(*d.grid, *printGrid, d.q->Caption(), d.grid->font()).print(*target);
            if (!printed.ok())
                d.failure(printed.error(), false);
            return printed.ok();
        });
    });
    dialog->open();
}

void OutputController::find(const QString &text)
{
    const Result<QVector<BookFinder::Hit>> hits = BookFinder(*d.grid).find(text);
    if (!hits.ok()) {
        d.q->Prompt(hits.error());
        return;
    }
    // A host's handler may close the control while it is told the hits.
    const QPointer<Journal> alive(d.q);
    Q_EMIT alive->FindMsg(QStringLiteral("#BEGIN#"));
    for (const BookFinder::Hit &hit : hits.value()) {
        if (!alive)
            return;
        Q_EMIT alive->FindMsg(hit.description);
    }
    if (!alive)
        return;
    Q_EMIT alive->FindMsg(QStringLiteral("#END#"));
    if (alive)
        alive->Prompt(QStringLiteral("找到记录共 %1 条。").arg(hits.value().size()));
}

bool OutputController::printToPdf(const QString &fileName)
{
    JournalPrivate *const p = &d;
    return p->exclusive(QStringLiteral("Print"), false, [this, p, &fileName] {
        if (p->cancels(QStringLiteral("Print")) || !p->settleEditor() || !p->alive())
            return false;
        const Result<void> printed =
            BookPrinter(*p->grid, *printGrid, p->caption, p->grid->font()).printToPdf(fileName, databaseFiles());
        if (!printed.ok())
            p->failure(printed.error(), false);
        return printed.ok();
    });
}

} // namespace kx
