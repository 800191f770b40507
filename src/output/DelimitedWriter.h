#pragma once

#include "kxjournal/Result.h"
#include "output/BookSheet.h"

#include <QChar>
#include <functional>

class QIODevice;

namespace kx {

/// Writes a sheet as delimited text: UTF-8 with a byte-order mark, a header
/// line, lines ending CR LF, a field quoted when it holds the separator, a
/// quote or a line break (quotes doubled), figures plain with two decimals,
/// dates as yyyy-MM-dd.
class DelimitedWriter
{
public:
    /// Writes with \a separator between fields ("," or tab).
    explicit DelimitedWriter(QChar separator) : m_separator(separator) {}

    /// Writes \a sheet into \a out, telling \a rowDone each grid row written.
    Result<void> write(const BookSheet &sheet, QIODevice &out, const std::function<void(int)> &rowDone) const;
    /// The text of \a cell in column \a column, before quoting.
    static QString cellText(const BookSheet::Column &column, const BookSheet::Cell &cell);

private:
    void append(QString &line, const QString &field) const;

    QChar m_separator;
};

} // namespace kx
