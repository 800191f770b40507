#include "OutputTool.h"

#include "ToolBook.h"

#include <kxjournal/Journal.h>

#include <QFileInfo>
#include <cstdio>

int OutputTool::exportBook(const QString &url, const QString &code, const QString &out, const QString &type)
{
    static const QStringList types{QString(), QStringLiteral("csv"), QStringLiteral("tsv"), QStringLiteral("xlsx")};
    const int kind = int(types.indexOf(type.toLower()));
    if (kind < 0) {
        std::fprintf(stderr, "kxjournal: --type must be csv, tsv or xlsx\n");
        return 2;
    }
    ToolBook book;
    if (!book.open(url, code))
        return 1;
    kx::Journal journal;
    if (!book.load(journal))
        return 1;
    if (!journal.ExportToFile(out, kind))
        return book.fail();
    std::printf("%s\n", qPrintable(QFileInfo(out).absoluteFilePath()));
    return 0;
}

int OutputTool::print(const QString &url, const QString &code, const QString &out)
{
    ToolBook book;
    if (!book.open(url, code))
        return 1;
    kx::Journal journal;
    if (!book.load(journal))
        return 1;
    if (!journal.printToPdf(out))
        return book.fail();
    std::printf("%s\n", qPrintable(QFileInfo(out).absoluteFilePath()));
    return 0;
}
