#include "ledger/BookRow.h"

#include "kxjournal/GridModel.h"

namespace kx {

namespace {

// A two-line summary total reads by its first line.
QStringView firstLine(const QString &text)
{
    const qsizetype cr = text.indexOf(QLatin1Char('\r'));
    const qsizetype lf = text.indexOf(QLatin1Char('\n'));
    const qsizetype end = cr < 0 ? lf : (lf < 0 ? cr : std::min(cr, lf));
    return end < 0 ? QStringView(text) : QStringView(text).left(end);
}

} // namespace

const QString &BookRow::text(JournalColumns::Column column) const
{
    return m_grid->textRef(m_row, (*m_columns)[column]);
}

void BookRow::setText(JournalColumns::Column column, const QString &text) const
{
    m_grid->setText(m_row, (*m_columns)[column], text);
}

Currency BookRow::amount(JournalColumns::Column column) const
{
    const QString &t = text(column);
    return t.isEmpty() ? Currency() : Currency::fromText(firstLine(t)).valueOr(Currency());
}

qint64 BookRow::number(JournalColumns::Column column) const
{
    const QString &t = text(column);
    if (t.isEmpty())
        return 0;
    // Whole numbers are most of what these cells hold: read them straight off.
    if (t.size() <= 18) {
        const bool negative = t.front() == QLatin1Char('-');
        qint64 n = 0;
        qsizetype i = negative ? 1 : 0;
        for (; i < t.size(); ++i) {
            const char16_t c = t.at(i).unicode();
            if (c < u'0' || c > u'9')
                break;
            n = n * 10 + (c - u'0');
        }
        if (i == t.size() && i > (negative ? 1 : 0))
            return negative ? -n : n;
    }
    bool ok = false;
    const qint64 n = t.toLongLong(&ok);
    if (ok)
        return n;
    // Integer cells written by other tools may hold "12.0".
    const Currency c = Currency::fromText(t).valueOr(Currency());
    return c.isValid() ? c.raw() / Currency::Scale : 0;
}

QDate BookRow::date() const
{
    return QDate::fromString(dateText(), Qt::ISODate);
}

bool BookRow::isDated() const
{
    return isIsoDate(dateText());
}

bool BookRow::isSummary() const
{
    return isSummaryTag(text(JournalColumns::Tag));
}

void BookRow::setLockedCell(bool locked) const
{
    setText(JournalColumns::Locked, locked ? QStringLiteral("1") : QStringLiteral("0"));
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

bool BookRow::isSummaryTag(const QString &text)
{
    // Most rows carry "0" or nothing: the sign decides before any parsing.
    if (text.isEmpty() || text.front() != QLatin1Char('-'))
        return false;
    bool ok = false;
    const qint64 n = text.toLongLong(&ok);
    return ok ? n < 0 : Currency::fromText(text).valueOr(Currency()).sign() < 0;
}

bool BookRow::isIsoDate(const QString &t)
{
    if (t.size() != 10 || t.at(4) != QLatin1Char('-') || t.at(7) != QLatin1Char('-'))
        return false;
    int parts[3] = {0, 0, 0};
    int part = 0;
    for (int i = 0; i < 10; ++i) {
        if (i == 4 || i == 7) {
            ++part;
            continue;
        }
        const char16_t c = t.at(i).unicode();
        if (c < u'0' || c > u'9')
            return false;
        parts[part] = parts[part] * 10 + (c - u'0');
    }
    return QDate::isValid(parts[0], parts[1], parts[2]);
}

} // namespace kx
