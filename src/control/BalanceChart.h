#pragma once

#include <QChartView>

class QBarCategoryAxis;
class QBarSet;
class QLineSeries;
class QTimer;
class QValueAxis;

namespace kx {

class Book;
class MonthTotals;

/// The side panel's picture of the book: the balance at each month's end as
/// a line, each month's receipts (收入) and payments (支出) as bars, over the
/// months 1月…12月 of the year the book shows (MonthTotals).
///
/// It follows the book: any change of the days, amounts or kinds of its
/// rows, rows coming or going, a load, an undo, asks for one recompute on a
/// zero-delay timer, so a keystroke or a paste of many rows costs one, made
/// once the events the change left waiting (the grid's repaint among them)
/// have been delivered, never inside the edit. Nothing is worked out while
/// the chart is out of sight; it catches up when shown.
///
/// A click on a month's bar or its name under the axis sends monthChosen()
/// with the grid row of the month's first record.
///
/// The chart stands in the side panel it is made in until the host puts a
/// widget of its own there: any widget other than the chart that becomes a
/// child of the panel (through its layout or setParent) sends the chart out
/// of sight, so the host's widgets have the panel to themselves, as before
/// there was a chart. It comes back when the last such widget leaves the
/// panel (deleted or given another parent).
class BalanceChart : public QChartView
{
    Q_OBJECT
public:
    /// A chart of \a book in \a panel (which must have a layout), added to
    /// the panel's layout.
    BalanceChart(const Book &book, QWidget *panel);
    ~BalanceChart() override;

    /// The bar set of receipts (收入), payments (支出), the balance line.
    QBarSet *receipts() const { return m_receipts; }
    QBarSet *payments() const { return m_payments; }
    QLineSeries *balances() const { return m_balances; }
    /// The book pictured.
    const Book &book() const { return m_book; }
    /// The year shown (0: no dated record).
    int year() const { return m_year; }
    /// True while a change waits to be shown.
    bool isStale() const { return m_stale; }
    /// Works the figures out again now.
    void recompute();
    /// The grid row of the first record of \a month (1…12), or -1.
    int firstRowOf(int month) const;

Q_SIGNALS:
    /// The user chose a month; \a row is its first record's grid row.
    void monthChosen(int row);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void changed();
    void choose(int index);
    void followPanel();

    const Book &m_book;
    QWidget *m_panel;
    QBarSet *m_receipts;
    QBarSet *m_payments;
    QLineSeries *m_balances;
    QBarCategoryAxis *m_months;
    QValueAxis *m_amounts;
    QValueAxis *m_balanceAxis;
    QTimer *m_soon;
    int m_firstRows[12];
    int m_year = 0;
    bool m_stale = true;
    static constexpr int MaxWaits = 20;  ///< 50 ms each while the grid is tagged busy
    int m_waits = 0;
};

} // namespace kx
