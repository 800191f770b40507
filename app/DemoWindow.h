#pragma once

#include <QMainWindow>
#include <memory>

class QLabel;
class QMenu;
class QProgressBar;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;

namespace kx {
class Database;
class Journal;
class SqlAccContext;
}

/// The demo host: a small accounting window around the journal control, and
/// the reference for hosts. It owns the database and the accounting context,
/// shows the book tree at the left (choosing a book loads it), puts the
/// control's own menu items on its menu bar and toolbar, the control's
/// messages in the status bar beside a progress bar, and asks before a book
/// with unsaved changes is left. Recent files, the window's geometry, the
/// split between tree and book and the control's property bag are kept in
/// the user's settings unless the window is told to forget them.
class DemoWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// An empty window; \a remember: restore and keep settings.
    explicit DemoWindow(bool remember = true, QWidget *parent = nullptr);
    ~DemoWindow() override;

    /// Opens the journal database at \a url (creating the schema of a new
    /// SQLite file); the reason when it cannot be opened, else empty.
    QString openDatabase(const QString &url);
    /// Uses \a db, already open on \a url; the reason when it holds no
    /// journal books, else empty.
    QString useDatabase(kx::Database db, const QString &url);
    /// Selects the book with code \a code and loads it; false when there is none.
    bool openBook(const QString &code);
    /// The hosted control.
    kx::Journal *journal() const { return m_journal; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildMenus();
    void fillBookTree();
    void onBookChosen(QTreeWidgetItem *item);
    bool mayLeaveBook();
    void newDatabase();
    void chooseDatabase();
    void rememberFile(const QString &path);
    void fillRecentMenu();
    void restoreSettings();
    void saveSettings() const;

    bool m_remember;
    std::unique_ptr<kx::SqlAccContext> m_context;
    QString m_url;
    kx::Journal *m_journal;
    QTreeWidget *m_books;
    QSplitter *m_split;
    QLabel *m_message;
    QProgressBar *m_progress;
    QMenu *m_recent = nullptr;
    QTreeWidgetItem *m_shownBook = nullptr;
};
