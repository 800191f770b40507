#pragma once

#include <QTableView>

namespace kx {

class GridView;

/// The frozen leading columns of a GridView: a second view over the same
/// model and selection, laid over the main view's left edge. It follows the
/// main view's rows, widths and vertical scrolling; it takes no focus and
/// opens no editor of its own: a double-click edits in the main view.
class FrozenColumns : public QTableView
{
    Q_OBJECT
public:
    /// The frozen part of \a main (which owns it).
    explicit FrozenColumns(GridView *main);

    /// Shows the model of the main view, sharing its selection.
    void attach();
    /// Shows the first \a count data columns.
    void setCount(int count);
    /// Takes the main view's column widths, hidden columns and row layout.
    void follow();
    /// Places itself over the main view's frozen columns.
    void place();
    /// The width the frozen columns take.
    int frozenWidth() const;

private:
    GridView *m_main;
    int m_count = 0;
    bool m_following = false;
};

} // namespace kx
