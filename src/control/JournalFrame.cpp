#include "control/JournalFrame.h"

#include "control/BookIcon.h"
#include "kxjournal/GridView.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace kx {

namespace {

QList<int> readSizes(const QString &text)
{
    QList<int> out;
    for (const QString &part : text.split(QLatin1Char(','))) {
        bool ok = false;
        const int size = part.trimmed().toInt(&ok);
        if (!ok || size < 0 || size > 100000)
            return {};
        out << size;
    }
    return out;
}

QString sizesOf(const QList<int> &sizes)
{
    QStringList parts;
    for (int size : sizes)
        parts << QString::number(size);
    return parts.join(QLatin1Char(','));
}

} // namespace

JournalFrame::JournalFrame(GridView *view, QWidget *parent)
    : QWidget(parent), m_header(new QFrame), m_caption(new QLabel(m_header)), m_period(new QLabel(m_header)),
      m_option(new QToolButton(m_header)), m_body(new QFrame), m_side(new QFrame),
      m_rows(new QSplitter(Qt::Vertical, this)), m_columns(new QSplitter(Qt::Horizontal))
{
    m_header->setObjectName(QStringLiteral("C1EHeader"));
    m_caption->setObjectName(QStringLiteral("caption"));
    m_period->setObjectName(QStringLiteral("period"));
    m_option->setObjectName(QStringLiteral("btnOpt"));
    m_body->setObjectName(QStringLiteral("C1EBody"));
    m_side->setObjectName(QStringLiteral("C1EDesk"));
    m_rows->setObjectName(QStringLiteral("headerSplitter"));
    m_columns->setObjectName(QStringLiteral("sideSplitter"));

    QFont bold = m_caption->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    m_caption->setFont(bold);
    m_caption->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_period->setForegroundRole(QPalette::PlaceholderText);
    m_option->setToolTip(QStringLiteral("选项"));
    m_option->setAutoRaise(true);
    m_option->setIconSize(QSize(20, 20));
    setImageKey(QStringLiteral("Jnl"));
    auto *headerLayout = new QHBoxLayout(m_header);
    headerLayout->setContentsMargins(4, 2, 2, 2);
    headerLayout->addWidget(m_caption, 1);
    headerLayout->addWidget(m_period);
    headerLayout->addWidget(m_option);
    m_header->setMinimumHeight(m_header->sizeHint().height());

    m_body->setAutoFillBackground(true);
    m_bodyLayout = new QVBoxLayout(m_body);
    m_bodyLayout->setContentsMargins(2, 2, 2, 2);
    m_bodyLayout->setSpacing(0);
    m_bodyLayout->addWidget(view, 1);
    setBorderColor(m_borderColor);

    m_side->setFrameShape(QFrame::StyledPanel);
    m_side->setMinimumWidth(120);
    new QVBoxLayout(m_side);
    m_side->hide();

    m_columns->addWidget(m_body);
    m_columns->addWidget(m_side);
    m_columns->setStretchFactor(0, 1);
    m_columns->setChildrenCollapsible(false);
    m_rows->addWidget(m_header);
    m_rows->addWidget(m_columns);
    m_rows->setStretchFactor(1, 1);
    m_rows->setChildrenCollapsible(false);
    m_rows->setHandleWidth(3);
    m_columns->setHandleWidth(4);
    connect(m_rows, &QSplitter::splitterMoved, this, &JournalFrame::sizesChanged);
    connect(m_columns, &QSplitter::splitterMoved, this, [this] {
        m_sideSizes = m_columns->sizes();
        Q_EMIT sizesChanged();
    });

    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    outer->addWidget(m_rows);
}

void JournalFrame::addFooter(QWidget *bar)
{
    m_bodyLayout->addWidget(bar);
}

QString JournalFrame::captionText() const
{
    return m_caption->text();
}

void JournalFrame::setCaptionText(const QString &text)
{
    m_caption->setText(text);
}

void JournalFrame::setPeriodText(const QString &text)
{
    m_period->setText(text);
}

void JournalFrame::setBorderColor(const QColor &color)
{
    m_borderColor = color;
    QPalette pal = m_body->palette();
    pal.setColor(QPalette::Window, color);
    m_body->setPalette(pal);
}

void JournalFrame::setSidePanelVisible(bool visible)
{
    const bool first = visible && m_side->isHidden() && m_sideSizes.size() != 2;
    m_side->setVisible(visible);
    if (visible && m_sideSizes.size() == 2 && m_sideSizes.at(1) > 0) {
        m_columns->setSizes(m_sideSizes);
    } else if (first) {
        // Shown for the first time with no sizes kept: room for the chart
        // to be read, a third of the width, the grid keeping the rest.
        const int total = m_columns->width();
        const int side = std::min(std::max(total / 3, 400), total / 2);
        if (side > 0)
            m_columns->setSizes({total - side, side});
    }
}

bool JournalFrame::isSidePanelVisible() const
{
    return !m_side->isHidden();
}

void JournalFrame::setImageKey(const QString &key)
{
    const bool consolidated = key == QLatin1String("Jnl1");
    m_option->setProperty("imageKey", consolidated ? QStringLiteral("Jnl1") : QStringLiteral("Jnl"));
    m_option->setIcon(BookIcon::make(consolidated, palette()));
    m_option->setAccessibleName(consolidated ? QStringLiteral("合并日记账选项") : QStringLiteral("日记账选项"));
}

QString JournalFrame::sizesText() const
{
    const QList<int> side = isSidePanelVisible() ? m_columns->sizes() : m_sideSizes;
    return sizesOf(m_rows->sizes()) + QLatin1Char(';') + sizesOf(side);
}

void JournalFrame::setSizesText(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(';'));
    const QList<int> rows = readSizes(parts.value(0));
    if (rows.size() == 2)
        m_rows->setSizes(rows);
    const QList<int> side = readSizes(parts.value(1));
    if (side.size() == 2) {
        m_sideSizes = side;
        if (isSidePanelVisible())
            m_columns->setSizes(side);
    }
}

} // namespace kx
