#pragma once

#include "bank/ReconcileSession.h"

#include <QDialog>
#include <QPointer>
#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QTableWidget;

namespace kx {

class AccContext;
class JournalPrivate;

/// Reconciling the bank book shown, beside the journal: the month's
/// statement lines on the left, its records on the right, each with its
/// tick. Select a line and the records that answer it, then 勾对 (Enter);
/// 取消勾对 (Delete) takes a line's ticks off; 撤销 (Ctrl+Z) takes the last
/// step back; 自动勾对 ticks what needs no guess; 生成记录 makes a line the
/// journal lacks into a record at the bottom of the book, as if typed.
/// Every tick is stored at once; the journal's records are not changed.
class ReconcileView : public QDialog
{
    Q_OBJECT
public:
    /// Opens the view of the book \a d shows (one at a time), or says why it
    /// cannot; the view, or nullptr.
    static ReconcileView *open(JournalPrivate &d);
    /// The view of the book \a d shows, over its context \a acc.
    ReconcileView(JournalPrivate &d, AccContext &acc, QWidget *parent);
    ~ReconcileView() override;

    /// Reads the statement and the book again and shows them.
    bool reload();
    /// Shows the month \a day falls in (invalid: every month).
    void showMonth(const QDate &day);

    /// Imports the statement file \a path into the book: a table's columns,
    /// when this book has no layout yet, are shown and asked about once, and
    /// remembered. False when nothing was imported (the reason shown).
    bool importFile(const QString &path);
    /// Asks for the statement file to import (a file dialog; tests set their own).
    std::function<QString()> chooseFile;

    void autoMatch();
    void matchSelected();
    void unmatchSelected();
    void undo();
    void recordFromSelected();

private:
    bool contextGone();
    void fill();
    void say(const QString &text, bool problem);
    QList<int> selectedKeys(QTableWidget *table) const;

    JournalPrivate &d;
    QPointer<AccContext> m_acc;
    std::unique_ptr<ReconcileSession> m_session;
    QComboBox *m_month = nullptr;
    QTableWidget *m_lines = nullptr;
    QTableWidget *m_records = nullptr;
    QLabel *m_status = nullptr;
};

} // namespace kx
