#pragma once

#include "kxjournal/kxjournal_export.h"
#include "kxjournal/GridModel.h"

#include <QColor>
#include <QPointer>
#include <QStringList>
#include <QTableView>
#include <functional>

namespace kx {

class FrozenColumns;
class GridDelegate;

/// The on-screen grid: shows a GridModel with its fixed row as the column
/// header and its fixed column as a frozen row-selector column, draws the
/// model's colours, fonts, alignment, hidden rows and columns and row heights,
/// and runs the model's edit cycle when a person edits a cell. Leading
/// columns may be frozen: they stay in place while the rest scrolls.
/// Colours not set take the palette's, so a dark palette stays readable.
///
/// The cursor and the selected block are kept the same in the view and in the
/// model, whichever side moves them. A column dragged by its header moves the
/// model's column (its key goes with it).
class KXJOURNAL_EXPORT GridView : public QTableView
{
    Q_OBJECT
public:
    /// A view without a model.
    explicit GridView(QWidget *parent = nullptr);
    ~GridView() override;

    /// Opens the editor of a cell, through the edit cycle (QAbstractItemView::edit).
    using QTableView::edit;

    /// Shows \a model (not owned).
    void setGridModel(GridModel *model);
    /// The model shown.
    GridModel *gridModel() const { return m_model; }

    /// Grid row under the mouse at the last mouse event (-1 when none).
    int mouseRow() const { return m_mouseRow; }
    /// Grid column under the mouse at the last mouse event (-1 when none).
    int mouseCol() const { return m_mouseCol; }
    /// The cell editor open now (nullptr when none).
    QWidget *activeEditor() const { return m_activeEditor; }

    /// Background of the cells.
    QColor backColor() const;
    /// Sets the background of the cells.
    void setBackColor(const QColor &c);
    /// Background of the fixed row and column.
    QColor backColorFixed() const;
    /// Sets the background of the fixed row and column.
    void setBackColorFixed(const QColor &c);
    /// Background of the area outside the cells.
    QColor backColorBkg() const;
    /// Sets the background of the area outside the cells.
    void setBackColorBkg(const QColor &c);
    /// Colour of the grid lines between cells.
    QColor gridColor() const;
    /// Sets the colour of the grid lines between cells.
    void setGridColor(const QColor &c);
    /// Colour of the grid lines of the fixed row and column.
    QColor gridColorFixed() const;
    /// Sets the colour of the grid lines of the fixed row and column.
    void setGridColorFixed(const QColor &c);
    /// Background of the current row.
    QColor hotBackColor() const;
    /// Sets the background of the current row (invalid: from the palette).
    void setHotBackColor(const QColor &c);
    /// Background of a cell that warns (a negative figure).
    QColor warnBackColor() const;
    /// Sets the background of cells that warn (invalid: a soft red).
    void setWarnBackColor(const QColor &c);
    /// Sets the keys of the columns whose negative figures warn.
    void setWarnNegativeKeys(const QStringList &keys);
    /// True when the cell at \a index warns.
    bool warnsAt(const QModelIndex &index) const;

    /// Keeps the first \a count data columns in place while the others
    /// scroll sideways (0: none). The frozen part is a second view on the
    /// same model and selection.
    void setFrozenColumns(int count);
    /// The number of frozen data columns.
    int frozenColumns() const { return m_frozenCount; }
    /// The view showing the frozen columns (nullptr when none are frozen).
    QTableView *frozenView() const;
    /// Scrolls \a index into sight, clear of the frozen columns.
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;

    /// Where Tab (or Shift+Tab, \a backwards) and Enter (\a enter) go from
    /// grid cell (row, col): a grid cell, or (-1, -1) for the next cell in
    /// the view's own order.
    using CellNavigator = std::function<std::pair<int, int>(int row, int col, bool backwards, bool enter)>;
    /// Sets where Tab and Enter go, when typing and when moving about.
    void setCellNavigator(CellNavigator navigator) { m_navigator = std::move(navigator); }
    /// Stores the open editor's text through the edit cycle and closes it,
    /// as Enter would, without moving on; false when there is no editor or
    /// the text was refused (the editor then stays open).
    bool commitEditor();

    /// Decides whether row \a source may be dropped on grid (\a row, \a col),
    /// column 0 being the row header: true refuses (the pointer says so).
    using RowDropTest = std::function<bool(int source, int row, int col)>;
    /// Lets rows be dragged by their header, with \a test deciding where
    /// they may go; an empty test turns dragging off.
    void setRowDropTest(RowDropTest test) { m_dropTest = std::move(test); }
    /// True while a row is being dragged.
    bool isDraggingRow() const { return m_dragSource >= 0 && m_dragging; }

    /// Decides what a double-click on grid cell (\a row, \a col) does before
    /// it opens the cell's editor: true when it was handled (no editor opens).
    using DoubleClickHandler = std::function<bool(int row, int col)>;
    /// Sets what a double-click does first; an empty handler lets every
    /// double-click open the editor.
    void setDoubleClickHandler(DoubleClickHandler handler) { m_doubleClick = std::move(handler); }

    /// Re-reads every row's height and hidden flag from the model.
    void syncRows();
    /// Re-reads every column's width and hidden flag from the model.
    void syncCols();

Q_SIGNALS:
    /// A mouse button went down over the grid (buttons 1 left, 2 right,
    /// 4 middle; shift 1 Shift, 2 Ctrl, 4 Alt; x, y in pixels of the viewport).
    void mouseDown(int button, int shift, float x, float y);
    /// The mouse moved over the grid.
    void mouseMove(int button, int shift, float x, float y);
    /// A mouse button was released over the grid.
    void mouseUp(int button, int shift, float x, float y);
    /// A key that asks for a command was pressed on the grid (not in an
    /// editor): "InsertRows" (Ins), "DeleteRows" (Del), "Copy", "Cut",
    /// "Paste" (the platform's keys for them).
    void commandKey(const QString &command);
    /// Row \a source was dragged by its header and let go over grid
    /// (\a row, \a col) (column 0: the row header).
    void rowDropped(int source, int row, int col);
    /// The user dragged grid column \a col to \a width pixels (the model has it).
    void columnResized(int col, int width);

protected:
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;
    void commitData(QWidget *editor) override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;
    QModelIndex moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void updateGeometries() override;

private:
    void syncRow(int row);
    void syncCol(int col);
    void onSectionMoved(int logical, int oldVisual, int newVisual);
    void onSectionResized(int logical, int oldSize, int newSize);
    QPalette basePalette() const;
    bool isFrozenColumn(int column) const { return m_frozen && column < m_frozenCount; }
    void trackMouse(const QPoint &pos);
    void applyLook();
    QModelIndex navigate(bool backwards, bool enter);
    bool rowHeaderMouse(QMouseEvent *event);
    std::pair<int, int> dropCell(const QPoint &headerPos) const;

    RowDropTest m_dropTest;
    DoubleClickHandler m_doubleClick;
    int m_dragSource = -1;  ///< the row pressed on in the row header (-1: none)
    bool m_dragging = false;
    QPoint m_pressPos;

    QPointer<GridModel> m_model;
    GridDelegate *m_delegate = nullptr;
    QPointer<QWidget> m_activeEditor;
    QWidget *m_rejectedEditor = nullptr;
    CellNavigator m_navigator;
    bool m_committing = false;
    int m_mouseRow = -1;
    int m_mouseCol = -1;
    bool m_syncing = false;
    bool m_syncingRows = false;  ///< reading every row: the frozen part follows once at the end
    // Invalid until set: the palette's colour is used.
    QColor m_backColor;
    QColor m_backColorFixed;
    QColor m_backColorBkg;
    QColor m_gridColor;
    QColor m_gridColorFixed;
    QColor m_hotBackColor;
    QColor m_warnBackColor;
    QStringList m_warnKeys;
    FrozenColumns *m_frozen = nullptr;
    int m_frozenCount = 0;
};

} // namespace kx
