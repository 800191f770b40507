#include "DemoWindow.h"

#include <kxjournal/GridModel.h>
#include <kxjournal/GridView.h>

#include <QStatusBar>

DemoWindow::DemoWindow(QWidget *parent)
    : QMainWindow(parent), m_grid(new kx::GridModel(this)), m_view(new kx::GridView(this))
{
    setWindowTitle(QStringLiteral("日记账"));
    const QStringList headers{QStringLiteral("日期"), QStringLiteral("凭证号"), QStringLiteral("对方科目"),
                              QStringLiteral("摘要"), QStringLiteral("借方金额"), QStringLiteral("贷方金额"),
                              QStringLiteral("方向"), QStringLiteral("余额")};
    m_grid->setCols(int(headers.size()) + 1);
    m_grid->setColWidth(0, 28);
    for (int c = 0; c < headers.size(); ++c) {
        m_grid->setText(0, c + 1, headers.at(c));
        m_grid->setColWidth(c + 1, c == 3 ? 220 : 100);
    }
    m_grid->setRows(11);
    m_view->setGridModel(m_grid);
    setCentralWidget(m_view);
    statusBar()->showMessage(QStringLiteral("就绪"));
    resize(1000, 600);
}
