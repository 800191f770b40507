#pragma once

#include "grid/CellStore.h"
#include "grid/GridColumns.h"
#include "grid/GridStyles.h"

#include <QFont>
#include <QString>

class QItemSelectionModel;

namespace kx {

class EditCycle;

/// GridModel's state: the three parts it projects and its few settings.
class GridModelPrivate
{
public:
    CellStore store;
    GridStyles styles;
    GridColumns columns;
    QItemSelectionModel *selection = nullptr;
    EditCycle *editCycle = nullptr;
    int fixedRows = 1;
    int fixedCols = 1;
    int lastCol = 1;  ///< the cursor column while there is no current cell
    int defaultRowHeight = 22;
    int rowHeightMin = 0;
    int rowHeightMax = 0;
    QString tag;
    QFont font;
    bool fontSet = false;
    bool redraw = true;
    bool editable = true;
    bool rowsShifted = true;

    bool isCell(int row, int col) const { return store.contains(row, col); }
    void resizeRows(int n)
    {
        store.resizeRows(n);
        styles.resizeRows(n);
    }
    void resizeCols(int n)
    {
        store.resizeCols(n);
        styles.resizeCols(n);
        columns.resize(n);
    }
};

} // namespace kx
