#pragma once

#include <QDate>
#include <QString>

/// The tool's bank statement commands: importing a bank's statement file
/// into a bank book, and the balance reconciliation of the book on a day.
namespace BankTool {

/// Imports the statement file \a file into book \a code of \a url, read with
/// the layout \a mapping (a layout's name, or the layout itself as stored;
/// empty: guessed from the file's header, else the book's remembered one).
/// Prints the lines read, added and skipped; 1 with one line on failure.
int importStatement(const QString &url, const QString &code, const QString &file, const QString &mapping);

/// Writes into \a out a bank's statement of book \a code of \a url up to
/// \a to, as online banking exports one (GBK CSV with a header block and a
/// totals line): the bank books each record a day later and misses the
/// last few, and adds its fee and interest; for trying reconciliation.
int sampleStatement(const QString &url, const QString &code, const QDate &to, const QString &out);

/// Writes the reconciliation of book \a code of \a url on \a to into \a out
/// (.pdf or .xlsx), prepared by \a user; with \a autoMatch the statement's
/// open lines are matched with the book's records first. 1 with one line on
/// failure.
int reconcile(const QString &url, const QString &code, const QDate &to, bool autoMatch, const QString &out,
              const QString &user);

/// Writes the daily fund report of days \a from … \a to for book \a code of
/// \a url and the books below it (empty: every book) into \a out, a PDF,
/// XLSX or CSV file by its extension, prepared by \a preparer; \a rows lists
/// each bottom book's records of the span under it. Exit code.
int daily(const QString &url, const QString &code, const QDate &from, const QDate &to, const QString &out, bool rows,
          const QString &preparer);

} // namespace BankTool
