#include "OutputTool.h"

#include "ToolBook.h"

#include <kxjournal/Journal.h>

#include <QFileInfo>
#include <QStringList>
#include <cstdio>
#include <functional>

namespace {

// Loads book \a code of \a url into a control drawn nowhere and runs \a write
// on it; prints the path written.
int withBook(const QString &url, const QString &code, const QString &out, const std::function<bool(kx::Journal &)> &write)
{
    return ToolBook::run(url, code, [&](ToolBook &book, kx::Journal &journal) {
        // What the control would show in a box beside a written file (texts
        // a spreadsheet cut) is said on stderr, not passed over.
        QStringList notices;
        QObject::connect(&journal, &kx::Journal::Notify, [&](const QString &message, bool box) {
            if (box)
                notices << message;
        });
        if (!write(journal))
            return book.fail();
        for (const QString &notice : notices)
            std::fprintf(stderr, "kxjournal: %s\n", qPrintable(notice));
        std::printf("%s\n", qPrintable(QFileInfo(out).absoluteFilePath()));
        return 0;
    });
}

} // namespace

int OutputTool::exportBook(const QString &url, const QString &code, const QString &out, const QString &type)
{
    static const QStringList types{QString(), QStringLiteral("csv"), QStringLiteral("tsv"), QStringLiteral("xlsx")};
    const int kind = int(types.indexOf(type.toLower()));
    if (kind < 0) {
        std::fprintf(stderr, "kxjournal: --type must be csv, tsv or xlsx\n");
        return 2;
    }
    return withBook(url, code, out, [&](kx::Journal &journal) { return journal.ExportToFile(out, kind); });
}

int OutputTool::print(const QString &url, const QString &code, const QString &out)
{
    return withBook(url, code, out, [&](kx::Journal &journal) { return journal.printToPdf(out); });
}
