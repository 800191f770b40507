#pragma once

#include <QDate>
#include <QFrame>

class QCalendarWidget;

namespace kx {

/// The calendar the date cell's ellipsis opens. It remembers the row it was
/// opened for; a day picked (click, or Enter on the calendar) is reported
/// with that row. Esc closes it without a pick.
class DatePicker : public QFrame
{
    Q_OBJECT
public:
    /// A hidden picker.
    explicit DatePicker(QWidget *parent = nullptr);

    /// Opens on \a date for \a row.
    void open(int row, const QDate &date);
    /// The row the picker was opened for.
    int row() const { return m_row; }
    /// Picks \a date as the user's click would.
    void pick(const QDate &date);

Q_SIGNALS:
    /// The user picked \a date for \a row.
    void datePicked(int row, const QDate &date);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QCalendarWidget *m_calendar;
    int m_row = -1;
};

} // namespace kx
