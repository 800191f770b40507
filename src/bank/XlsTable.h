#pragma once

#include "bank/TableRow.h"
#include "kxjournal/Result.h"

#include <QByteArray>

namespace kx {

/// Reads the first worksheet of a legacy .xls workbook (BIFF) into rows of
/// cell texts, through FreeXL. Date cells come as yyyy-MM-dd.
class XlsTable
{
public:
    /// The first sheet's rows, numbered as the spreadsheet numbers them.
    static Result<QList<TableRow>> read(const QByteArray &bytes);
};

} // namespace kx
