#pragma once

#include <QString>

/// The export and print commands of the command-line tool: a book into a
/// file, run with no screen.
class OutputTool
{
public:
    /// Exports book \a code of the database at \a url into \a out as \a type
    /// ("csv", "tsv", "xlsx"; empty: by the extension) and prints the
    /// path; 0 on success.
    static int exportBook(const QString &url, const QString &code, const QString &out, const QString &type);
    /// Writes book \a code of the database at \a url into the PDF file \a out
    /// and prints the path; 0 on success.
    static int print(const QString &url, const QString &code, const QString &out);
};
