#include "CheckTool.h"

#include "ToolBook.h"

#include <cstdio>

namespace {

// The check stops on the first row out of order and puts the cursor there.
int checkLoaded(ToolBook &book, const QString &code)
{
    book.host().takeBoxes();
    kx::BookSession &session = book.session();
    if (session.check()) {
        std::printf("kxjournal: %s: 账簿检查完毕，没有发现错误。\n", qPrintable(code));
        return 0;
    }
    const kx::GridModel &grid = session.sheet();
    const int row = grid.row();
    const QString where = QStringLiteral("第%1行（%2 %3 %4）")
                              .arg(row - grid.fixedRows() + 1)
                              .arg(grid.text(row, QStringLiteral("JnlDate")), grid.text(row, QStringLiteral("JnlNo")),
                                   grid.text(row, QStringLiteral("Explain")));
    for (const QString &finding : book.host().takeBoxes())
        std::fprintf(stderr, "kxjournal: %s: %s%s\n", qPrintable(code), qPrintable(where), qPrintable(finding));
    return 1;
}

} // namespace

int CheckTool::check(const QString &url, const QString &code)
{
    return ToolBook::run(url, code, [&](ToolBook &book) { return checkLoaded(book, code); });
}
