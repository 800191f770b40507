#pragma once

#include <QList>
#include <QStringList>

namespace kx {

/// One row of a statement table as the file gives it: its cells' texts and
/// the 1-based line (or spreadsheet row) it starts on.
struct TableRow
{
    int sourceLine = 0;
    QStringList cells;
};

} // namespace kx
