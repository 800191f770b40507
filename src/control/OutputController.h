#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class QPrinter;

namespace kx {

class FindBar;
class JournalPrivate;
class Sheet;

/// The control's output: the find bar, finding for a host, export, print
/// preview and PDF.
class OutputController
{
public:
    /// The output of the control whose state is \a d.
    explicit OutputController(JournalPrivate &d);
    ~OutputController();

    /// Builds the print grid, the find bar and the export's question for a name.
    void setUp();
    /// Opens the find bar under the grid.
    void openFindBar();
    /// Tells the host every record that holds \a text (FindMsg), then how many.
    void find(const QString &text);
    /// Exports the book into \a path (\a ask: the asker chooses it); the
    /// path written, or empty when nothing was.
    QString exportBook(bool ask, QString path, int type);
    /// The files of the SQLite database the control works on, which no
    /// export or print may replace (none for a server database).
    QStringList databaseFiles();
    /// Opens a print preview of the book.
    void printPreview();
    /// Prints the book into the PDF file \a fileName.
    bool printToPdf(const QString &fileName);
    /// Forgets the widgets, which went with the control.
    void forgetWidgets() { findBar = nullptr; }

    Sheet *printGrid = nullptr;              ///< the lines of the latest print layout
    FindBar *findBar = nullptr;
    std::unique_ptr<QPrinter> printer;       ///< the preview's printer, kept for its settings
    std::function<QString(const QString &)> fileNameAsker;

private:
    JournalPrivate &d;
};

} // namespace kx
