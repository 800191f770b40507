#pragma once

#include "kxjournal/GridModel.h"

#include <QColor>
#include <QModelIndex>
#include <QPoint>
#include <QPointer>
#include <QStringList>
#include <functional>
#include <utility>

class QTableView;
class QWidget;

namespace kx {

class FrozenColumns;
class GridDelegate;
class GridView;

/// GridView's state, and the hooks the control sets on its grid view: how
/// Tab and Enter move, which row drops to refuse, what a double-click does,
/// which columns warn of negative figures.
class GridViewPrivate
{
public:
    /// The next cell to go to from (\a row, \a col); (-1, -1) keeps the
    /// view's own move.
    using CellNavigator = std::function<std::pair<int, int>(int row, int col, bool backwards, bool enter)>;
    /// True when the row dragged from \a source must not drop at (\a row, \a col).
    using RowDropTest = std::function<bool(int source, int row, int col)>;
    /// True when the double-click on (\a row, \a col) was handled (no editor opens).
    using DoubleClickHandler = std::function<bool(int row, int col)>;

    explicit GridViewPrivate(GridView *view) : q(view) {}

    /// The state of \a view.
    static GridViewPrivate &get(GridView *view);

    /// Sets the keys of the columns whose negative figures warn.
    void setWarnNegativeKeys(const QStringList &keys);
    /// True when the cell at \a index warns.
    bool warnsAt(const QModelIndex &index) const;
    /// The view showing the frozen columns (nullptr while none are frozen).
    QTableView *frozenView() const;
    /// True while a row is dragged by its header.
    bool isDraggingRow() const { return m_dragSource >= 0 && m_dragging; }

    GridView *const q;
    RowDropTest m_dropTest;
    DoubleClickHandler m_doubleClick;
    CellNavigator m_navigator;
    int m_dragSource = -1;  ///< the row pressed on in the row header (-1: none)
    bool m_dragging = false;
    QPoint m_pressPos;
    QPointer<GridModel> m_model;
    GridDelegate *m_delegate = nullptr;
    QPointer<QWidget> m_activeEditor;
    QWidget *m_rejectedEditor = nullptr;
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
