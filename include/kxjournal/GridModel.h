#pragma once

#include "kxjournal/CellArray.h"
#include "kxjournal/Currency.h"

#include <QAbstractTableModel>
#include <QColor>
#include <QFont>
#include <QHash>
#include <QStringList>
#include <QVariant>
#include <memory>
#include <vector>

namespace kx {

class EditCycle;

namespace detail {

/// Per-cell look, kept only for cells that have one. Colours are stored as
/// QRgb with a flag so that a style costs a dozen bytes, not a QColor pair.
struct CellStyle {
    QRgb fore = 0;
    QRgb back = 0;
    quint16 fontIndex = 0;  ///< 0 = the grid's font; else index + 1 into the font-name table
    quint16 align = 0;      ///< 0 = the column's alignment
    quint8 flags = 0;       ///< HasFore | HasBack | HasBold | Bold
    enum : quint8 { HasFore = 1, HasBack = 2, HasBold = 4, Bold = 8 };
    bool isEmpty() const { return flags == 0 && fontIndex == 0 && align == 0; }
};

/// What a row carries beyond its texts, allocated on first use.
struct RowExtra {
    std::vector<CellStyle> styles;  ///< empty, or one per column
    std::vector<QVariant> data;     ///< empty, or one per column
};

/// One grid row.
struct GridRow {
    std::vector<QString> cells;
    QVariant data;
    std::unique_ptr<RowExtra> extra;
    QRgb fore = 0;    ///< text colour of the row's data cells without their own
    bool hasFore = false;
    int height = -1;  ///< -1 = the default height
    int outline = 0;
    bool hidden = false;
    bool subtotal = false;
    bool touched = true;  ///< a cell changed since the rows were last marked clean
};

/// One grid column's settings.
struct GridColumn {
    QString key;
    QString format;
    QString comboList;
    quint16 dataFont = 0;  ///< font of the data cells: 0 = the grid's, else index + 1 into the font-name table
    int width = -1;  ///< -1 = the default width
    int dataType = 0;
    int align = 0;   ///< Qt::Alignment bits; 0 = by data type
    bool hidden = false;
};

} // namespace detail

/// The spreadsheet-like grid behind the journal: rows and columns with one
/// fixed header row and one fixed column, keyed columns, cell texts with
/// per-cell looks and hidden data, per-row marks, a cursor and a selected
/// block, and an edit cycle (editCycle()).
///
/// Grid coordinates count the fixed row and column: row 0 is the header row,
/// column 0 the row-selector column, and data starts at (fixedRows(),
/// fixedCols()). The Qt model indexes leave the fixed row and column out; a
/// view shows them as its headers.
///
/// While redraw() is off no per-cell change signals are sent; switching it on
/// sends one refresh for the whole grid. Structural changes (rows inserted,
/// removed or moved) are always signalled, as item views require.
class GridModel : public QAbstractTableModel
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
    int gridRow(const QModelIndex &index) const { return index.row() + m_fixedRows; }
    /// Grid column of a model index column.
    int gridCol(const QModelIndex &index) const { return index.column() + m_fixedCols; }
    /// The model index of a grid cell (invalid for fixed cells).
    QModelIndex indexAt(int row, int col) const;

    // ---- size ----
    /// Row count, the fixed row included.
    int rows() const { return int(m_rows.size()); }
    /// Column count, the fixed column included.
    int cols() const { return int(m_cols.size()); }
    /// Number of fixed rows (1).
    int fixedRows() const { return m_fixedRows; }
    /// Number of fixed columns (1).
    int fixedCols() const { return m_fixedCols; }
    /// Sets the row count (never below fixedRows()); new rows are empty.
    void setRows(int n);
    /// Sets the column count (never below fixedCols()); new columns are empty.
    void setCols(int n);
    /// True when \a row is a data row (fixedRows() <= row < rows()).
    bool isDataRow(int row) const { return row >= m_fixedRows && row < rows(); }
    /// True when \a col is a data column.
    bool isDataCol(int col) const { return col >= m_fixedCols && col < cols(); }

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
    /// Cell text without a copy, for passes over many rows; valid until the
    /// cell or the grid's shape changes. Empty outside the grid.
    const QString &textRef(int row, int col) const;
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
    /// The cell's text as an amount; zero for empty or non-numeric text.
    Currency amount(int row, int col) const;
    /// amount() of the column keyed \a key.
    Currency amount(int row, const QString &key) const { return amount(row, colIndex(key)); }
    /// Hidden cell data.
    QVariant cellData(int row, int col) const;
    /// Sets hidden cell data.
    void setCellData(int row, int col, const QVariant &value);

    // ---- styles over ranges (inclusive, any corner order) ----
    /// Fore colour of a cell: its own, else its row's (invalid when neither is set).
    QColor cellForeColor(int row, int col) const;
    /// Sets the fore colour of a range; an invalid colour clears it.
    void setCellForeColor(int r1, int c1, int r2, int c2, const QColor &color);
    /// Sets the fore colour of one cell; an invalid colour clears it.
    void setCellForeColor(int row, int col, const QColor &color);
    /// Text colour of the data cells of a whole row (invalid when none).
    QColor rowForeColor(int row) const;
    /// Colours the text of every data cell of \a row: cells' own fore colours
    /// are dropped, so the whole row takes \a color (invalid: the normal colour).
    void setRowForeColor(int row, const QColor &color);
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
    /// Sets the alignment of a range; 0 returns it to the column's.
    void setCellAlignment(int r1, int c1, int r2, int c2, Qt::Alignment align);
    /// Takes every per-cell look off a range (texts and data stay).
    void clearCellStyles(int r1, int c1, int r2, int c2);

    // ---- rows ----
    /// Row data (the change mark: 2 modified, 1 saved).
    QVariant rowData(int row) const;
    /// Sets row data.
    void setRowData(int row, const QVariant &value);
    /// Whether the row is marked as a subtotal row.
    bool isSubtotal(int row) const;
    /// Marks or unmarks a subtotal row.
    void setSubtotal(int row, bool on);
    /// Outline level of a row (0 = none).
    int outlineLevel(int row) const;
    /// Sets the outline level of a row.
    void setOutlineLevel(int row, int level);
    /// Whether the row is hidden.
    bool isRowHidden(int row) const;
    /// Hides or shows a row.
    void setRowHidden(int row, bool hidden);
    /// Height of a row in pixels, within the row-height limits.
    int rowHeight(int row) const;
    /// Sets the height of a row; -1 returns it to the default height.
    void setRowHeight(int row, int height);
    /// The height rows have by default.
    int defaultRowHeight() const { return m_defaultRowHeight; }
    /// Sets the default row height.
    void setDefaultRowHeight(int height);
    /// Smallest row height (0 = no limit).
    int rowHeightMin() const { return m_rowHeightMin; }
    /// Sets the smallest row height.
    void setRowHeightMin(int height);
    /// Largest row height (0 = no limit).
    int rowHeightMax() const { return m_rowHeightMax; }
    /// Sets the largest row height.
    void setRowHeightMax(int height);
    /// True when a cell of \a row changed (or the row is new) since the rows
    /// were last marked clean; rows filled by loadArray() start clean.
    bool isRowTouched(int row) const;
    /// Marks \a row touched.
    void markRowTouched(int row);
    /// True when rows were inserted, removed or moved since the rows were last marked clean.
    bool rowsShiftedSinceClean() const { return m_rowsShifted; }
    /// Marks every row clean (what the grid shows is what was stored).
    void markRowsClean();
    /// Inserts an empty row before grid row \a row (rows() appends).
    void insertRowAt(int row);
    /// Removes grid row \a row (a data row).
    void removeRowAt(int row);
    /// Moves data row \a from so that it ends up at index \a to.
    void moveRowTo(int from, int to);
    /// Adds a row from tab-separated texts, the first going to column 0;
    /// appended when \a at is -1, else inserted before row \a at.
    void addItem(const QString &text, int at = -1);
    /// Replaces every row from \a firstRow on (fixedRows() when -1) with the
    /// array's rows, their texts from column \a firstCol (fixedCols() when -1);
    /// grows the column count when needed. One model reset, no per-cell signals.
    void loadArray(CellArray array, int firstRow = -1, int firstCol = -1);

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
    /// Sets the display format of a column.
    void setColFormat(int col, const QString &format);
    /// Data type of a column.
    DataType colDataType(int col) const;
    /// Sets the data type of a column.
    void setColDataType(int col, DataType type);
    /// Alignment of a column (by data type when none was set).
    Qt::Alignment colAlignment(int col) const;
    /// Sets the alignment of a column; 0 returns it to the data type's.
    void setColAlignment(int col, Qt::Alignment align);
    /// The column's combo list: "|..." an ellipsis button, "a|b|c" a drop-down, empty a text box.
    QString colComboList(int col) const;
    /// Sets the column's combo list.
    void setColComboList(int col, const QString &list);
    /// Sets the font family of every data cell of column \a col, present and
    /// future (cells' own font names in the column are dropped); empty text
    /// returns them to the grid font.
    void setColDataFont(int col, const QString &family);
    /// Moves column \a from (texts, looks, data, key and settings) to index \a to.
    void moveColTo(int from, int to);

    // ---- cursor and selection (grid coordinates) ----
    /// Cursor row (-1 when there are no data rows).
    int row() const { return m_cursorRow; }
    /// Cursor column.
    int col() const { return m_cursorCol; }
    /// Moves the cursor; the selection becomes the cursor cell.
    void setCursor(int row, int col);
    /// The selected block, normalised (r1 <= r2, c1 <= c2).
    void selection(int &r1, int &c1, int &r2, int &c2) const;
    /// Selects a block; the cursor goes to (r1, c1).
    void select(int r1, int c1, int r2, int c2);
    /// Sets the selected block without moving the cursor (the view's own selection).
    void setSelectionBlock(int r1, int c1, int r2, int c2);

    // ---- state ----
    /// The busy tag: the running operation's name; empty when idle.
    QString tag() const { return m_tag; }
    /// Sets the busy tag.
    void setTag(const QString &tag) { m_tag = tag; }
    /// Whether change signals are sent.
    bool redraw() const { return m_redraw; }
    /// Switches change signals off, or on again with one refresh of everything.
    void setRedraw(bool on);
    /// Whether cells may be edited at all.
    bool editable() const { return m_editable; }
    /// Allows or forbids editing.
    void setEditable(bool on) { m_editable = on; }
    /// The grid's font.
    QFont font() const { return m_font; }
    /// Sets the grid's font.
    void setFont(const QFont &font);
    /// The edit cycle of this grid (owned by the grid).
    EditCycle *editCycle() const { return m_editCycle; }

Q_SIGNALS:
    /// The cursor is about to leave (\a row, \a col).
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
    bool isCell(int row, int col) const { return row >= 0 && row < rows() && col >= 0 && col < cols(); }
    void notifyCells(int r1, int c1, int r2, int c2);
    void notifyRowLayout(int row);
    void notifyColLayout(int col);
    void clampCursor();
    detail::CellStyle *styleFor(int row, int col);
    const detail::CellStyle *styleAt(int row, int col) const;
    template <typename Fn> void forRange(int r1, int c1, int r2, int c2, Fn fn);
    QVariant displayText(int row, int col) const;
    QVariant fontFor(int row, int col) const;
    quint16 fontIndexOf(const QString &family);
    void resizeRowCells(detail::GridRow &row) const;
    void rebuildKeyIndex() const;

    std::vector<detail::GridRow> m_rows;
    std::vector<detail::GridColumn> m_cols;
    QStringList m_fontNames;
    mutable QHash<QString, int> m_keyIndex;
    mutable bool m_keyIndexValid = false;
    int m_fixedRows = 1;
    int m_fixedCols = 1;
    int m_cursorRow = -1;
    int m_cursorCol = 1;
    int m_selRow1 = -1, m_selCol1 = 1, m_selRow2 = -1, m_selCol2 = 1;
    int m_defaultRowHeight = 22;
    int m_rowHeightMin = 0;
    int m_rowHeightMax = 0;
    QString m_tag;
    QFont m_font;
    bool m_fontSet = false;
    bool m_redraw = true;
    bool m_editable = true;
    bool m_rowsShifted = true;
    EditCycle *m_editCycle = nullptr;
};

} // namespace kx
