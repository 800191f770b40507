#include "DemoWindow.h"

#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QMap>
#include <QMessageBox>
#include <QProgressBar>
#include <QSplitter>
#include <QSqlQuery>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>

DemoWindow::DemoWindow(kx::SqlAccContext *context, QWidget *parent)
    : QMainWindow(parent), m_context(context), m_journal(new kx::Journal), m_books(new QTreeWidget),
      m_message(new QLabel), m_progress(new QProgressBar)
{
    setWindowTitle(QStringLiteral("kxAccJournal 日记账 — 演示"));
    m_journal->setAcc(context);
    m_journal->setAccountFormat(QStringLiteral("#,##0.00"));
    m_journal->setRateFormat(QStringLiteral("0.0000"));
    m_journal->setLockedForeColor(QColor(0x5a, 0x6b, 0x86));
    m_journal->setModifiedForeColor(QColor(0x00, 0x40, 0xc0));
    m_journal->setHotBackColor(QColor(0xff, 0xf8, 0xd8));
    m_journal->setWarnBackColor(QColor(0xff, 0xd8, 0xd8));
    m_journal->setBackColorBkg(QColor(0xe8, 0xec, 0xf0));
    m_journal->setBorderColor(QColor(0x9a, 0xa8, 0xb8));
    m_journal->setOutlineKey(QStringLiteral("JnlDate"));

    m_books->setHeaderLabels({QStringLiteral("日记账")});
    m_books->header()->setStretchLastSection(true);
    fillBookTree();
    connect(m_books, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem *item) { onBookChosen(item); });

    auto *split = new QSplitter;
    split->addWidget(m_books);
    split->addWidget(m_journal);
    split->setStretchFactor(1, 1);
    split->setSizes({200, 1000});
    setCentralWidget(split);

    QToolBar *bar = addToolBar(QStringLiteral("日记账"));
    QAction *packed = bar->addAction(QStringLiteral("合并显示"));
    packed->setCheckable(true);
    connect(packed, &QAction::toggled, this, [this](bool on) {
        m_journal->setIsPackedJnl(on);
        m_journal->Load();
    });
    QAction *save = bar->addAction(QStringLiteral("保存"));
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, [this] { m_journal->Save(); });
    QAction *recalc = bar->addAction(QStringLiteral("刷新"));
    connect(recalc, &QAction::triggered, this, [this] { m_journal->DoCommand(QStringLiteral("Refresh")); });

    m_progress->setRange(0, 100);
    m_progress->setMaximumWidth(180);
    m_progress->hide();
    statusBar()->addWidget(m_message, 1);
    statusBar()->addPermanentWidget(m_progress);
    connect(m_journal, &kx::Journal::Notify, this, [this](const QString &text, bool box) {
        m_message->setText(text);
        if (box)
            QMessageBox::information(this, m_journal->Caption(), text);
    });
    connect(m_journal, &kx::Journal::Process, this, [this](int n) {
        m_progress->setVisible(n >= 0);
        if (n >= 0)
            m_progress->setValue(n);
    });
    // What a host's voucher module would do, shown as messages here.
    connect(m_journal, &kx::Journal::AfterMaked, this, [this](const QString &path) {
        m_message->setText(QStringLiteral("凭证文件已生成：%1").arg(path));
    });
    connect(m_journal, &kx::Journal::CommandExecute, this, [this](const QString &command, bool &) {
        if (command == QLatin1String("LookAccDoc") || command == QLatin1String("DocRecs"))
            m_message->setText(QStringLiteral("%1：凭证 DocID %2（由宿主程序显示）")
                                   .arg(command == QLatin1String("DocRecs") ? QStringLiteral("凭证的记录") : QStringLiteral("查看凭证"))
                                   .arg(m_journal->DirID()));
    });
    resize(1280, 760);
}

void DemoWindow::fillBookTree()
{
    QSqlQuery q(m_context->Connection().handle());
    q.exec(QStringLiteral("Select asID, AssistCode, AssistName From kxJournal Order by AssistCode"));
    QMap<QString, QTreeWidgetItem *> byCode;
    while (q.next()) {
        const QString code = q.value(1).toString();
        QTreeWidgetItem *parent = nullptr;
        for (int len = int(code.size()) - 1; len > 0 && !parent; --len)
            parent = byCode.value(code.left(len));
        auto *item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_books);
        item->setText(0, code + QLatin1Char(' ') + q.value(2).toString());
        item->setData(0, Qt::UserRole, q.value(0).toInt());
        item->setData(0, Qt::UserRole + 1, code);
        byCode.insert(code, item);
    }
    m_books->expandAll();
}

void DemoWindow::onBookChosen(QTreeWidgetItem *item)
{
    if (!item)
        return;
    m_journal->setDocID(item->data(0, Qt::UserRole).toInt());
    m_journal->Load();
}

void DemoWindow::openBook(const QString &code)
{
    const QList<QTreeWidgetItem *> all = m_books->findItems(QStringLiteral("*"), Qt::MatchWildcard | Qt::MatchRecursive);
    for (QTreeWidgetItem *item : all) {
        if (item->data(0, Qt::UserRole + 1).toString() == code) {
            m_books->setCurrentItem(item);
            onBookChosen(item);
            return;
        }
    }
}
