#include "grid/GridDelegate.h"

#include "kxjournal/EditCycle.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/GridView.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>

namespace kx {

namespace {

QIcon ellipsisIcon()
{
    QPixmap pm(16, 16);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setPen(QApplication::palette().color(QPalette::ButtonText));
    p.drawText(pm.rect(), Qt::AlignCenter, QStringLiteral("…"));
    return QIcon(pm);
}

QLineEdit *lineEditOf(QWidget *editor)
{
    if (auto *le = qobject_cast<QLineEdit *>(editor))
        return le;
    if (auto *cb = qobject_cast<QComboBox *>(editor))
        return cb->lineEdit();
    return nullptr;
}

int keyCodeOf(const QKeyEvent *ke)
{
    switch (ke->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return EditCycle::KeyEnter;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return EditCycle::KeyTab;
    case Qt::Key_Backspace:
        return EditCycle::KeyBackspace;
    case Qt::Key_Escape:
        return EditCycle::KeyEscape;
    default:
        break;
    }
    const QString t = ke->text();
    if (t.isEmpty() || t.at(0).unicode() < 32 || (ke->modifiers() & Qt::ControlModifier))
        return 0;
    return t.at(0).unicode();
}

int qtKeyOf(int code)
{
    switch (code) {
    case EditCycle::KeyEnter: return Qt::Key_Return;
    case EditCycle::KeyTab: return Qt::Key_Tab;
    case EditCycle::KeyBackspace: return Qt::Key_Backspace;
    case EditCycle::KeyEscape: return Qt::Key_Escape;
    default: return 0;
    }
}

} // namespace

GridDelegate::GridDelegate(GridView *view) : QStyledItemDelegate(view), m_view(view) {}

QString GridDelegate::editorText(const QWidget *editor)
{
    if (auto *le = qobject_cast<const QLineEdit *>(editor))
        return le->text();
    if (auto *cb = qobject_cast<const QComboBox *>(editor))
        return cb->currentText();
    return {};
}

void GridDelegate::setEditorText(QWidget *editor, const QString &text)
{
    if (auto *le = qobject_cast<QLineEdit *>(editor))
        le->setText(text);
    else if (auto *cb = qobject_cast<QComboBox *>(editor))
        cb->setEditText(text);
}

QWidget *GridDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    GridModel *model = m_view ? m_view->gridModel() : nullptr;
    const QString list = model ? model->editCycle()->comboList() : QString();
    if (list.startsWith(QLatin1String("|..."))) {
        auto *le = new QLineEdit(parent);
        le->setFrame(false);
        QAction *button = le->addAction(ellipsisIcon(), QLineEdit::TrailingPosition);
        button->setObjectName(QStringLiteral("ellipsis"));
        button->setToolTip(QStringLiteral("选择…"));
        EditCycle *cycle = model->editCycle();
        connect(button, &QAction::triggered, cycle, &EditCycle::clickButton);
        return le;
    }
    if (!list.isEmpty()) {
        auto *cb = new QComboBox(parent);
        cb->setEditable(true);
        cb->setInsertPolicy(QComboBox::NoInsert);
        cb->setFrame(false);
        for (const QString &item : list.split(QLatin1Char('|'), Qt::SkipEmptyParts))
            cb->addItem(item);
        return cb;
    }
    auto *le = new QLineEdit(parent);
    le->setFrame(false);
    return le;
}

void GridDelegate::setEditorData(QWidget *editor, const QModelIndex &) const
{
    GridModel *model = m_view ? m_view->gridModel() : nullptr;
    if (model && model->editCycle()->isEditing())
        setEditorText(editor, model->editCycle()->editText());
}

void GridDelegate::setModelData(QWidget *, QAbstractItemModel *, const QModelIndex &) const
{
    // The view stores edits through the edit cycle (GridView::commitData).
}

void GridDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (m_view && option->backgroundBrush.style() == Qt::NoBrush)
        option->backgroundBrush = m_view->backColor();
}

bool GridDelegate::eventFilter(QObject *object, QEvent *event)
{
    auto *editor = qobject_cast<QWidget *>(object);
    GridModel *model = m_view ? m_view->gridModel() : nullptr;
    if (editor && model && event->type() == QEvent::KeyPress) {
        auto *ke = static_cast<QKeyEvent *>(event);
        // F4 presses the ellipsis button, so pickers need no mouse either.
        if (ke->key() == Qt::Key_F4 && model->editCycle()->comboList().startsWith(QLatin1String("|..."))) {
            model->editCycle()->clickButton();
            return true;
        }
        const int code = keyCodeOf(ke);
        if (code != 0) {
            const int out = model->editCycle()->keyPress(code);
            if (out == 0)
                return true;
            if (out != code) {
                QLineEdit *le = lineEditOf(editor);
                if (out == EditCycle::KeyBackspace) {
                    if (le)
                        le->backspace();
                    return true;
                }
                if (const int key = qtKeyOf(out)) {
                    QKeyEvent replaced(QEvent::KeyPress, key, Qt::NoModifier);
                    QStyledItemDelegate::eventFilter(object, &replaced);
                    return true;
                }
                if (le)
                    le->insert(QString(QChar(char16_t(out))));
                return true;
            }
        }
    }
    return QStyledItemDelegate::eventFilter(object, event);
}

} // namespace kx
