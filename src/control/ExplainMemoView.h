#pragma once

#include <QDialog>
#include <QPointer>

class QLabel;
class QListWidget;

namespace kx {

class AccContext;
class JournalPrivate;

/// The explanations kept for the book shown (常用摘要), edited by the
/// cashier: 添加 adds the explanation of the current row (or an empty line
/// to type), 删除 takes the selected ones out, 上移/下移 reorder, 保存 keeps
/// the list for every cashier of the book. Kept explanations head the
/// explanation list when a record is typed.
class ExplainMemoView : public QDialog
{
    Q_OBJECT
public:
    /// Opens the list of the book \a d shows (one at a time), or says why it
    /// cannot; the view, or nullptr.
    static ExplainMemoView *open(JournalPrivate &d);
    ExplainMemoView(JournalPrivate &d, AccContext &acc, QWidget *parent);

    /// The texts as listed now.
    QStringList texts() const;
    /// Adds \a text at the end (an empty text: a line to type into).
    void add(const QString &text);
    /// Takes the selected lines out.
    void removeSelected();
    /// Moves the current line one up (\a up) or down.
    void move(bool up);
    /// Keeps the list; false when it was refused (the reason shown, the
    /// list as typed).
    bool save();

private:
    QString currentExplanation() const;
    void say(const QString &text, bool problem);

    JournalPrivate &m_d;
    QPointer<AccContext> m_acc;  ///< the host may delete it while the view is open
    int m_book;
    QListWidget *m_list;
    QLabel *m_status;
};

} // namespace kx
