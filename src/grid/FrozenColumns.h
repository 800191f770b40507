#pragma once

#include <QTableView>

namespace kx {

class GridView;

/// The frozen leading columns of a GridView: a second view over the same
/// model and selection, laid over the main view's left edge. It follows the
/// main view's rows, widths and vertical scrolling; it takes no focus and
/// opens no editor of its own: a double-click edits in the main view.
///
/// Its rows take their heights and hidden flags from the main view's row
/// header, never from anywhere else, so a row lies at the same pixels on
/// both sides of the frozen edge.
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
    /// Takes the main view's column widths, hidden columns and header height.
    void follow();
    /// Takes the main view's row heights and hidden rows, every one.
    void followRows();
    /// Takes the height and hidden flag of view row \a row from the main view.
    void followRow(int row);
    /// Places itself over the main view's frozen columns.
    void place();
    /// The width the frozen columns take.
    int frozenWidth() const;

private:
    GridView *m_main;
    QObject *m_modelWatch = nullptr; ///< receives the shown model's signals
    int m_count = 0;
    bool m_following = false;
    bool m_stale = false; ///< the model is being reset: this view's rows are not read yet
};

} // namespace kx
