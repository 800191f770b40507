#pragma once

#include <QMainWindow>

class QLabel;
class QProgressBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace kx {
class Journal;
class SqlAccContext;
}

/// The demo host's main window: it hosts the journal control the way a host
/// program does. It owns the accounting context, shows the book tree on the
/// left (choosing a book loads it), a 合并显示 switch for the consolidated
/// journal, the control's messages in the status bar with a progress bar,
/// and message boxes for the messages that ask for one.
class DemoWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// A window on the database at \a url (already holding books).
    explicit DemoWindow(kx::SqlAccContext *context, QWidget *parent = nullptr);

    /// Selects the book with code \a code and loads it.
    void openBook(const QString &code);
    /// The hosted control.
    kx::Journal *journal() const { return m_journal; }

private:
    void fillBookTree();
    void onBookChosen(QTreeWidgetItem *item);

    kx::SqlAccContext *m_context;
    kx::Journal *m_journal;
    QTreeWidget *m_books;
    QLabel *m_message;
    QProgressBar *m_progress;
};
