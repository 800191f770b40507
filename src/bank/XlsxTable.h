#pragma once

#include "bank/TableRow.h"
#include "kxjournal/Result.h"

#include <QByteArray>

namespace kx {

/// Reads the first worksheet of an .xlsx workbook into rows of cell texts.
/// Numbers keep the digits the file stores (a date stays its day serial);
/// shared, inline and formula strings become their text.
class XlsxTable
{
public:
    /// The first sheet's rows, numbered as the spreadsheet numbers them.
    static Result<QList<TableRow>> read(const QByteArray &bytes);

private:
    static Result<QByteArray> member(const QByteArray &zip, const QString &name);
};

} // namespace kx
