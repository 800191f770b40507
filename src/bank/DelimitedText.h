#pragma once

#include "bank/TableRow.h"
#include "kxjournal/Result.h"

#include <QByteArray>

namespace kx {

/// Reads a bank's delimited text export (comma-separated, or tab-separated
/// .txt) into rows of cells. The encoding is found from the bytes: UTF-8
/// with or without a byte-order mark, UTF-16 with one, else GBK.
class DelimitedText
{
public:
    /// The rows of \a bytes; \a fileName's extension helps pick the
    /// delimiter. Fails on text in no known encoding and on a quote that
    /// never ends.
    static Result<QList<TableRow>> read(const QByteArray &bytes, const QString &fileName);
    /// \a bytes as text, or why they are not.
    static Result<QString> decode(const QByteArray &bytes);

private:
    static QChar pickDelimiter(const QString &text, const QString &fileName);
};

} // namespace kx
