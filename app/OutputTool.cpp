#include "OutputTool.h"

#include "ToolBook.h"

#include <QFileInfo>
#include <QStringList>
#include <cstdio>
#include <functional>

namespace {

// Loads book \a code of \a url and runs \a write on it; prints the path written.
int withBook(const QString &url, const QString &code, const QString &out,
             const std::function<bool(kx::BookSession &)> &write)
{
    return ToolBook::run(url, code, [&](ToolBook &book) {
        // What the control would show in a box beside a written file (texts
        // a spreadsheet cut) is said on stderr, not passed over.
        book.host().takeBoxes();
        if (!write(book.session()))
            return book.fail();
        for (const QString &notice : book.host().takeBoxes())
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
    return withBook(url, code, out, [&](kx::BookSession &session) { return !session.exportTo(out, kind).isEmpty(); });
}

int OutputTool::print(const QString &url, const QString &code, const QString &out)
{
    return withBook(url, code, out, [&](kx::BookSession &session) { return session.printToPdf(out); });
}
