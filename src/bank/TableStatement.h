#pragma once

#include "bank/ColumnMapping.h"
#include "bank/Statement.h"
#include "bank/TableRow.h"
#include "kxjournal/Result.h"

#include <optional>

namespace kx {

/// Turns the rows of a statement table (from delimited text or a
/// spreadsheet) into statement lines. The header row is the first with at
/// least two known column names; rows above it are the bank's header block
/// (the account is taken from its 账号 line), and the table ends at a totals
/// row (合计, 总计, 本页小计, 笔数) or at the first row without a date. A
/// page's totals followed by the same header again continue the table.
class TableStatement
{
public:
    /// How the cells were written.
    enum class Cells {
        Text,       ///< every cell as typed (delimited text)
        Spreadsheet ///< numbers as a spreadsheet keeps them: dates as day serials
    };

    /// The statement in \a rows, read by \a mapping when given, else by the
    /// header row's names. Any bad line fails the whole read.
    static Result<Statement> read(const QList<TableRow> &rows, const std::optional<ColumnMapping> &mapping,
                                  Cells cells);

    /// The date in a cell: yyyy-M-d, yyyy/M/d, yyyy.M.d, yyyyMMdd or
    /// yyyy年M月d日, with any time after it; with \a serials also a
    /// spreadsheet day number (1900 date system).
    static QDate parseDate(const QString &cell, bool serials);
    /// An amount in a cell ("1,234.56", "¥1,234.56", "(12.30)", "-12.30",
    /// "1.5E+3" from a spreadsheet); empty is zero.
    static Result<Currency> parseAmount(const QString &cell);
};

} // namespace kx
