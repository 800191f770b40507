#pragma once

#include "kxjournal/Currency.h"
#include "ledger/JournalColumns.h"

#include <QDate>
#include <QString>

namespace kx {

class Sheet;

/// One journal row of the grid, read and written by meaning: its date, its
/// amounts, its keys, whether it is a summary row, its change mark.
///
/// A light handle (a grid, the column places and a row index): make one
/// where it is needed, it copies nothing. Cells hold the plain forms the
/// loader and the calculator write (ISO dates, plain amounts, digits).
class BookRow
{
public:
    /// The per-row change mark a save reads.
    enum ChangeMark { Unchanged = 0, Saved = 1, Modified = 2 };

    /// Row \a row of \a grid, whose columns sit at \a columns.
    BookRow(Sheet &grid, const JournalColumns &columns, int row)
        : m_grid(&grid), m_columns(&columns), m_row(row)
    {
    }
    /// The handle keeps the column places by reference: they must outlive it.
    BookRow(Sheet &grid, const JournalColumns &&columns, int row) = delete;
    /// A read-only handle on a row of a grid the caller may not change.
    static const BookRow of(const Sheet &grid, const JournalColumns &columns, int row)
    {
        return BookRow(const_cast<Sheet &>(grid), columns, row);
    }
    /// The handle keeps the column places by reference: they must outlive it.
    static const BookRow of(const Sheet &grid, const JournalColumns &&columns, int row) = delete;

    /// Splits a 单据号 into its prefix and its trailing digits' value ("收-009":
    /// "收-", 9; the last 15 digits at most).
    static void splitNumber(const QString &text, QString &prefix, qint64 &number);
    /// The 单据号 after \a previous: the same prefix, the number one higher,
    /// as wide as before (wider when it runs out: "99" → "100"); empty when
    /// \a previous has no digits to go on from.
    static QString nextNumber(const QString &previous);

    /// The grid row.
    int index() const { return m_row; }
    /// True for the book's first row, the opening balance.
    bool isOpening() const;

    /// The cell text of \a column.
    QString text(JournalColumns::Column column) const;
    /// Writes the cell text of \a column.
    void setText(JournalColumns::Column column, const QString &text) const;
    /// The cell of \a column as an amount (zero when empty or not an amount;
    /// a summary row's two-line total reads by its first line).
    Currency amount(JournalColumns::Column column) const;
    /// The cell of \a column as a whole number (0 when empty or not a number).
    qint64 number(JournalColumns::Column column) const;
    /// The cell text of \a column as it was at the last load or save (see
    /// Sheet::cleanText()).
    QString cleanText(JournalColumns::Column column) const;
    /// Makes \a text the text \a column had at the last load or save.
    void setCleanText(JournalColumns::Column column, const QString &text) const;
    /// Whether the row was in the grid at the last load or save.
    bool knowsClean() const;
    /// A hash of the texts of \a columns[0…count), in that order (see Sheet::textsHash()).
    quint64 textsHash(const JournalColumns::Column *columns, int count) const;

    /// The ISO text of the row's date.
    QString dateText() const { return text(JournalColumns::JnlDate); }
    /// The row's date (invalid when the cell holds none).
    QDate date() const;
    /// True when the date cell holds a real day as yyyy-MM-dd.
    bool isDated() const;

    /// Debit amount.
    Currency debit() const { return amount(JournalColumns::Debit); }
    /// Credit amount.
    Currency credit() const { return amount(JournalColumns::Credit); }
    /// Foreign-currency amount.
    Currency forex() const { return amount(JournalColumns::Forex); }
    /// Running balance.
    Currency balance() const { return amount(JournalColumns::Balance); }
    /// The record key (0 or less: never stored).
    int recId() const { return int(number(JournalColumns::RecID)); }
    /// The counter-account.
    int accId() const { return int(number(JournalColumns::AccID)); }
    /// The linked voucher (0: none).
    int dirId() const { return int(number(JournalColumns::DirID)); }
    /// The row kind tag (below 0: a summary row).
    int tag() const { return int(number(JournalColumns::Tag)); }

    /// True for a summary row: one with a negative tag.
    bool isSummary() const;
    /// True when the row belongs to a closed period.
    bool isLocked() const { return number(JournalColumns::Locked) == 1 && text(JournalColumns::Locked) == QLatin1String("1"); }
    /// Writes the Locked cell (the row's colour is the caller's business).
    void setLockedCell(bool locked) const;

    /// The row's change mark.
    ChangeMark changeMark() const;
    /// Sets the row's change mark.
    void setChangeMark(ChangeMark mark) const;

    /// The date as the ShowName column shows it: "yyyy年MM月" on a summary
    /// (subtotal) row, "yyyy年MM月dd日" on a record, "yyyy年期初" on the opening row.
    enum class Label { Record, Summary, Opening };
    /// \a date in the form \a label asks for.
    static QString dateLabel(const QDate &date, Label label);

    /// True when the tag cell (\a row, \a tagCol) marks a summary row: a
    /// negative number.
    static bool isSummaryCell(const Sheet &grid, int row, int tagCol);

private:
    Sheet *m_grid;
    const JournalColumns *m_columns;
    int m_row;
};

} // namespace kx
