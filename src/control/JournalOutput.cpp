// Journal: output — find, export, print. The work is OutputController's.
#include "kxjournal/Journal.h"

#include "control/JournalPrivate.h"
#include "control/OutputController.h"
#include "grid/Sheet.h"

namespace kx {

void Journal::Find(const QString &rSearchString, bool FromNextRow)
{
    // Every search covers the whole book: where the cursor is does not matter.
    Q_UNUSED(FromNextRow)
    const std::shared_ptr<JournalPrivate> keep = d;
    keep->output->find(rSearchString);
}

GridModel *Journal::PrintGrid() const { return d->output->printGrid; }
void Journal::setFileNameAsker(std::function<QString(const QString &suggested)> asker) { d->output->fileNameAsker = std::move(asker); }

void Journal::Export(int rType)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    const QString path = keep->output->exportBook(true, QString(), rType);
    // A handler may have deleted the control while the book was written.
    if (!path.isEmpty() && keep->alive())
        Q_EMIT AfterExport(path);
}

bool Journal::ExportToFile(const QString &rFileName, int rType)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    const QString path = keep->output->exportBook(false, rFileName, rType);
    if (!path.isEmpty() && keep->alive())
        Q_EMIT AfterExport(path);
    return !path.isEmpty();
}

bool Journal::printToPdf(const QString &fileName)
{
    const std::shared_ptr<JournalPrivate> keep = d;
    return keep->output->printToPdf(fileName);
}

} // namespace kx
