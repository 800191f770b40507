#include "grid/GridDelegate.h"
#include "grid/ComboHints.h"
#include "grid/GridViewPrivate.h"

#include "kxjournal/EditCycle.h"
#include "kxjournal/GridModel.h"
#include "kxjournal/GridView.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QHelpEvent>
#include <QToolTip>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <cstdlib>

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

// A text colour that can be read on \a back: a dark colour chosen for a
// light background is lightened on a dark one, and the other way round.
QColor readableOn(const QColor &text, const QColor &back)
{
    const int contrast = std::abs(text.lightness() - back.lightness());
    if (contrast >= 110)
        return text;
    QColor turned = text.toHsl();
    const bool darkBack = back.lightness() < 128;
    turned.setHsl(turned.hslHue(), turned.hslSaturation(), darkBack ? std::max(190, 255 - text.lightness()) : std::min(80, 255 - text.lightness()));
    return turned.toRgb();
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
        ComboHints::fill(cb, list, model->editCycle()->comboHints());
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
    if (!m_view)
        return;
    if (option->backgroundBrush.style() == Qt::NoBrush) {
        if (GridViewPrivate::get(m_view).warnsAt(index))
            option->backgroundBrush = m_view->warnBackColor();
        else if (index.row() == m_view->currentIndex().row())
            option->backgroundBrush = m_view->hotBackColor();
        else
            option->backgroundBrush = m_view->backColor();
    }
    const QColor back = option->backgroundBrush.color();
    const QColor text = index.data(Qt::ForegroundRole).isValid() ? option->palette.color(QPalette::Text)
                                                                 : m_view->palette().color(QPalette::Text);
    option->palette.setColor(QPalette::Text, readableOn(text, back));
    option->palette.setColor(QPalette::HighlightedText, m_view->palette().color(QPalette::HighlightedText));
}

void GridDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const GridModel *model = m_view ? m_view->gridModel() : nullptr;
    if (!model)
        return;
    // A total closes what stands above it: a rule over the row, as on paper.
    const int row = model->gridRow(index);
    if (row > model->fixedRows() && model->isSubtotal(row)) {
        painter->save();
        painter->setPen(QPen(readableOn(m_view->gridColor().darker(160), m_view->backColor()), 1));
        painter->drawLine(option.rect.topLeft(), option.rect.topRight());
        painter->restore();
    }
}

bool GridDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                             const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QStyleOptionViewItem opt(option);
    initStyleOption(&opt, index);
    const QStyle *style = view->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &opt, view) + 1;
    const int room = opt.rect.width() - 2 * margin;
    const QFontMetrics metrics(opt.font);
    bool cut = false;
    for (const QString &line : opt.text.split(QLatin1Char('\n')))
        cut = cut || metrics.horizontalAdvance(line) > room;
    // Only a text the column cuts needs saying again.
    if (cut) {
        QToolTip::showText(event->globalPos(), opt.text, view->viewport(), opt.rect);
        return true;
    }
    QToolTip::hideText();
    return true;
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
