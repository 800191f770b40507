#include "control/JournalFrame.h"

#include "kxjournal/GridView.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace kx {

JournalFrame::JournalFrame(GridView *view, QWidget *parent)
    : QWidget(parent), m_header(new QFrame(this)), m_caption(new QLabel(m_header)),
      m_option(new QToolButton(m_header)), m_body(new QFrame(this)), m_side(new QFrame(this))
{
    m_header->setObjectName(QStringLiteral("C1EHeader"));
    m_caption->setObjectName(QStringLiteral("caption"));
    m_option->setObjectName(QStringLiteral("btnOpt"));
    m_body->setObjectName(QStringLiteral("C1EBody"));
    m_side->setObjectName(QStringLiteral("C1EDesk"));

    QFont bold = m_caption->font();
    bold.setBold(true);
    m_caption->setFont(bold);
    m_option->setText(QStringLiteral("☰"));
    m_option->setToolTip(QStringLiteral("选项"));
    m_option->setAutoRaise(true);
    auto *headerLayout = new QHBoxLayout(m_header);
    headerLayout->setContentsMargins(4, 2, 2, 2);
    headerLayout->addWidget(m_caption, 1);
    headerLayout->addWidget(m_option);

    m_body->setAutoFillBackground(true);
    auto *bodyLayout = new QVBoxLayout(m_body);
    bodyLayout->setContentsMargins(2, 2, 2, 2);
    bodyLayout->addWidget(view);
    setBorderColor(m_borderColor);

    m_side->setFrameShape(QFrame::StyledPanel);
    m_side->setMinimumWidth(160);
    new QVBoxLayout(m_side);
    m_side->hide();

    auto *row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_body, 1);
    row->addWidget(m_side);
    m_outer = new QVBoxLayout(this);
    m_outer->setContentsMargins(0, 0, 0, 0);
    m_outer->setSpacing(0);
    m_outer->addWidget(m_header);
    m_outer->addLayout(row, 1);
}

void JournalFrame::addFooter(QWidget *bar)
{
    m_outer->addWidget(bar);
}

QString JournalFrame::captionText() const
{
    return m_caption->text();
}

void JournalFrame::setCaptionText(const QString &text)
{
    m_caption->setText(text);
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
    m_side->setVisible(visible);
}

bool JournalFrame::isSidePanelVisible() const
{
    return !m_side->isHidden();
}

} // namespace kx
