#pragma once

#include "grid/Cell.h"
#include "grid/CellArray.h"
#include "grid/GridChanges.h"
#include "kxjournal/GridModel.h"

#include <QDate>
#include <QList>

namespace kx {

class CellStore;

/// The grid as the library itself writes it: a GridModel with the
/// operations hosts do not get — typed cells (amounts, whole numbers, days)
/// read and written without text, text hashes for change checks, row marks
/// and clean texts for saving, column setup, bulk loading, and the record of
/// changes undo is made of. Every grid the library makes is a Sheet; what a
/// host sees of it is the GridModel.
class Sheet : public GridModel
{
    Q_OBJECT
public:
    /// An empty sheet (one fixed row, one fixed column).
    explicit Sheet(QObject *parent = nullptr);
    ~Sheet() override;

    /// The sheet behind a grid the library made; nullptr for a grid a host
    /// made itself.
    static Sheet *of(GridModel *grid);

    using GridModel::setCellForeColor;

    /// Writes an amount in its plain text form ("1250.5", "0", "-0.01").
    void setAmount(int row, int col, Currency value);
    /// Writes a value the ledger works out from what was typed (a running
    /// balance): not recorded for undo (undo works it out again), not
    /// counted as a change of revision(), not announced (see
    /// announceDerived()); the row is marked touched when it changes, so a
    /// save looks at it.
    void setDerivedAmount(int row, int col, Currency value);
    /// Empties a derived cell (see setDerivedAmount()).
    void clearDerived(int row, int col);
    /// Marks whether the derived value of \a row shows in the mark colour.
    void setDerivedMark(int row, bool on);
    /// The column whose marked rows show \a color, whatever look its cells
    /// have (-1: none); it follows the column when columns move.
    void setDerivedMarkColumn(int col, const QColor &color);
    /// Notes \a row as holding the widest derived figure of column \a col
    /// (by the column's key, so it follows the column when columns move).
    void setDerivedPeak(int col, int row);
    /// The row noted as holding the widest derived figure of \a col; -1
    /// when none was noted since the rows were last loaded.
    int derivedPeak(int col) const;
    /// Tells views that the derived cells of a range changed: one signal
    /// for a whole pass.
    void announceDerived(int r1, int c1, int r2, int c2);
    /// The typed cell at (row, col), for passes over the whole book (a
    /// text's cell names its pooled text; read it with text()).
    Cell cell(int row, int col) const;
    /// The typed cells themselves, for passes that read a million rows
    /// without a call a cell.
    const CellStore &cellStore() const;
    /// The cell as a whole number: 0 for empty or non-numeric text; an
    /// amount's whole part.
    qint64 number(int row, int col) const;
    /// Writes a whole number.
    void setNumber(int row, int col, qint64 value);
    /// The cell's day when it holds a real day as yyyy-MM-dd; else invalid.
    QDate date(int row, int col) const;
    /// Writes a day as yyyy-MM-dd (an invalid date empties the cell).
    void setDate(int row, int col, const QDate &date);
    /// True when the cell is empty or holds an amount money can hold; false
    /// for a text that is no plain amount ("abc", "1e300", a date) and for a
    /// whole number past the money range.
    bool holdsAmount(int row, int col) const;
    /// A 64-bit hash of the cell's text, made without making the text:
    /// equal texts hash alike in any grid and any run.
    quint64 textHash(int row, int col) const;
    /// The hashes of the texts of columns \a cols[0…count) of \a row, mixed
    /// in that order: one call for a whole record.
    quint64 textsHash(int row, const int *cols, int count) const;
    /// Sets the fore colour of one cell; an invalid colour clears it.
    void setCellForeColor(int row, int col, const QColor &color);
    /// Text colour of the data cells of a whole row (invalid when none).
    QColor rowForeColor(int row) const;
    /// Colours the text of every data cell of \a row: cells' own fore colours
    /// are dropped, so the whole row takes \a color (invalid: the normal colour).
    void setRowForeColor(int row, const QColor &color);
    /// Sets the alignment of a range; 0 returns it to the column's.
    void setCellAlignment(int r1, int c1, int r2, int c2, Qt::Alignment align);
    /// Takes every per-cell look off a range (texts and data stay).
    void clearCellStyles(int r1, int c1, int r2, int c2);
    /// Marks or unmarks a subtotal row.
    void setSubtotal(int row, bool on);
    /// Sets the outline level of a row.
    void setOutlineLevel(int row, int level);
    /// The height rows have by default.
    int defaultRowHeight() const;
    /// Sets the default row height.
    void setDefaultRowHeight(int height);
    /// Sets the smallest row height.
    void setRowHeightMin(int height);
    /// Sets the largest row height.
    void setRowHeightMax(int height);
    /// True when a cell of \a row changed (or the row is new) since the rows
    /// were last marked clean; rows filled by loadArray() start clean.
    bool isRowTouched(int row) const;
    /// Marks \a row touched.
    void markRowTouched(int row);
    /// True when rows were inserted, removed or moved since the rows were last marked clean.
    bool rowsShiftedSinceClean() const;
    /// Marks every row clean (what the grid shows is what was stored).
    void markRowsClean();
    /// Keeps, in the columns \a cols, each row's text as it was at the last
    /// markRowsClean() when it first changes after it, so that what was
    /// stored can be told from what was changed since.
    void setCleanTextCols(const QList<int> &cols);
    /// Whether \a row was in the grid at the last markRowsClean().
    bool knowsCleanText(int row) const;
    /// The text of (row, col) at the last markRowsClean(), for a column given
    /// to setCleanTextCols() and a row that was there; else text().
    QString cleanText(int row, int col) const;
    /// Makes \a text the clean text of (row, col) (see cleanText()): what the
    /// database holds there now, after a change stored outside a save.
    void setCleanText(int row, int col, const QString &text);
    /// The row whose header shows the drag marker (-1: none).
    int dragMarkRow() const;
    /// Shows the drag marker on the header of \a row (-1: none). Not part of
    /// the content: it is neither recorded nor saved.
    void setDragMarkRow(int row);
    /// Replaces every row from \a firstRow on (fixedRows() when -1) with the
    /// array's rows, their texts from column \a firstCol (fixedCols() when -1);
    /// grows the column count when needed. One model reset, no per-cell signals.
    void loadArray(CellArray array, int firstRow = -1, int firstCol = -1);
    /// Sets the display format of a column.
    void setColFormat(int col, const QString &format);
    /// Sets the data type of a column.
    void setColDataType(int col, DataType type);
    /// Sets the alignment of a column; 0 returns it to the data type's.
    void setColAlignment(int col, Qt::Alignment align);
    /// Sets the column's combo list.
    void setColComboList(int col, const QString &list);
    /// Sets the font family of every data cell of column \a col, present and
    /// future (cells' own font names in the column are dropped); empty text
    /// returns them to the grid font.
    void setColDataFont(int col, const QString &family);
    /// Allows or forbids editing.
    void setEditable(bool on);
    /// Sets the grid's font.
    void setFont(const QFont &font);
    /// Starts recording every change of cell values, cell looks, row
    /// colours, row marks and of rows added at the bottom. Calls nest: only
    /// the outermost endChanges() hands the record over.
    void beginChanges();
    /// Stops recording (at the outermost call) and hands over what changed;
    /// empty for an inner call.
    GridChanges endChanges();
    /// True while changes are recorded.
    bool isRecordingChanges() const;
    /// Puts back what \a changes changed, newest change first, and returns
    /// the changes that undo this in turn. Does nothing (and returns an empty
    /// record) for an incomplete record or while recording.
    GridChanges revertChanges(const GridChanges &changes);
    /// A number that grows with every change of the grid's cells, looks,
    /// marks or shape: a record of changes fits the grid only while the
    /// grid's revision is the one seen when the record was made.
    quint64 revision() const;
    /// A number that grows with every change of a cell's value or of the
    /// rows and columns, but not with derived values, looks or marks: what
    /// a whole pass worked out from the values holds while it stays.
    quint64 valueRevision() const;
    /// Bytes the cells, marks and pooled texts take beyond the texts'
    /// characters (for measurements).
    std::size_t storeBytes() const;
};

} // namespace kx
