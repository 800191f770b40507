#include "control/FindBar.h"

#include "grid/Sheet.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace kx {

namespace {

// Listing more rows than a person reads only slows the typing down.
constexpr int MaxListed = 500;

} // namespace

FindBar::FindBar(const Sheet &grid, QWidget *parent)
    : QFrame(parent), m_grid(grid), m_text(new QLineEdit(this)), m_count(new QLabel(this)), m_list(new QListWidget(this)),
      m_delay(new QTimer(this))
{
    setObjectName(QStringLiteral("findBar"));
    setFrameShape(QFrame::StyledPanel);
    m_text->setObjectName(QStringLiteral("findText"));
    m_text->setPlaceholderText(QStringLiteral("查找：空格或逗号分开几个词，* ? # [ ] 可作通配符"));
    m_text->setClearButtonEnabled(true);
    m_text->installEventFilter(this);
    m_count->setObjectName(QStringLiteral("findCount"));
    m_list->setObjectName(QStringLiteral("findHits"));
    m_list->setMaximumHeight(120);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->hide();
    auto *closeButton = new QToolButton(this);
    closeButton->setText(QStringLiteral("×"));
    closeButton->setToolTip(QStringLiteral("关闭查找 (Esc)"));
    closeButton->setAutoRaise(true);

    auto *row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_text, 1);
    row->addWidget(m_count);
    row->addWidget(closeButton);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    layout->addLayout(row);
    layout->addWidget(m_list);

    // A large book is searched once the typing pauses, not at every key.
    m_delay->setSingleShot(true);
    m_delay->setInterval(150);
    connect(m_delay, &QTimer::timeout, this, &FindBar::search);
    connect(m_text, &QLineEdit::textChanged, this, [this] { m_delay->start(); });
    connect(m_list, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) {
        // A row listed before the book changed may be another row now.
        if (m_stale)
            search();
        else
            go(m_list->row(item));
    });
    // Any change to the rows, their cells or which columns show makes the
    // list out of date: it is made again once the changes pause.
    connect(&grid, &QAbstractItemModel::modelReset, this, &FindBar::gridChanged);
    connect(&grid, &QAbstractItemModel::layoutChanged, this, &FindBar::gridChanged);
    connect(&grid, &QAbstractItemModel::rowsInserted, this, &FindBar::gridChanged);
    connect(&grid, &QAbstractItemModel::rowsRemoved, this, &FindBar::gridChanged);
    connect(&grid, &QAbstractItemModel::rowsMoved, this, &FindBar::gridChanged);
    connect(&grid, &QAbstractItemModel::dataChanged, this, &FindBar::gridChanged);
    connect(&grid, &Sheet::colLayoutChanged, this, &FindBar::gridChanged);
    connect(&grid, &Sheet::rowLayoutChanged, this, &FindBar::gridChanged);
    connect(closeButton, &QToolButton::clicked, this, &FindBar::close);
    hide();
}

void FindBar::gridChanged()
{
    m_stale = true;
    if (isVisible() && !m_searched.isEmpty())
        m_delay->start();
}

void FindBar::open()
{
    if (m_stale || m_searched != m_text->text())
        search();
    show();
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

void FindBar::search()
{
    m_delay->stop();
    m_searched = m_text->text();
    m_stale = false;
    m_hits.clear();
    m_list->clear();
    if (BookFinder::keywords(m_searched).isEmpty()) {
        m_count->clear();
        m_list->hide();
        return;
    }
    const Result<QVector<BookFinder::Hit>> found = BookFinder(m_grid).find(m_searched);
    if (!found.ok()) {
        m_count->setText(found.error());
        m_list->hide();
        return;
    }
    m_hits = found.value();
    m_count->setText(m_hits.size() > MaxListed ? QStringLiteral("找到 %1 条，列出前 %2 条").arg(m_hits.size()).arg(MaxListed)
                                               : QStringLiteral("找到 %1 条").arg(m_hits.size()));
    for (int i = 0; i < m_hits.size() && i < MaxListed; ++i) {
        // "label No[voucher]|row|explanation": the row number is for hosts, not for people.
        const QStringList parts = m_hits[i].description.split(QLatin1Char('|'));
        m_list->addItem(parts.size() > 2 ? parts[0] + QStringLiteral("  ") + parts.mid(2).join(QLatin1Char('|')) : parts[0]);
    }
    m_list->setVisible(!m_hits.isEmpty());
}

void FindBar::step(bool forward)
{
    // Rows move under a list of hits when the book changes: look again.
    if (m_delay->isActive() || m_searched != m_text->text() || m_stale)
        search();
    if (m_hits.isEmpty())
        return;
    const int now = m_grid.row();
    int index = forward ? 0 : int(m_hits.size()) - 1;
    for (int i = 0; i < m_hits.size(); ++i) {
        const int k = forward ? i : int(m_hits.size()) - 1 - i;
        if (forward ? m_hits[k].row > now : m_hits[k].row < now) {
            index = k;
            break;
        }
    }
    go(index);
}

void FindBar::go(int index)
{
    if (index < 0 || index >= m_hits.size())
        return;
    if (index < m_list->count())
        m_list->setCurrentRow(index);
    m_count->setText(QStringLiteral("第 %1 条，共 %2 条").arg(index + 1).arg(m_hits.size()));
    Q_EMIT rowChosen(m_hits[index].row);
}

void FindBar::close()
{
    m_delay->stop();
    hide();
    Q_EMIT closed();
}

bool FindBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_text && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool back = key->modifiers() & Qt::ShiftModifier;
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_F3: step(!back); return true;
        case Qt::Key_Escape: close(); return true;
        default: break;
        }
    }
    return QFrame::eventFilter(watched, event);
}

} // namespace kx
