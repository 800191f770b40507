#pragma once

#include "output/DailyReport.h"

#include <QDialog>
#include <QPointer>
#include <functional>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QTableWidget;
class QTreeWidget;

namespace kx {

class AccContext;
class JournalPrivate;

/// The daily fund report (资金日报表) beside the journal: the days from and
/// to, the books it covers (the book shown and those below it, or every
/// book), the report's lines as a tree, and under it the records of the
/// span of the line selected. 打印 writes the report as a PDF, 导出 as a
/// spreadsheet or comma-separated text, with each bottom book's records
/// when 列出明细 is ticked. It reads only what the database holds, through
/// the context it was opened on, and checks that context before each step.
class DailyReportView : public QDialog
{
    Q_OBJECT
public:
    /// Opens the view over the context of \a d (one at a time), or says
    /// why it cannot; the view, or nullptr.
    static DailyReportView *open(JournalPrivate &d);
    /// The view over \a acc, rooted at book \a bookId (0: none chosen).
    DailyReportView(AccContext &acc, int bookId, QWidget *parent);

    /// The days the view opens at: today when the books have a record
    /// today, else the last day on or before today with one, else the last
    /// day with one, else today.
    QDate defaultDay();
    /// Makes the report of the days and books chosen and shows it; false
    /// (the reason shown) when it cannot.
    bool reload();
    /// Shows days \a from … \a to.
    void setDays(const QDate &from, const QDate &to);
    /// Covers every book (true) or the book shown and those below it.
    void setAllBooks(bool all);
    /// Selects the line of book \a bookId (0: the 合计 line); false when it is not shown.
    bool selectBook(int bookId);
    /// Writes the report into the PDF file \a path; false (the reason shown) when not.
    bool printTo(const QString &path);
    /// Writes the report into \a path, a spreadsheet (.xlsx) or text (.csv).
    bool exportTo(const QString &path);

    /// Asks where to write (caption, file filter); a file dialog, tests set their own.
    std::function<QString(const QString &caption, const QString &filter)> chooseFile;

private:
    bool contextGone();
    void say(const QString &text, bool problem);
    void fillLines();
    void showRecords();
    bool write(const QString &path);
    void chooseAndWrite(bool pdf);

    QPointer<AccContext> m_acc;
    int m_bookId = 0;
    QList<DailyReport::Line> m_report;
    QDate m_from, m_to;
    QDateEdit *m_fromEdit = nullptr;
    QDateEdit *m_toEdit = nullptr;
    QComboBox *m_scope = nullptr;
    QCheckBox *m_withRows = nullptr;
    QTreeWidget *m_lines = nullptr;
    QTableWidget *m_records = nullptr;
    QLabel *m_status = nullptr;
};

} // namespace kx
