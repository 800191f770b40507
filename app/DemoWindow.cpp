#include "DemoWindow.h"

#include <kxjournal/BookDirectory.h>
#include <kxjournal/Database.h>
#include <kxjournal/GridView.h>
#include <kxjournal/Journal.h>
#include <kxjournal/SettingsPropertyBag.h>
#include "SampleBooks.h"
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QCloseEvent>
#include <QDate>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QMap>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QSettings>
#include <QSplitter>
#include <QSqlError>
#include <QSqlQuery>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QTreeWidget>

namespace {

const int MaxRecent = 6;

// A freedesktop theme icon where the desktop has one, else the style's own.
QIcon icon(const char *themeName, QStyle::StandardPixmap fallback, const QStyle *style)
{
    return QIcon::fromTheme(QLatin1String(themeName), style->standardIcon(fallback));
}

} // namespace

DemoWindow::DemoWindow(bool remember, QWidget *parent)
    : QMainWindow(parent), m_remember(remember), m_journal(new kx::Journal), m_books(new QTreeWidget),
      m_split(new QSplitter), m_message(new QLabel), m_progress(new QProgressBar)
{
    setWindowTitle(QStringLiteral("kxAccJournal 日记账 — 演示"));
    // Only what a host would choose: no amount format, so the control's own shows.
    m_journal->setRateFormat(QStringLiteral("0.0000"));
    m_journal->setModifiedForeColor(QColor(0x00, 0x40, 0xc0));
    m_journal->setOutlineKey(QStringLiteral("JnlDate"));

    m_books->setHeaderLabels({QStringLiteral("日记账")});
    m_books->header()->setStretchLastSection(true);
    connect(m_books, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem *item) { onBookChosen(item); });
    m_split->setObjectName(QStringLiteral("bookSplit"));
    m_split->addWidget(m_books);
    m_split->addWidget(m_journal);
    m_split->setStretchFactor(1, 1);
    m_split->setSizes({220, 1060});
    setCentralWidget(m_split);

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
    connect(m_journal, &kx::Journal::dirtyChanged, this, [this](bool dirty) { setWindowModified(dirty); });
    // What a host's voucher module would do, shown as messages here.
    connect(m_journal, &kx::Journal::AfterMaked, this, [this](const QString &path) {
        m_message->setText(QStringLiteral("凭证文件已生成：%1").arg(path));
    });
    connect(m_journal, &kx::Journal::AfterExport, this, [this](const QString &path) {
        m_message->setText(QStringLiteral("已导出到 %1").arg(path));
    });
    connect(m_journal, &kx::Journal::CommandExecute, this, [this](const QString &command, bool &) {
        if (command == QLatin1String("LookAccDoc") || command == QLatin1String("DocRecs"))
            m_message->setText(QStringLiteral("%1：凭证 DocID %2（由宿主程序显示）")
                                   .arg(command == QLatin1String("DocRecs") ? QStringLiteral("凭证的记录") : QStringLiteral("查看凭证"))
                                   .arg(m_journal->DirID()));
    });
    buildMenus();
    resize(1280, 760);
    if (m_remember)
        restoreSettings();
}

DemoWindow::~DemoWindow() = default;

void DemoWindow::buildMenus()
{
    const QStyle *s = style();
    // The control's own items: the same actions, enabled when they can run.
    const auto item = [this](const char *name) { return m_journal->menuAction(QLatin1String(name)); };
    // Items by name; "" stands for a separator.
    const auto fill = [&item](auto *target, std::initializer_list<const char *> names) {
        for (const char *name : names) {
            if (*name)
                target->addAction(item(name));
            else
                target->addSeparator();
        }
    };

    QMenu *file = menuBar()->addMenu(QStringLiteral("文件(&F)"));
    QAction *create = file->addAction(icon("document-new", QStyle::SP_FileIcon, s), QStringLiteral("新建账套文件(&N)..."));
    connect(create, &QAction::triggered, this, &DemoWindow::newDatabase);
    QAction *open = file->addAction(icon("document-open", QStyle::SP_DialogOpenButton, s), QStringLiteral("打开账套文件(&O)..."));
    connect(open, &QAction::triggered, this, &DemoWindow::chooseDatabase);
    m_recent = file->addMenu(QStringLiteral("最近打开的文件(&R)"));
    connect(m_recent, &QMenu::aboutToShow, this, &DemoWindow::fillRecentMenu);
    file->addSeparator();
    file->addAction(item("mnuExport"));
    file->addAction(item("mnuPrint"));
    file->addSeparator();
    QAction *quit = file->addAction(QStringLiteral("退出(&X)"));
    connect(quit, &QAction::triggered, this, &QWidget::close);

    QMenu *edit = menuBar()->addMenu(QStringLiteral("编辑(&E)"));
    fill(edit, {"mnuUndo", "mnuRedo", "", "mnuCut", "mnuCopy", "mnuPaste", "mnuClear", "", "mnuInsertRows",
                "mnuDeleteRows", "", "mnuFind"});

    QMenu *book = menuBar()->addMenu(QStringLiteral("账簿(&B)"));
    fill(book, {"mnuSave", "mnuRefresh", "", "mnuInsSumRow", "mnuRemoveSumRow", "mnuCloseBook", "mnuCheckBook",
                "mnuRecalc", "mnuStatistics", "", "mnuMakeDoc", "mnuAccDoc"});

    QMenu *view = menuBar()->addMenu(QStringLiteral("视图(&V)"));
    fill(view, {"mnuPackJnl", "mnuFieldShow", "mnuDefaultFormat", "mnuSideTask"});

    item("mnuSave")->setIcon(icon("document-save", QStyle::SP_DialogSaveButton, s));
    item("mnuUndo")->setIcon(icon("edit-undo", QStyle::SP_ArrowBack, s));
    item("mnuRedo")->setIcon(icon("edit-redo", QStyle::SP_ArrowForward, s));
    item("mnuFind")->setIcon(icon("edit-find", QStyle::SP_FileDialogContentsView, s));
    item("mnuExport")->setIcon(icon("document-export", QStyle::SP_DriveFDIcon, s));
    item("mnuPrint")->setIcon(icon("document-print-preview", QStyle::SP_FileDialogDetailedView, s));
    item("mnuCloseBook")->setIcon(icon("view-calendar-month", QStyle::SP_DialogApplyButton, s));
    item("mnuCheckBook")->setIcon(icon("tools-check-spelling", QStyle::SP_DialogYesButton, s));
    item("mnuRefresh")->setIcon(icon("view-refresh", QStyle::SP_BrowserReload, s));

    QToolBar *bar = addToolBar(QStringLiteral("日记账"));
    bar->setObjectName(QStringLiteral("mainToolBar"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addAction(create);
    bar->addAction(open);
    bar->addSeparator();
    fill(bar, {"mnuSave", "mnuUndo", "mnuRedo", "", "mnuFind", "mnuExport", "mnuPrint", "", "mnuCloseBook",
               "mnuCheckBook", "mnuPackJnl"});
}

QString DemoWindow::openDatabase(const QString &url)
{
    const bool fresh = url.startsWith(QLatin1String("sqlite:")) && !QFileInfo::exists(url.mid(7));
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen())
        return db.lastError();
    if (fresh) {
        const kx::Result<void> made = kx::Schema::create(db);
        if (!made.ok())
            return made.error();
    }
    if (const QString why = useDatabase(std::move(db), url); !why.isEmpty())
        return QStringLiteral("%1 不是日记账账套：%2").arg(kx::Database::shownUrl(url), why);
    return {};
}

QString DemoWindow::useDatabase(kx::Database db, const QString &url)
{
    if (const kx::Result<kx::BookDirectory> books = kx::BookDirectory::read(db); !books.ok())
        return books.error();
    auto context = std::make_unique<kx::SqlAccContext>(std::move(db));
    context->setUserName(QStringLiteral("演示用户"));
    context->setDirectorName(QStringLiteral("王会计"));
    const QDate today = QDate::currentDate();
    context->setBeginDate(QDate(today.year(), 1, 1));
    context->setDocTypes(QStringLiteral("记|收|付|转"));
    context->setCurPeriod(today.toString(QStringLiteral("yyyyMM")));
    context->setPeriodStart(QDate(today.year(), today.month(), 1));
    context->setPeriodEnd(QDate(today.year(), today.month(), today.daysInMonth()));
    m_journal->setAcc(context.get());
    m_context = std::move(context);
    m_url = url;
    m_shownBook = nullptr;
    fillBookTree();
    if (url.startsWith(QLatin1String("sqlite:")) && url != QLatin1String("sqlite::memory:"))
        rememberFile(url.mid(7));
    setWindowFilePath(url.startsWith(QLatin1String("sqlite:")) ? url.mid(7) : kx::Database::shownUrl(url));
    return {};
}

void DemoWindow::fillBookTree()
{
    m_books->clear();
    const kx::Result<kx::BookDirectory> books = kx::BookDirectory::read(m_context->Connection());
    if (!books.ok()) {
        statusBar()->showMessage(books.error());
        return;
    }
    // Code order puts every book after the book above it.
    QHash<int, QTreeWidgetItem *> byId;
    for (const kx::BookDirectory::Book &book : books.value().books()) {
        QTreeWidgetItem *parent = byId.value(book.parentId);
        auto *item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_books);
        item->setText(0, book.code + QLatin1Char(' ') + book.name);
        item->setData(0, Qt::UserRole, book.id);
        item->setData(0, Qt::UserRole + 1, book.code);
        byId.insert(book.id, item);
    }
    m_books->expandAll();
}

bool DemoWindow::mayLeaveBook()
{
    // What is still in an open cell counts: it is stored first (and a text
    // the cell refuses keeps the user where they are).
    if (m_journal->gridView()->activeEditor() && !m_journal->gridView()->commitEditor())
        return false;
    if (!m_journal->IsDirty())
        return true;
    const auto answer = QMessageBox::question(
        this, m_journal->Caption(), QStringLiteral("“%1”有没有存储的修改。要先存储吗？").arg(m_journal->Caption()),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Cancel)
        return false;
    // A save that fails keeps the book (and the user) where they are.
    return answer == QMessageBox::Discard || m_journal->Save();
}

void DemoWindow::onBookChosen(QTreeWidgetItem *item)
{
    if (!item || item == m_shownBook)
        return;
    if (!mayLeaveBook()) {
        m_books->setCurrentItem(m_shownBook);
        return;
    }
    m_shownBook = item;
    m_journal->setDocID(item->data(0, Qt::UserRole).toInt());
    m_journal->Load();
}

bool DemoWindow::openBook(const QString &code)
{
    const QList<QTreeWidgetItem *> all = m_books->findItems(QStringLiteral("*"), Qt::MatchWildcard | Qt::MatchRecursive);
    for (QTreeWidgetItem *item : all) {
        if (item->data(0, Qt::UserRole + 1).toString() == code) {
            m_books->setCurrentItem(item);
            onBookChosen(item);
            return true;
        }
    }
    return false;
}

void DemoWindow::newDatabase()
{
    if (!mayLeaveBook())
        return;
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("新建账套文件"), QString(),
                                                      QStringLiteral("日记账账套 (*.db)"));
    if (path.isEmpty())
        return;
    QFile::remove(path);
    const QString why = openDatabase(QStringLiteral("sqlite:") + path);
    if (!why.isEmpty()) {
        QMessageBox::warning(this, windowTitle(), why);
        return;
    }
    if (QMessageBox::question(this, windowTitle(), QStringLiteral("新账套还没有账簿。要写入示例账簿吗？"),
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes) == QMessageBox::Yes) {
        kx::SampleOptions options;
        options.records = 3000;
        const kx::Result<void> made = kx::SampleBooks::create(m_context->Connection(), options);
        if (!made.ok())
            QMessageBox::warning(this, windowTitle(), made.error());
        fillBookTree();
    }
}

void DemoWindow::chooseDatabase()
{
    if (!mayLeaveBook())
        return;
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("打开账套文件"), QString(),
                                                      QStringLiteral("日记账账套 (*.db);;所有文件 (*)"));
    if (path.isEmpty())
        return;
    const QString why = openDatabase(QStringLiteral("sqlite:") + path);
    if (!why.isEmpty())
        QMessageBox::warning(this, windowTitle(), why);
}

void DemoWindow::rememberFile(const QString &path)
{
    if (!m_remember)
        return;
    QSettings settings;
    QStringList files = settings.value(QStringLiteral("recentFiles")).toStringList();
    const QString full = QFileInfo(path).absoluteFilePath();
    files.removeAll(full);
    files.prepend(full);
    settings.setValue(QStringLiteral("recentFiles"), files.mid(0, MaxRecent));
}

void DemoWindow::fillRecentMenu()
{
    m_recent->clear();
    const QStringList files = QSettings().value(QStringLiteral("recentFiles")).toStringList();
    for (const QString &path : files) {
        QAction *a = m_recent->addAction(path);
        a->setEnabled(QFileInfo::exists(path));
        connect(a, &QAction::triggered, this, [this, path] {
            if (!mayLeaveBook())
                return;
            const QString why = openDatabase(QStringLiteral("sqlite:") + path);
            if (!why.isEmpty())
                QMessageBox::warning(this, windowTitle(), why);
        });
    }
    if (files.isEmpty())
        m_recent->addAction(QStringLiteral("（无）"))->setEnabled(false);
}

void DemoWindow::restoreSettings()
{
    QSettings settings;
    restoreGeometry(settings.value(QStringLiteral("window/geometry")).toByteArray());
    restoreState(settings.value(QStringLiteral("window/state")).toByteArray());
    m_split->restoreState(settings.value(QStringLiteral("window/bookSplit")).toByteArray());
    // The control's own settings: colours, columns, its panes.
    kx::SettingsPropertyBag(settings, QStringLiteral("journal")).loadJournal(*m_journal);
}

void DemoWindow::saveSettings() const
{
    QSettings settings;
    settings.setValue(QStringLiteral("window/geometry"), saveGeometry());
    settings.setValue(QStringLiteral("window/state"), saveState());
    settings.setValue(QStringLiteral("window/bookSplit"), m_split->saveState());
    kx::SettingsPropertyBag(settings, QStringLiteral("journal")).saveJournal(*m_journal);
}

void DemoWindow::closeEvent(QCloseEvent *event)
{
    if (!mayLeaveBook()) {
        event->ignore();
        return;
    }
    if (m_remember)
        saveSettings();
    event->accept();
}
