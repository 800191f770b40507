#include <kxjournal/Currency.h>
#include "grid/Sheet.h"
#include <kxjournal/GridView.h>

#include <QApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    kx::Sheet grid;
    grid.setCols(3);
    grid.setColKey(1, QStringLiteral("Debit"));
    grid.addItem(QStringLiteral("\t1,234.5\tx"));
    kx::GridView view;
    view.setGridModel(&grid);
    const kx::Currency sum = grid.amount(1, QStringLiteral("Debit")) + kx::Currency::fromUnits(1);
    if (sum.toString() != QStringLiteral("1235.5"))
        return 1;
    std::printf("consumer ok\n");
    return 0;
}
