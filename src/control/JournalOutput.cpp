// Journal: output — find, export, print.
#include "kxjournal/Journal.h"

#include "control/FindBar.h"
#include "control/JournalFrame.h"
#include "control/JournalPrivate.h"
#include "grid/Sheet.h"
#include "kxjournal/GridView.h"
#include "output/BookExporter.h"
#include "output/BookFinder.h"
#include "output/BookPrinter.h"
#include "output/FileOutput.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QStandardPaths>

namespace kx {

void JournalPrivate::setUpOutput()
{
    printGrid = new Sheet(q);
    printGrid->setObjectName(QStringLiteral("fg1"));
    findBar = new FindBar(*grid, frame);
    frame->addFooter(findBar);
    QObject::connect(findBar, &FindBar::rowChosen, q, [this](int row) {
        q->setRow(row);
        grid->setCursor(row, std::max(grid->col(), grid->fixedCols()));
    });
    QObject::connect(findBar, &FindBar::closed, q, [this] { view->setFocus(); });
    fileNameAsker = [this](const QString &suggested) {
        // The dialog adds the chosen kind's extension itself, so the name it
        // asks about overwriting is the name written.
        const QStringList filters{QStringLiteral("逗号分隔 (*.csv)"), QStringLiteral("制表符分隔 (*.tsv *.txt)"),
                                  QStringLiteral("电子表格 (*.xlsx)")};
        const QStringList suffixes{QStringLiteral("csv"), QStringLiteral("tsv"), QStringLiteral("xlsx")};
        QFileDialog dialog(q, QStringLiteral("导出"), suggested);
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

void JournalPrivate::openFindBar()
{
    findBar->open();
}

QStringList JournalPrivate::databaseFiles()
{
    AccContext *acc = context();
    if (!acc || acc->Connection().engine() != Database::SqliteEngine)
        return {};
    return FileOutput::databaseFiles(acc->Connection().handle().databaseName());
}

QString JournalPrivate::exportBook(bool ask, QString path, int type)
{
    if (Result<void> known = BookExporter::checkType(type); !known.ok()) {
        failure(known.error(), false);
        return QString();
    }
    // The host's veto and the question for a name come before the operation
    // starts, so the name is asked for without the wait cursor.
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    const QPointer<Journal> alive(q);
    if (!mayStart() || cancels(QStringLiteral("Export")) || !alive)
        return QString();
    const auto kind = BookExporter::Type(type);
    if (ask) {
        const QString book = state.book.journalName.trimmed();
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        const QString suggested = QDir(folder).filePath((book.isEmpty() ? QStringLiteral("日记账") : book) +
                                                        BookExporter::suffix(BookExporter::typeFor(QString(), kind)));
        path = fileNameAsker ? fileNameAsker(suggested) : QString();
        if (!alive || path.isEmpty())
            return QString();
        if (QFileInfo(path).suffix().isEmpty())
            path += BookExporter::suffix(BookExporter::typeFor(path, kind));
    }
    return exclusive(QStringLiteral("Export"), QString(), [&] {
        if (!settleEditor() || !alive)
            return QString();
        const Result<int> written = BookExporter(*grid, *this).write(path, type, q->Caption(), databaseFiles());
        if (!alive)
            return QString();
        if (!written.ok()) {
            failure(written.error(), false);
            return QString();
        }
        prompt(QStringLiteral("已导出到 %1").arg(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath())), false);
        // Texts the spreadsheet had to cut are said, never passed over.
        if (const QString cut = BookExporter::cutNotice(written.value()); !cut.isEmpty() && alive)
            prompt(cut, true);
        return path;
    });
}

void JournalPrivate::printPreview()
{
    const std::shared_ptr<JournalPrivate> keep = shared_from_this();
    if (!mayStart() || cancels(QStringLiteral("Print")) || !alive() || !settleEditor() || !alive())
        return;
    if (!printer) {
        printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        BookPrinter::setUpPage(*printer);
    }
    auto *dialog = new QPrintPreviewDialog(printer.get(), q);
    dialog->setObjectName(QStringLiteral("printPreview"));
    dialog->setWindowTitle(QStringLiteral("打印预览 - %1").arg(q->Caption().trimmed()));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QPrintPreviewDialog::paintRequested, q, [this](QPrinter *target) {
        exclusive(QStringLiteral("Print"), false, [&] {
            const Result<void> printed = BookPrinter(*grid, *printGrid, q->Caption(), grid->font()).print(*target);
            if (!printed.ok())
                failure(printed.error(), false);
            return printed.ok();
        });
    });
    dialog->open();
}

void Journal::Find(const QString &rSearchString, bool FromNextRow)
{
    // Every search covers the whole book: where the cursor is does not matter.
    Q_UNUSED(FromNextRow)
    const Result<QVector<BookFinder::Hit>> hits = BookFinder(*d->grid).find(rSearchString);
    if (!hits.ok()) {
        Prompt(hits.error());
        return;
    }
    // A host's handler may close the control while it is told the hits.
    const QPointer<Journal> alive(this);
    Q_EMIT FindMsg(QStringLiteral("#BEGIN#"));
    for (const BookFinder::Hit &hit : hits.value()) {
        if (!alive)
            return;
        Q_EMIT FindMsg(hit.description);
    }
    if (!alive)
        return;
    Q_EMIT FindMsg(QStringLiteral("#END#"));
    if (alive)
        Prompt(QStringLiteral("找到记录共 %1 条。").arg(hits.value().size()));
}

GridModel *Journal::PrintGrid() const { return d->printGrid; }
void Journal::setFileNameAsker(std::function<QString(const QString &suggested)> asker) { d->fileNameAsker = std::move(asker); }

void Journal::Export(int rType)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    const QString path = keep->exportBook(true, QString(), rType);
    // A handler may have deleted the control while the book was written.
    if (!path.isEmpty() && keep->alive())
        Q_EMIT AfterExport(path);
}

bool Journal::ExportToFile(const QString &rFileName, int rType)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    const QString path = keep->exportBook(false, rFileName, rType);
    if (!path.isEmpty() && keep->alive())
        Q_EMIT AfterExport(path);
    return !path.isEmpty();
}

bool Journal::printToPdf(const QString &fileName)
{
    JournalPrivate *const p = d.get();
    return p->exclusive(QStringLiteral("Print"), false, [p, &fileName] {
        if (p->cancels(QStringLiteral("Print")) || !p->settleEditor() || !p->alive())
            return false;
        const Result<void> printed =
            BookPrinter(*p->grid, *p->printGrid, p->caption, p->grid->font()).printToPdf(fileName, p->databaseFiles());
        if (!printed.ok())
            p->failure(printed.error(), false);
        return printed.ok();
    });
}

} // namespace kx
