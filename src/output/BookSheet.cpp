#include "output/BookSheet.h"

#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "output/ShownColumns.h"

namespace kx {

namespace {

BookSheet::Column::Kind kindOf(JournalColumns::Column c, Sheet::DataType type)
{
    switch (c) {
    case JournalColumns::Debit:
    case JournalColumns::Credit:
    case JournalColumns::Forex:
    case JournalColumns::Balance:
    case JournalColumns::fxBalance: return BookSheet::Column::Amount;
    case JournalColumns::JnlDate: return BookSheet::Column::Date;
    case JournalColumns::ShowName: return BookSheet::Column::Text;
    default: break;
    }
    switch (type) {
    case Sheet::TypeLong:
    case Sheet::TypeDouble:
    case Sheet::TypeCurrency: return BookSheet::Column::Number;
    case Sheet::TypeDate: return BookSheet::Column::Date;
    default: return BookSheet::Column::Text;
    }
}

constexpr int DefaultWidth = 100;

int monthKey(const QDate &d)
{
    return d.year() * 12 + d.month() - 1;
}

} // namespace

void BookSheet::Sums::add(const BookRow &row)
{
    debit += row.debit();
    credit += row.credit();
    forex += row.forex();
}

BookSheet::BookSheet(const Sheet &grid) : m_grid(grid), m_keys(grid)
{
    for (const int c : shownColumns(grid)) {
        Column col;
        col.gridCol = c;
        col.column = JournalColumns::fromKey(grid.colKey(c));
        col.header = grid.text(0, c);
        col.format = grid.colFormat(c);
        // A column at the view's default width says -1.
        col.width = grid.colWidth(c) > 0 ? grid.colWidth(c) : DefaultWidth;
        col.kind = kindOf(col.column, grid.colDataType(c));
        const Qt::Alignment h = grid.colAlignment(c) & Qt::AlignHorizontal_Mask;
        col.align = col.kind == Column::Amount || col.kind == Column::Number ? Qt::AlignRight
                                                                             : (h ? h : Qt::AlignLeft);
        m_columns.append(col);
    }
    m_labelCol = indexOf(JournalColumns::Explain);
    for (int k = 0; k < m_columns.size() && m_labelCol < 0; ++k)
        if (m_columns[k].kind == Column::Text && m_columns[k].column != JournalColumns::ShowName)
            m_labelCol = k;
}

int BookSheet::indexOf(JournalColumns::Column column) const
{
    for (int k = 0; k < m_columns.size(); ++k)
        if (m_columns[k].column == column)
            return k;
    return -1;
}

QString BookSheet::label(Row::Kind kind)
{
    switch (kind) {
    case Row::MonthTotal: return QStringLiteral("本月合计");
    case Row::YearTotal: return QStringLiteral("本年累计");
    case Row::BroughtForward: return QStringLiteral("承前页");
    case Row::CarriedForward: return QStringLiteral("过次页");
    case Row::Record: break;
    }
    return {};
}

QString BookSheet::twoDecimals(Currency value)
{
    if (!value.isValid())
        return value.toString();
    const qint64 cents = value.rounded(2).raw() / 100;
    const quint64 magnitude = cents < 0 ? quint64(-cents) : quint64(cents);
    QString text = cents < 0 ? QStringLiteral("-") : QString();
    text += QString::number(magnitude / 100);
    text += QLatin1Char('.');
    const unsigned fraction = unsigned(magnitude % 100);
    text += QLatin1Char(char('0' + fraction / 10));
    text += QLatin1Char(char('0' + fraction % 10));
    return text;
}

QString BookSheet::period() const
{
    const int dateCol = m_keys[JournalColumns::JnlDate];
    QDate first, last;
    for (int r = m_grid.fixedRows() + 1; dateCol >= 0 && r < m_grid.rows(); ++r) {
        const QDate d = m_grid.date(r, dateCol);
        if (!d.isValid())
            continue;
        first = first.isValid() ? std::min(first, d) : d;
        last = last.isValid() ? std::max(last, d) : d;
    }
    if (!first.isValid())
        return {};
    return first.toString(Qt::ISODate) + QStringLiteral(" 至 ") + last.toString(Qt::ISODate);
}

bool BookSheet::isShownRow(int r) const
{
    if (m_grid.isRowHidden(r))
        return false;
    for (const Column &c : m_columns)
        if (!m_grid.isEmpty(r, c.gridCol) && !m_grid.text(r, c.gridCol).trimmed().isEmpty())
            return true;
    return false;
}

void BookSheet::readRecord(int r, Row &row) const
{
    row.kind = Row::Record;
    row.gridRow = r;
    row.cells.resize(m_columns.size());
    // The opening row shows a label ("2025年期初"); in a column of dates it
    // is written as the day it holds, as every other row is.
    const BookRow book = BookRow::of(m_grid, m_keys, r);
    const bool dated = r > m_grid.fixedRows() ? !book.isSummary() : book.isDated();
    for (int k = 0; k < m_columns.size(); ++k) {
        const Column &col = m_columns[k];
        Cell &cell = row.cells[k];
        cell = Cell();
        if (m_grid.isEmpty(r, col.gridCol))
            continue;
        switch (col.kind) {
        case Column::Amount:
        case Column::Number:
            if (m_grid.holdsAmount(r, col.gridCol)) {
                cell.amount = m_grid.amount(r, col.gridCol);
            } else {
                cell.text = m_grid.text(r, col.gridCol);
                // Money typed as text ("1,250.50") is still money; any other
                // number stays exactly as typed ("007", "6.897512").
                if (col.kind == Column::Amount)
                    cell.amount = Currency::fromText(cell.text).valueOr(Currency::invalid());
            }
            break;
        case Column::Date:
            cell.date = m_grid.date(r, col.gridCol);
            if (!cell.date.isValid())
                cell.text = m_grid.text(r, col.gridCol);
            break;
        case Column::Text:
            cell.text = m_grid.text(r, col.gridCol);
            // The date column shows a label; a sheet wants the date itself.
            if (col.column == JournalColumns::ShowName && dated)
                cell.date = book.date();
            break;
        }
    }
}

void BookSheet::splitSummary(int r, const Sums &period, const Sums &cumulative, Row &month, Row &year) const
{
    readRecord(r, month);
    month.kind = Row::MonthTotal;
    year = month;
    year.kind = Row::YearTotal;
    for (int k = 0; k < m_columns.size(); ++k) {
        const Column &col = m_columns[k];
        const QString text = m_grid.text(r, col.gridCol);
        Cell &m = month.cells[k];
        Cell &y = year.cells[k];
        switch (col.column) {
        case JournalColumns::Debit:
        case JournalColumns::Credit: {
            const bool debitSide = col.column == JournalColumns::Debit;
            m = Cell();
            y = Cell();
            if (!text.trimmed().isEmpty()) {
                BalanceCalculator::twoLines(text, m.amount, y.amount);
            } else {
                // Totals not worked out since the book was read: the same
                // figures a recalculation would show.
                m.amount = debitSide ? period.debit : period.credit;
                y.amount = debitSide ? cumulative.debit : cumulative.credit;
            }
            break;
        }
        case JournalColumns::Forex: {
            // The cell holds the period's foreign debit and credit, its hidden
            // data the cumulative ones; a sheet shows each as one signed figure.
            m = Cell();
            y = Cell();
            if (text.trimmed().isEmpty()) {
                if (!period.forex.isZero() || !cumulative.forex.isZero()) {
                    m.amount = period.forex;
                    y.amount = cumulative.forex;
                }
                break;
            }
            Currency debit, credit;
            BalanceCalculator::twoLines(text, debit, credit);
            m.amount = debit - credit;
            BalanceCalculator::twoLines(m_grid.cellData(r, col.gridCol).toString(), debit, credit);
            y.amount = debit - credit;
            break;
        }
        case JournalColumns::Dir:
        case JournalColumns::Balance:
        case JournalColumns::fxBalance: break;
        default: {
            y = Cell();
            const int cr = int(text.indexOf(QLatin1Char('\r')));
            const int lf = int(text.indexOf(QLatin1Char('\n')));
            if (cr >= 0 && lf >= 0) {
                m = Cell();
                m.text = text.left(cr);
                y.text = text.mid(lf + 1);
            }
            break;
        }
        }
    }
    if (m_labelCol >= 0) {
        month.cells[m_labelCol] = Cell();
        month.cells[m_labelCol].text = label(Row::MonthTotal);
        year.cells[m_labelCol] = Cell();
        year.cells[m_labelCol].text = label(Row::YearTotal);
    }
}

void BookSheet::fillTotal(const Sums &sums, int lastRecord, const QString &name, Row &row) const
{
    Row last;
    readRecord(lastRecord, last);
    row.gridRow = lastRecord;
    row.cells.fill(Cell(), m_columns.size());
    for (int k = 0; k < m_columns.size(); ++k) {
        switch (m_columns[k].column) {
        case JournalColumns::ShowName: row.cells[k].text = name; break;
        case JournalColumns::Debit: row.cells[k].amount = sums.debit; break;
        case JournalColumns::Credit: row.cells[k].amount = sums.credit; break;
        case JournalColumns::Forex:
            if (!sums.forex.isZero())
                row.cells[k].amount = sums.forex;
            break;
        case JournalColumns::Dir:
        case JournalColumns::Balance:
        case JournalColumns::fxBalance: row.cells[k] = last.cells[k]; break;
        default: break;
        }
    }
    if (m_labelCol >= 0)
        row.cells[m_labelCol].text = label(row.kind);
}

void BookSheet::forEachRow(const std::function<void(const Row &)> &visit) const
{
    const int first = m_grid.fixedRows();
    const int tagCol = m_keys[JournalColumns::Tag];
    bool hasSummary = false;
    for (int r = first + 1; tagCol >= 0 && r < m_grid.rows() && !hasSummary; ++r)
        hasSummary = BookRow::isSummaryCell(m_grid, r, tagCol);

    Row row, second;
    if (hasSummary) {
        Sums period, cumulative;
        for (int r = first; r < m_grid.rows(); ++r) {
            const bool summary = r > first && BookRow::isSummaryCell(m_grid, r, tagCol);
            if (!summary) {
                const BookRow book = BookRow::of(m_grid, m_keys, r);
                period.add(book);
                cumulative.add(book);
            }
            if (!isShownRow(r)) {
                if (summary)
                    period = Sums();
                continue;
            }
            if (summary) {
                splitSummary(r, period, cumulative, row, second);
                row.carriedDebit = period.debit;
                row.carriedCredit = period.credit;
                second.carriedDebit = second.carriedCredit = Currency();
                period = Sums();
                visit(row);
                visit(second);
            } else {
                readRecord(r, row);
                row.carriedDebit = period.debit;
                row.carriedCredit = period.credit;
                visit(row);
            }
        }
        return;
    }

    // No summary rows: the totals a bookkeeper writes under each month.
    Sums month, year;
    int current = -1;
    int lastRecord = -1;
    const auto closeMonth = [&] {
        row.kind = Row::MonthTotal;
        fillTotal(month, lastRecord, BookRow::dateLabel(QDate(current / 12, current % 12 + 1, 1), BookRow::Label::Summary),
                  row);
        row.carriedDebit = month.debit;
        row.carriedCredit = month.credit;
        visit(row);
        row.kind = Row::YearTotal;
        fillTotal(year, lastRecord, QString(), row);
        row.carriedDebit = row.carriedCredit = Currency();
        visit(row);
        month = Sums();
    };
    for (int r = first; r < m_grid.rows(); ++r) {
        if (!isShownRow(r))
            continue;
        const BookRow book = BookRow::of(m_grid, m_keys, r);
        if (r > first && book.isDated()) {
            const int key = monthKey(book.date());
            if (current >= 0 && key != current) {
                closeMonth();
                if (key / 12 != current / 12)
                    year = Sums();
            }
            current = key;
        }
        // The opening balance is brought in, not turned over this year.
        if (r > first) {
            month.add(book);
            year.add(book);
            lastRecord = r;
        }
        readRecord(r, row);
        row.carriedDebit = month.debit;
        row.carriedCredit = month.credit;
        visit(row);
    }
    if (current >= 0 && lastRecord >= 0)
        closeMonth();
}

} // namespace kx
