#include "control/DatePicker.h"

#include <QCalendarWidget>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace kx {

DatePicker::DatePicker(QWidget *parent) : QFrame(parent), m_calendar(new QCalendarWidget(this))
{
    setObjectName(QStringLiteral("DatePicker"));
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_calendar);
    m_calendar->setGridVisible(true);
    m_calendar->installEventFilter(this);
    connect(m_calendar, &QCalendarWidget::activated, this, &DatePicker::pick);
    connect(m_calendar, &QCalendarWidget::clicked, this, &DatePicker::pick);
    adjustSize();
    hide();
}

void DatePicker::open(int row, const QDate &date)
{
    m_row = row;
    m_calendar->setSelectedDate(date.isValid() ? date : QDate::currentDate());
    show();
    raise();
    m_calendar->setFocus();
}

void DatePicker::pick(const QDate &date)
{
    hide();
    if (date.isValid())
        Q_EMIT datePicked(m_row, date);
}

bool DatePicker::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_calendar && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        hide();
        return true;
    }
    return QFrame::eventFilter(watched, event);
}

} // namespace kx
