#pragma once

#include "kxjournal/Currency.h"
#include "ledger/JournalColumns.h"

#include <QDate>
#include <QString>
#include <QVector>
#include <functional>

namespace kx {

class BookRow;
class Sheet;

/// The book as a table for paper and spreadsheets: the columns a person
/// sees, the rows a person sees, and month and year totals as rows of
/// their own. A summary row's two lines become a "本月合计" and a "本年累计"
/// row; a book with no summary row gets both computed at every month end.
/// Export and print both read the book through it.
class BookSheet
{
public:
    /// One column of the sheet.
    struct Column {
        enum Kind { Text, Amount, Number, Date };
        int gridCol;
        JournalColumns::Column column;  ///< JournalColumns::Count for a column of the host's
        QString header;
        QString format;                 ///< how the grid shows it
        int width;                      ///< on screen, in pixels
        Qt::Alignment align;
        Kind kind;
    };
    /// One cell: a figure, a date, or a text.
    struct Cell {
        QString text;                          ///< the text as the grid holds it (labels too)
        Currency amount = Currency::invalid(); ///< valid when the cell holds a figure
        QDate date;                            ///< valid when the cell holds a date
    };
    /// One row.
    struct Row {
        enum Kind { Record, MonthTotal, YearTotal, BroughtForward, CarriedForward };
        Kind kind = Record;
        int gridRow = -1;  ///< the grid row it shows (a computed total: the month's last record)
        QVector<Cell> cells;
        /// The debit and credit the month's totals have reached with this
        /// row: what a page ending here carries forward.
        Currency carriedDebit, carriedCredit;
    };

    /// Reads the book in \a grid.
    explicit BookSheet(const Sheet &grid);

    /// The columns, in grid order.
    const QVector<Column> &columns() const { return m_columns; }
    /// The sheet column showing \a column, -1 when none does.
    int indexOf(JournalColumns::Column column) const;
    /// The column a total line's label goes into: the explanation, else the
    /// first other text column; -1 when there is none.
    int labelColumn() const { return m_labelCol; }
    /// "2026-01-01 至 2026-03-31": the first and the last record date; empty
    /// for a book without dates.
    QString period() const;
    /// Hands every row to \a visit, in order; the Row is reused between calls.
    void forEachRow(const std::function<void(const Row &)> &visit) const;
    /// The label of a row kind: "本月合计", "本年累计", "承前页", "过次页"; empty for records.
    static QString label(Row::Kind kind);

    /// \a value as a plain figure with two decimals ("-1250.50").
    static QString twoDecimals(Currency value);

private:
    struct Sums {
        Currency debit, credit, forex;
        void add(const BookRow &row);
    };
    void readRecord(int r, Row &row) const;
    void splitSummary(int r, const Sums &period, const Sums &cumulative, Row &month, Row &year) const;
    void fillTotal(const Sums &sums, int lastRecord, const QString &name, Row &row) const;
    bool isShownRow(int r) const;

    const Sheet &m_grid;
    JournalColumns m_keys;
    QVector<Column> m_columns;
    int m_labelCol = -1;
};

} // namespace kx
