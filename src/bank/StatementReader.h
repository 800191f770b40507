#pragma once

#include "bank/ColumnMapping.h"
#include "bank/Statement.h"
#include "kxjournal/Result.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace kx {

/// Reads a statement a bank's online banking exported: delimited text
/// (.csv, tab-separated .txt), .xlsx, .xls, OFX/QFX or camt.053. The format
/// is found from the bytes first, then from the file name. A read either
/// gives every line or fails with one message that names the line and the
/// reason: nothing is ever half-read.
class StatementReader
{
public:
    /// The statement in the file at \a path. \a mapping, a layout the
    /// cashier confirmed before, overrides the guess from a table's header.
    static Result<Statement> read(const QString &path, const std::optional<ColumnMapping> &mapping = {});
    /// The statement in \a bytes, a file named \a fileName.
    static Result<Statement> read(const QByteArray &bytes, const QString &fileName,
                                  const std::optional<ColumnMapping> &mapping = {});

    /// Files larger than this are refused: no bank statement comes near it.
    static constexpr qint64 MaxFileSize = 512LL * 1024 * 1024;
};

} // namespace kx
