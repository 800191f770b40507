#pragma once

#include "ledger/Book.h"
#include "kxjournal/Result.h"

#include <QString>
#include <QStringList>

namespace kx {

class Sheet;
class LedgerHost;

/// Writes the book shown into a comma-separated, tab-separated or
/// spreadsheet file, with progress; the file appears whole or not at all.
class BookExporter
{
public:
    /// The kinds of file.
    enum Type { ByName = 0, Csv = 1, Tsv = 2, Xlsx = 3 };

    /// Exports \a book, reporting progress to its host.
    explicit BookExporter(const Book &book) : m_grid(book.sheet()), m_host(book.host()) {}

    /// The kind \a type stands for; ByName follows \a path's extension
    /// (".xlsx" spreadsheet, ".tsv" or ".txt" tab-separated, else comma-separated).
    static Type typeFor(const QString &path, Type type);
    /// Fails, saying what the types are, unless \a type is one of them.
    static Result<void> checkType(int type);
    /// The extension of a file of kind \a type (".csv").
    static QString suffix(Type type);
    /// Writes the book into \a path as kind \a type (0 to 3), the
    /// spreadsheet captioned \a caption; never over any of \a keep (the
    /// database in use), a SQLite database or what is not a regular file.
    /// Gives the number of texts the spreadsheet holds cut
    /// (SpreadsheetWriter::MaxCellText); 0 for delimited text.
    Result<int> write(const QString &path, int type, const QString &caption, const QStringList &keep = {}) const;
    /// What the user is told of \a cut texts cut in a spreadsheet (empty for none).
    static QString cutNotice(int cut);

private:
    const Sheet &m_grid;
    LedgerHost &m_host;
};

} // namespace kx
