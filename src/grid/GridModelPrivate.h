#pragma once

#include "grid/CellStore.h"
#include "grid/GridChangesData.h"
#include "grid/GridColumns.h"
#include "grid/GridStyles.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QString>
#include <memory>

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
    quint64 revision = 0;                  ///< counts every change of content, looks or shape
    std::unique_ptr<GridChangesData> log;  ///< what changes are recorded into (null: none)
    int logDepth = 0;
    bool reverting = false;
    int dragMarkRow = -1;
    int markCol = -1;  ///< the column whose marked rows show markColor
    QColor markColor;
    QHash<QString, int> derivedPeaks;  ///< column key → row of its widest derived figure  ///< the row a drag started on (not part of the content)

    /// Something changed that a record of changes cannot put back.
    void unrecordable()
    {
        ++revision;
        if (log)
            log->complete = false;
    }
    /// Notes the look of (row, col) before it changes.
    void logLook(int row, int col)
    {
        if (log)
            log->look(row, col, styles.at(row, col));
    }

    /// Notes the shape of \a row before it changes.
    void logShape(int row)
    {
        ++revision;
        if (log)
            log->shape(row, store.shape(row));
    }

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
