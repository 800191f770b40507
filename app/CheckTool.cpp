#include "CheckTool.h"

#include "ToolBook.h"

#include <kxjournal/GridModel.h>
#include <kxjournal/Journal.h>

#include <cstdio>

namespace {

// The check stops on the first row out of order and puts the cursor there.
int checkLoaded(kx::Journal &journal, const QString &code)
{
    QStringList findings;
    QObject::connect(&journal, &kx::Journal::Notify, [&](const QString &message, bool box) {
        if (box)
            findings << message;
    });
    if (journal.CheckBook()) {
        std::printf("kxjournal: %s: 账簿检查完毕，没有发现错误。\n", qPrintable(code));
        return 0;
    }
    const kx::GridModel *grid = journal.Grid();
    const int row = grid->row();
    const QString where = QStringLiteral("第%1行（%2 %3 %4）")
                              .arg(row - grid->fixedRows() + 1)
                              .arg(grid->text(row, QStringLiteral("JnlDate")), grid->text(row, QStringLiteral("JnlNo")),
                                   grid->text(row, QStringLiteral("Explain")));
    for (const QString &finding : findings)
        std::fprintf(stderr, "kxjournal: %s: %s%s\n", qPrintable(code), qPrintable(where), qPrintable(finding));
    return 1;
}

} // namespace

int CheckTool::check(const QString &url, const QString &code)
{
    return ToolBook::run(url, code, [&](ToolBook &, kx::Journal &journal) { return checkLoaded(journal, code); });
}
