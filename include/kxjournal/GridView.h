#pragma once

#include "kxjournal/kxjournal_export.h"
#include "kxjournal/GridModel.h"

#include <QColor>
#include <QStringList>
#include <QTableView>
#include <memory>

namespace kx {

class GridViewPrivate;

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
    GridModel *gridModel() const;

    /// Grid row under the mouse at the last mouse event (-1 when none).
    int mouseRow() const;
    /// Grid column under the mouse at the last mouse event (-1 when none).
    int mouseCol() const;
    /// The cell editor open now (nullptr when none).
    QWidget *activeEditor() const;

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

    /// Keeps the first \a count data columns in place while the others
    /// scroll sideways (0: none). The frozen part is a second view on the
    /// same model and selection.
    void setFrozenColumns(int count);
    /// The number of frozen data columns.
    int frozenColumns() const;
    /// Scrolls \a index into sight, clear of the frozen columns.
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;

    /// Stores the open editor's text through the edit cycle and closes it,
    /// as Enter would, without moving on; false when there is no editor or
    /// the text was refused (the editor then stays open).
    bool commitEditor();




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
    /// Opens a cell editor only when the edit cycle's before-edit lets it.
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;
    /// Stores the editor's text through the edit cycle (validate, write, after-edit).
    void commitData(QWidget *editor) override;
    /// Closes the editor; one the edit cycle refused stays open with its text.
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;
    /// Tab and Enter move as the control's navigation says; other keys as a table view's.
    QModelIndex moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers) override;
    /// Keys a cell does not take (the control's commands) are raised as commandKey().
    void keyPressEvent(QKeyEvent *event) override;
    /// Notes the cell under the mouse and raises mouseDown().
    void mousePressEvent(QMouseEvent *event) override;
    /// Notes the cell under the mouse and raises mouseMove().
    void mouseMoveEvent(QMouseEvent *event) override;
    /// Notes the cell under the mouse and raises mouseUp().
    void mouseReleaseEvent(QMouseEvent *event) override;
    /// Rows dragged by the row header.
    bool eventFilter(QObject *watched, QEvent *event) override;
    /// Follows a new palette.
    void changeEvent(QEvent *event) override;
    /// Keeps the frozen columns over the view.
    void resizeEvent(QResizeEvent *event) override;
    /// Keeps the frozen columns over the view.
    void updateGeometries() override;

private:
    friend class GridViewPrivate;
    void syncRow(int row);
    void syncCol(int col);
    void onSectionMoved(int logical, int oldVisual, int newVisual);
    void onSectionResized(int logical, int oldSize, int newSize);
    QPalette basePalette() const;
    void trackMouse(const QPoint &pos);
    void applyLook();
    QModelIndex navigate(bool backwards, bool enter);
    bool rowHeaderMouse(QMouseEvent *event);
    std::pair<int, int> dropCell(const QPoint &headerPos) const;
    void syncRows();
    void syncCols();
    bool isFrozenColumn(int column) const;

    std::unique_ptr<GridViewPrivate> const d;
};

} // namespace kx
