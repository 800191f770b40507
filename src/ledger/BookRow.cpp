#include "ledger/BookRow.h"

#include "grid/Sheet.h"

#include <algorithm>

namespace kx {

QString BookRow::text(JournalColumns::Column column) const
{
    return m_grid->text(m_row, (*m_columns)[column]);
}

void BookRow::setText(JournalColumns::Column column, const QString &text) const
{
    m_grid->setText(m_row, (*m_columns)[column], text);
}

Currency BookRow::amount(JournalColumns::Column column) const
{
    return m_grid->amount(m_row, (*m_columns)[column]);
}

qint64 BookRow::number(JournalColumns::Column column) const
{
    return m_grid->number(m_row, (*m_columns)[column]);
}

quint64 BookRow::textsHash(const JournalColumns::Column *columns, int count) const
{
    int cols[JournalColumns::Count];
    count = std::min(count, int(JournalColumns::Count));
    for (int i = 0; i < count; ++i)
        cols[i] = (*m_columns)[columns[i]];
    return m_grid->textsHash(m_row, cols, count);
}

QDate BookRow::date() const
{
    return m_grid->date(m_row, (*m_columns)[JournalColumns::JnlDate]);
}

QString BookRow::cleanText(JournalColumns::Column column) const
{
    return m_grid->cleanText(m_row, (*m_columns)[column]);
}

void BookRow::setCleanText(JournalColumns::Column column, const QString &text) const
{
    m_grid->setCleanText(m_row, (*m_columns)[column], text);
}

bool BookRow::knowsClean() const
{
    return m_grid->knowsCleanText(m_row);
}

bool BookRow::isDated() const
{
    return date().isValid();
}

bool BookRow::isSummary() const
{
    return isSummaryCell(*m_grid, m_row, (*m_columns)[JournalColumns::Tag]);
}

void BookRow::setLockedCell(bool locked) const
{
    m_grid->setNumber(m_row, (*m_columns)[JournalColumns::Locked], locked ? 1 : 0);
}

BookRow::ChangeMark BookRow::changeMark() const
{
    return ChangeMark(m_grid->rowData(m_row).toInt());
}

void BookRow::setChangeMark(ChangeMark mark) const
{
    m_grid->setRowData(m_row, int(mark));
}

QString BookRow::dateLabel(const QDate &date, Label label)
{
    switch (label) {
    case Label::Summary: return date.toString(QStringLiteral("yyyy年MM月"));
    case Label::Opening: return date.toString(QStringLiteral("yyyy年期初"));
    case Label::Record: break;
    }
    return date.toString(QStringLiteral("yyyy年MM月dd日"));
}

bool BookRow::isSummaryCell(const Sheet &grid, int row, int tagCol)
{
    // Whole numbers are most of what the cell holds; "-1.5" counts too.
    const qint64 n = grid.number(row, tagCol);
    return n < 0 || (n == 0 && grid.amount(row, tagCol).sign() < 0);
}

void BookRow::splitNumber(const QString &text, QString &prefix, qint64 &number)
{
    qsizetype cut = text.size();
    while (cut > 0 && text.at(cut - 1).isDigit() && text.at(cut - 1).unicode() < 128)
        --cut;
    // At most 15 digits are counted; digits before them stay with the prefix.
    cut = std::max(cut, text.size() - 15);
    prefix = text.left(cut);
    const QString digits = text.mid(cut);
    number = digits.isEmpty() ? 0 : digits.toLongLong();
}

QString BookRow::nextNumber(const QString &previous)
{
    QString prefix;
    qint64 number = 0;
    splitNumber(previous, prefix, number);
    const int width = int(previous.size() - prefix.size());
    if (width == 0)
        return QString();
    return prefix + QStringLiteral("%1").arg(number + 1, width, 10, QLatin1Char('0'));
}

bool BookRow::isOpening() const
{
    return m_row == m_grid->fixedRows();
}

} // namespace kx
