#pragma once

#include <QMainWindow>

namespace kx {
class GridModel;
class GridView;
}

/// The demo host's main window: a journal grid in a window, as a host
/// program would show it.
class DemoWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// Builds the window and its grid.
    explicit DemoWindow(QWidget *parent = nullptr);

private:
    kx::GridModel *m_grid;
    kx::GridView *m_view;
};
