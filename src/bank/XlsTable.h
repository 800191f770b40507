#pragma once

#include "bank/TableRow.h"
#include "kxjournal/Result.h"

#include <QByteArray>

namespace kx {

/// Reads the first worksheet of a legacy .xls workbook (Excel 97 and later:
/// BIFF8 in a compound file) into rows of cell texts. Numbers keep their
/// digits (a date stays its day serial); texts come from the shared string
/// table, from text cells and from formulas' last results. Every length
/// and index is checked against the bytes, so a damaged file gives an error.
class XlsTable
{
public:
    /// The first sheet's rows, numbered as the spreadsheet numbers them.
    static Result<QList<TableRow>> read(const QByteArray &bytes);
};

} // namespace kx
