#include "control/ExplainMemoView.h"

#include "control/JournalPrivate.h"
#include "control/SideView.h"
#include "data/ExplainMemo.h"
#include "editing/EditSession.h"
#include "grid/Sheet.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Journal.h"
#include "ledger/BookRow.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kx {

ExplainMemoView *ExplainMemoView::open(JournalPrivate &d)
{
    return openSideView<ExplainMemoView>(
        d, QStringLiteral("ExplainMemo"), [&d](AccContext &acc) { return new ExplainMemoView(d, acc, d.q); },
        [&d](ExplainMemoView *shown) { return shown->m_book == d.state.savedDocId(); });
}

ExplainMemoView::ExplainMemoView(JournalPrivate &d, AccContext &acc, QWidget *parent)
    : QDialog(parent), m_d(d), m_acc(&acc), m_book(d.state.savedDocId()), m_list(new QListWidget(this)),
      m_status(new QLabel(this))
{
    setWindowTitle(QStringLiteral("常用摘要"));
    m_list->setObjectName(QStringLiteral("explainMemoList"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setDragDropMode(QAbstractItemView::InternalMove);
    const Result<QStringList> kept = ExplainMemo::load(acc.Connection(), m_book);
    for (const QString &text : kept.valueOr(QStringList()))
        add(text);
    if (!kept.ok())
        say(kept.error(), true);

    auto *side = new QVBoxLayout;
    const QList<std::pair<QString, std::function<void()>>> actions{
        {QStringLiteral("添加"), [this] { add(currentExplanation()); }},
        {QStringLiteral("删除"), [this] { removeSelected(); }},
        {QStringLiteral("上移"), [this] { move(true); }},
        {QStringLiteral("下移"), [this] { move(false); }},
    };
    for (const auto &[text, act] : actions) {
        auto *button = new QPushButton(text, this);
        connect(button, &QPushButton::clicked, this, act);
        side->addWidget(button);
    }
    side->addStretch();
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(QStringLiteral("保存"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QStringLiteral("关闭"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (save())
            accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *body = new QHBoxLayout;
    body->addWidget(m_list, 1);
    body->addLayout(side);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("输入摘要时，这些摘要排在最前面。"), this));
    layout->addLayout(body, 1);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
    resize(420, 360);
}

QString ExplainMemoView::currentExplanation() const
{
    // The explanation of the record the cashier stands on, when it has one.
    if (!m_d.alive())
        return {};
    const Sheet &grid = *m_d.grid;
    const JournalColumns columns(grid);
    const int row = grid.row();
    if (!grid.isDataRow(row) || columns[JournalColumns::Explain] < 0)
        return {};
    const BookRow line = BookRow::of(grid, columns, row);
    return line.isSummary() ? QString() : line.text(JournalColumns::Explain).trimmed();
}

QStringList ExplainMemoView::texts() const
{
    QStringList out;
    for (int i = 0; i < m_list->count(); ++i)
        out << m_list->item(i)->text();
    return out;
}

void ExplainMemoView::add(const QString &text)
{
    const QString t = text.trimmed();
    if (!t.isEmpty()) {
        const QList<QListWidgetItem *> same = m_list->findItems(t, Qt::MatchExactly);
        if (!same.isEmpty()) {
            m_list->setCurrentItem(same.first());
            return;
        }
    }
    auto *item = new QListWidgetItem(t, m_list);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    m_list->setCurrentItem(item);
    if (t.isEmpty() && isVisible())
        m_list->editItem(item);
}

void ExplainMemoView::removeSelected()
{
    qDeleteAll(m_list->selectedItems());
}

void ExplainMemoView::move(bool up)
{
    const int row = m_list->currentRow();
    const int to = up ? row - 1 : row + 1;
    if (row < 0 || to < 0 || to >= m_list->count())
        return;
    QListWidgetItem *item = m_list->takeItem(row);
    m_list->insertItem(to, item);
    m_list->setCurrentItem(item);
}

bool ExplainMemoView::save()
{
    if (!m_acc) {
        say(QStringLiteral("没有连接到账套。"), true);
        return false;
    }
    const Result<QStringList> kept = ExplainMemo::save(m_acc->Connection(), m_book, texts());
    if (!kept.ok()) {
        say(kept.error(), true);
        return false;
    }
    // The explanation list reads the kept ones again when it next opens.
    if (m_d.alive() && m_d.edit)
        m_d.edit->context().explainListBook = -1;
    m_list->clear();
    for (const QString &text : kept.value())
        add(text);
    say(QStringLiteral("已保存%1条常用摘要。").arg(kept.value().size()), false);
    return true;
}

void ExplainMemoView::say(const QString &text, bool problem)
{
    m_status->setText(text);
    m_status->setStyleSheet(problem ? QStringLiteral("color: #b00020") : QString());
}

} // namespace kx
