#include "control/BalanceChart.h"

#include "grid/Sheet.h"
#include "kxjournal/Currency.h"
#include "ledger/Book.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"
#include "ledger/MonthTotals.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChildEvent>
#include <QFontMetrics>
#include <QLayout>
#include <QLegend>
#include <QLineSeries>
#include <QMouseEvent>
#include <QTimer>
#include <QValueAxis>

#include <algorithm>

namespace kx {

namespace {

// A value axis from zero (or below) to a little above the largest figure.
void fit(QValueAxis *axis, double low, double high)
{
    low = std::min(low, 0.0);
    high = std::max(high, 0.0);
    if (high - low < 1)
        high = low + 1;
    axis->setRange(low, high);
    axis->applyNiceNumbers();
}

// A figure past what money holds (the grid shows it as #溢出) draws nothing.
double shown(Currency figure)
{
    return figure.isValid() ? figure.toDouble() : 0.0;
}

} // namespace

BalanceChart::BalanceChart(const Book &book, QWidget *panel)
    : QChartView(new QChart, panel), m_book(book), m_panel(panel), m_receipts(new QBarSet(QStringLiteral("收入"))),
      m_payments(new QBarSet(QStringLiteral("支出"))), m_balances(new QLineSeries),
      m_months(new QBarCategoryAxis), m_amounts(new QValueAxis), m_balanceAxis(new QValueAxis),
      m_soon(new QTimer(this))
{
    setObjectName(QStringLiteral("balanceChart"));
    std::fill(std::begin(m_firstRows), std::end(m_firstRows), -1);
    setRenderHint(QPainter::Antialiasing);
    setFocusPolicy(Qt::NoFocus);
    setMinimumSize(160, 160);

    // Made with its chart: a chart set later would leave the view's first one behind.
    QChart *chart = this->chart();
    chart->setAnimationOptions(QChart::NoAnimation);
    chart->legend()->setAlignment(Qt::AlignBottom);
    chart->setMargins(QMargins(2, 2, 2, 2));
    QStringList months;
    for (int m = 1; m <= 12; ++m) {
        months << QStringLiteral("%1月").arg(m);
        *m_receipts << 0;
        *m_payments << 0;
        m_balances->append(m - 1, 0);
    }
    m_receipts->setColor(QColor(0x2e, 0x86, 0xc1));
    m_payments->setColor(QColor(0xe6, 0x7e, 0x22));
    m_balances->setName(QStringLiteral("余额"));
    m_balances->setPen(QPen(QColor(0x1e, 0x84, 0x49), 2));
    auto *bars = new QBarSeries;
    bars->append(m_receipts);
    bars->append(m_payments);
    chart->addSeries(bars);
    chart->addSeries(m_balances);
    m_months->append(months);
    m_months->setTruncateLabels(false);
    // A side panel is narrow: small labels, whole yuan, the legend names the line.
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.8);
    for (QAbstractAxis *axis : std::initializer_list<QAbstractAxis *>{m_months, m_amounts, m_balanceAxis})
        axis->setLabelsFont(small);
    chart->legend()->setFont(small);
    for (QValueAxis *axis : {m_amounts, m_balanceAxis}) {
        axis->setLabelFormat(QStringLiteral("%.0f"));
        axis->setTickCount(5);
    }
    chart->addAxis(m_months, Qt::AlignBottom);
    chart->addAxis(m_amounts, Qt::AlignLeft);
    chart->addAxis(m_balanceAxis, Qt::AlignRight);
    bars->attachAxis(m_months);
    bars->attachAxis(m_amounts);
    m_balances->attachAxis(m_months);
    m_balances->attachAxis(m_balanceAxis);
    chart->setTitle(QStringLiteral("余额与收支"));

    // Month names stand upright while they fit under their bars, else turned.
    connect(chart, &QChart::plotAreaChanged, this, [this](const QRectF &plot) {
        const int wide = QFontMetrics(m_months->labelsFont()).horizontalAdvance(QStringLiteral("12月")) + 4;
        const int angle = plot.width() / 12 < wide ? -90 : 0;
        if (m_months->labelsAngle() != angle)
            m_months->setLabelsAngle(angle);
    });
    connect(m_receipts, &QBarSet::clicked, this, &BalanceChart::choose);
    connect(m_payments, &QBarSet::clicked, this, &BalanceChart::choose);

    // Many changes in one pass of the event loop (a paste, a load and its
    // balance pass) make one recompute, on a zero timer: the edit returns at
    // once, the events it left waiting (the grid's repaint among them) are
    // delivered first, and the figures follow.
    m_soon->setSingleShot(true);
    m_soon->setInterval(0);
    connect(m_soon, &QTimer::timeout, this, [this] {
        // The grid is still being rewritten (a pass, a paste): later. A
        // host may keep a tag of its own on the grid: after a second the
        // figures are worked out all the same.
        if (!m_book.sheet().tag().isEmpty() && m_waits < MaxWaits) {
            ++m_waits;
            m_soon->start(50);
            return;
        }
        m_waits = 0;
        if (m_stale && isVisible())
            recompute();
    });
    const Sheet &grid = m_book.sheet();
    connect(&grid, &QAbstractItemModel::dataChanged, this, [this](const QModelIndex &from, const QModelIndex &to) {
        const Sheet &grid = m_book.sheet();
        const int left = grid.gridCol(from), right = grid.gridCol(to);
        const JournalColumns columns = m_book.columns();
        // Looks and texts move no figure of the chart. A balance pass
        // announces the balance column: a new direction is seen there.
        for (int col : {columns[JournalColumns::JnlDate], columns[JournalColumns::Debit],
                        columns[JournalColumns::Credit], columns[JournalColumns::Tag],
                        columns[JournalColumns::Balance], m_book.state().outlineColumn(grid)}) {
            if (col >= left && col <= right) {
                changed();
                return;
            }
        }
    });
    connect(&grid, &QAbstractItemModel::rowsInserted, this, &BalanceChart::changed);
    connect(&grid, &QAbstractItemModel::rowsRemoved, this, &BalanceChart::changed);
    connect(&grid, &QAbstractItemModel::rowsMoved, this, &BalanceChart::changed);
    connect(&grid, &QAbstractItemModel::modelReset, this, &BalanceChart::changed);
    connect(&grid, &QAbstractItemModel::layoutChanged, this, &BalanceChart::changed);
    connect(&grid, &QAbstractItemModel::columnsMoved, this, &BalanceChart::changed);

    if (QLayout *layout = panel->layout())
        layout->addWidget(this);
    panel->installEventFilter(this);
    followPanel();
}

BalanceChart::~BalanceChart()
{
    if (m_panel)
        m_panel->removeEventFilter(this);
}

void BalanceChart::changed()
{
    m_stale = true;
    if (isVisible() && !m_soon->isActive())
        m_soon->start(0);
}

void BalanceChart::showEvent(QShowEvent *event)
{
    QChartView::showEvent(event);
    if (m_stale && !m_soon->isActive())
        m_soon->start(0);
}

void BalanceChart::recompute()
{
    m_stale = false;
    m_soon->stop();
    const MonthTotals totals(m_book);
    m_year = totals.year();
    double barLow = 0, barHigh = 0;
    double low = shown(totals.opening()), high = low;
    QList<QPointF> line;
    for (int m = 1; m <= 12; ++m) {
        const MonthTotals::Month &month = totals.month(m);
        const double in = shown(month.receipts), out = shown(month.payments);
        const double balance = shown(month.closing);
        m_receipts->replace(m - 1, in);
        m_payments->replace(m - 1, out);
        line << QPointF(m - 1, balance);
        barLow = std::min({barLow, in, out});
        barHigh = std::max({barHigh, in, out});
        low = std::min(low, balance);
        high = std::max(high, balance);
        m_firstRows[m - 1] = month.firstRow;
    }
    m_balances->replace(line);
    fit(m_amounts, barLow, barHigh);
    fit(m_balanceAxis, low, high);
    chart()->setTitle(m_year > 0 ? QStringLiteral("%1年余额与收支").arg(m_year) : QStringLiteral("余额与收支"));
}

int BalanceChart::firstRowOf(int month) const
{
    return month >= 1 && month <= 12 ? m_firstRows[month - 1] : -1;
}

void BalanceChart::choose(int index)
{
    // The rows may have moved since the figures were drawn.
    if (m_stale)
        recompute();
    const int row = firstRowOf(index + 1);
    if (row >= 0)
        Q_EMIT monthChosen(row);
}

void BalanceChart::mousePressEvent(QMouseEvent *event)
{
    // A month's name under the plot chooses it, as its bars do.
    const QRectF plot = chart()->plotArea();
    const QPointF at = mapToScene(event->position().toPoint());
    if (event->button() == Qt::LeftButton && at.y() > plot.bottom() && at.x() >= plot.left() &&
        at.x() < plot.right() && plot.width() > 0) {
        const QRectF labels = m_months->isVisible() ? QRectF(plot.left(), plot.bottom(), plot.width(), 40) : QRectF();
        if (labels.contains(at)) {
            choose(int((at.x() - plot.left()) * 12 / plot.width()));
            event->accept();
            return;
        }
    }
    QChartView::mousePressEvent(event);
}

bool BalanceChart::eventFilter(QObject *watched, QEvent *event)
{
    // A child being deleted is no widget any more by the time it leaves:
    // every child that leaves has the panel looked at again.
    if (watched == m_panel && (event->type() == QEvent::ChildRemoved ||
                               (event->type() == QEvent::ChildAdded &&
                                static_cast<QChildEvent *>(event)->child()->isWidgetType())))
        followPanel();
    return QChartView::eventFilter(watched, event);
}

void BalanceChart::followPanel()
{
    bool hosted = false;
    for (const QObject *child : m_panel->children())
        hosted = hosted || (child != this && child->isWidgetType());
    if (hosted != isHidden())
        setVisible(!hosted);
}

} // namespace kx
