#pragma once

#include "kxjournal/Currency.h"
#include "kxjournal/kxjournal_export.h"

#include <QAbstractTableModel>
#include <QItemSelectionModel>
#include <QColor>
#include <QFont>
#include <QStringList>
#include <QVariant>
#include <memory>

namespace kx {

class EditCycle;

class GridModelPrivate;

/// The spreadsheet-like grid behind the journal: rows and columns with one
/// fixed header row and one fixed column, keyed columns, cell texts with
/// per-cell looks and hidden data, per-row marks, a cursor and a selected
/// block, and an edit cycle (editCycle()).
///
/// A Qt model over three parts: a typed cell store (numbers, amounts and
/// days kept as values, repeated texts kept once; display text is made when
/// a cell is shown), the looks, and the column settings. Every cell still
/// reads back as exactly the text written to it. The cursor and the
/// selection live in one QItemSelectionModel (selectionModel()) that views
/// share, so code without a view sees what the user selected.
///
/// Grid coordinates count the fixed row and column: row 0 is the header row,
/// column 0 the row-selector column, and data starts at (fixedRows(),
/// fixedCols()). The Qt model indexes leave the fixed row and column out; a
/// view shows them as its headers.
///
/// While redraw() is off no per-cell change signals are sent; switching it on
/// sends one refresh for the whole grid. Structural changes (rows inserted,
/// removed or moved) are always signalled, as item views require.
class KXJOURNAL_EXPORT GridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    /// What a column holds; decides default alignment and display formatting.
    enum DataType { TypeString = 0, TypeLong, TypeDouble, TypeCurrency, TypeDate, TypeBoolean };
    Q_ENUM(DataType)

    /// Extra item roles.
    enum Roles {
        CellDataRole = Qt::UserRole + 1, ///< the hidden cell data
        ComboListRole,                   ///< the column's combo list
        NumericValueRole                 ///< value() as a double
    };

    /// A grid with one fixed row, one fixed column and no data.
    explicit GridModel(QObject *parent = nullptr);
    ~GridModel() override;

    // ---- Qt model ----
    /// Data rows (the fixed row excluded).
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// Data columns (the fixed column excluded).
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    /// Display text (formatted), edit text (raw), colours, font, alignment.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// Writes the raw text (EditRole/DisplayRole) or the hidden data; no edit events.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    /// The fixed row's texts (horizontal) and the fixed column's texts (vertical).
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// Enabled, selectable, and editable while editable() is true.
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    /// Grid row of a model index row.
    int gridRow(const QModelIndex &index) const { return index.row() + fixedRows(); }
    /// Grid column of a model index column.
    int gridCol(const QModelIndex &index) const { return index.column() + fixedCols(); }
    /// The model index of a grid cell (invalid for fixed cells).
    QModelIndex indexAt(int row, int col) const;

    // ---- size ----
    /// Row count, the fixed row included.
    int rows() const;
    /// Column count, the fixed column included.
    int cols() const;
    /// Number of fixed rows (1).
    int fixedRows() const;
    /// Number of fixed columns (1).
    int fixedCols() const;
    /// Sets the row count (never below fixedRows()); new rows are empty.
    void setRows(int n);
    /// Sets the column count (never below fixedCols()); new columns are empty.
    void setCols(int n);
    /// True when \a row is a data row (fixedRows() <= row < rows()).
    bool isDataRow(int row) const { return row >= fixedRows() && row < rows(); }
    /// True when \a col is a data column.
    bool isDataCol(int col) const { return col >= fixedCols() && col < cols(); }

    // ---- keys ----
    /// The column whose key is \a key (exact, else case-insensitive), or -1.
    int colIndex(const QString &key) const;
    /// The key of column \a col (empty when out of range).
    QString colKey(int col) const;
    /// Sets the key of column \a col.
    void setColKey(int col, const QString &key);

    // ---- cells ----
    /// Cell text; empty outside the grid.
    QString text(int row, int col) const;
    /// Cell text of the column keyed \a key.
    QString text(int row, const QString &key) const { return text(row, colIndex(key)); }
    /// Writes a cell text (ignored outside the grid).
    void setText(int row, int col, const QString &text);
    /// Writes the text of the column keyed \a key.
    void setText(int row, const QString &key, const QString &text) { setText(row, colIndex(key), text); }
    /// The numeric value of a cell's text: 0 for empty or non-numeric text;
    /// thousands separators are allowed; of a two-line text, the first line.
    double value(int row, int col) const;
    /// value() of the column keyed \a key.
    double value(int row, const QString &key) const { return value(row, colIndex(key)); }
    /// The cell's text as an amount; zero for empty or non-numeric text; of
    /// a two-line text, the first line.
    Currency amount(int row, int col) const;
    /// amount() of the column keyed \a key.
    Currency amount(int row, const QString &key) const { return amount(row, colIndex(key)); }
    /// True when the cell holds no text.
    bool isEmpty(int row, int col) const;
    /// Hidden cell data.
    QVariant cellData(int row, int col) const;
    /// Sets hidden cell data.
    void setCellData(int row, int col, const QVariant &value);

    // ---- styles over ranges (inclusive, any corner order) ----
    /// Fore colour of a cell: its own, else its row's (invalid when neither is set).
    QColor cellForeColor(int row, int col) const;
    /// Sets the fore colour of a range; an invalid colour clears it.
    void setCellForeColor(int r1, int c1, int r2, int c2, const QColor &color);
    /// Back colour of a cell (invalid when the cell has none of its own).
    QColor cellBackColor(int row, int col) const;
    /// Sets the back colour of a range; an invalid colour clears it.
    void setCellBackColor(int r1, int c1, int r2, int c2, const QColor &color);
    /// Whether a cell is drawn bold.
    bool cellBold(int row, int col) const;
    /// Sets bold over a range.
    void setCellBold(int r1, int c1, int r2, int c2, bool bold);
    /// Font family of a cell (the grid font's family when it has none).
    QString cellFontName(int row, int col) const;
    /// Sets the font family of a range; empty text returns it to the grid font.
    void setCellFontName(int r1, int c1, int r2, int c2, const QString &family);

    /// Alignment of a cell (its own, else its column's).
    Qt::Alignment cellAlignment(int row, int col) const;

    // ---- rows ----
    /// Row data (the change mark: 2 modified, 1 saved).
    QVariant rowData(int row) const;
    /// Sets row data.
    void setRowData(int row, const QVariant &value);
    /// Whether the row is marked as a subtotal row.
    bool isSubtotal(int row) const;
    /// Outline level of a row (0 = none).
    int outlineLevel(int row) const;
    /// Whether the row is hidden.
    bool isRowHidden(int row) const;
    /// Hides or shows a row.
    void setRowHidden(int row, bool hidden);
    /// Height of a row in pixels, within the row-height limits.
    int rowHeight(int row) const;
    /// Sets the height of a row; -1 returns it to the default height.
    void setRowHeight(int row, int height);
    /// Smallest row height (0 = no limit).
    int rowHeightMin() const;
    /// Largest row height (0 = no limit).
    int rowHeightMax() const;
    /// True when no row has a height of its own and none is hidden: a view
    /// then lays every row out at the default height without asking each.
    bool uniformRows() const;
    /// Inserts an empty row before grid row \a row (rows() appends).
    void insertRowAt(int row) { insertRowsAt(row, 1); }
    /// Inserts \a count empty rows before grid row \a row (rows() appends).
    void insertRowsAt(int row, int count);
    /// Removes the data rows \a row … row + count − 1 (those that exist).
    void removeRowsAt(int row, int count);
    /// Removes grid row \a row (a data row).
    void removeRowAt(int row) { removeRowsAt(row, 1); }
    /// Moves data row \a from so that it ends up at index \a to.
    void moveRowTo(int from, int to);
    /// Adds a row from tab-separated texts, the first going to column 0;
    /// appended when \a at is -1, else inserted before row \a at.
    void addItem(const QString &text, int at = -1);

    // ---- columns ----
    /// Whether a column is hidden.
    bool isColHidden(int col) const;
    /// Hides or shows a column.
    void setColHidden(int col, bool hidden);
    /// Width of a column in pixels (-1 = the view's default).
    int colWidth(int col) const;
    /// Sets the width of a column.
    void setColWidth(int col, int width);
    /// Display format of a column ("#,##0.00" for amounts, a Qt date format for dates).
    QString colFormat(int col) const;
    /// Data type of a column.
    DataType colDataType(int col) const;
    /// Alignment of a column (by data type when none was set).
    Qt::Alignment colAlignment(int col) const;
    /// The column's combo list: "|..." an ellipsis button, "a|b|c" a drop-down, empty a text box.
    QString colComboList(int col) const;
    /// Moves column \a from (texts, looks, data, key and settings) to index \a to.
    void moveColTo(int from, int to);

    // ---- cursor and selection (grid coordinates) ----
    /// Cursor row (-1 when there are no data rows).
    int row() const;
    /// Cursor column.
    int col() const;
    /// Moves the cursor; the selection becomes the cursor cell.
    void setCursor(int row, int col);
    /// The selected block, normalised (r1 <= r2, c1 <= c2).
    void selection(int &r1, int &c1, int &r2, int &c2) const;
    /// Selects a block; the cursor goes to (r1, c1).
    void select(int r1, int c1, int r2, int c2);
    /// The one selection model of this grid: its current index is the
    /// cursor and its selection the selected block. Views share it.
    QItemSelectionModel *selectionModel() const;

    // ---- state ----
    /// The busy tag: the running operation's name; empty when idle.
    QString tag() const;
    /// Sets the busy tag.
    void setTag(const QString &tag);
    /// Whether change signals are sent.
    bool redraw() const;
    /// Switches change signals off, or on again with one refresh of everything.
    void setRedraw(bool on);
    /// Whether cells may be edited at all.
    bool editable() const;
    /// The grid's font.
    QFont font() const;
    /// The edit cycle of this grid (owned by the grid).
    EditCycle *editCycle() const;


Q_SIGNALS:
    /// The cursor left (\a row, \a col); sent before cursorChanged().
    void leaveCell(int row, int col);
    /// The cursor moved to (\a row, \a col).
    void cursorChanged(int row, int col);
    /// The selected block changed.
    void selectionBlockChanged();
    /// A row's height or hidden flag changed (-1: all rows).
    void rowLayoutChanged(int row);
    /// A column's width or hidden flag changed (-1: all columns).
    void colLayoutChanged(int col);

private:
    friend class Sheet;
    void notifyCells(int r1, int c1, int r2, int c2);
    void notifyRowLayout(int row);
    void notifyColLayout(int col);
    void restoreCursor(int row, int col);
    template <typename Fn> void forRange(int r1, int c1, int r2, int c2, Fn fn);
    QVariant displayText(int row, int col) const;
    QVariant fontFor(int row, int col) const;

    std::unique_ptr<GridModelPrivate> const d;
};

} // namespace kx
