#include "menu/FieldChoice.h"

#include "grid/Sheet.h"
#include "ledger/JournalColumns.h"
#include "ledger/LedgerState.h"

#include <QHash>
#include <QStringList>
#include <algorithm>

namespace kx {

namespace {

QString pairs(const QHash<QString, int> &values)
{
    QStringList keys = values.keys();
    keys.sort();
    QStringList out;
    for (const QString &key : keys)
        out << key + QLatin1Char('=') + QString::number(values.value(key));
    return out.join(QLatin1Char('|'));
}

// The key lists use "|" and "=" never occurs in a key; anything else in a
// bag written by hand is passed over.
QHash<QString, int> readPairs(const QString &text)
{
    QHash<QString, int> out;
    for (const QString &part : text.split(QLatin1Char('|'), Qt::SkipEmptyParts)) {
        const int at = int(part.indexOf(QLatin1Char('=')));
        bool ok = false;
        const int value = at > 0 ? part.mid(at + 1).toInt(&ok) : 0;
        if (ok)
            out.insert(part.left(at).trimmed(), value);
    }
    return out;
}

} // namespace

FieldChoice::FieldChoice(Book &book) : m_book(book), m_grid(book.sheet()), m_state(book.state()) {}

bool FieldChoice::offered(int col) const
{
    const QString key = m_grid.colKey(col);
    return col >= m_grid.fixedCols() && col < m_grid.cols() && !key.isEmpty() &&
           !JournalColumns::inList(m_state.fields.colsFilter, key);
}

QList<FieldChoice::Field> FieldChoice::fields() const
{
    QList<Field> out;
    QHash<QString, int> seen;
    for (int c = m_grid.fixedCols(); c < m_grid.cols(); ++c) {
        if (!offered(c))
            continue;
        Field f;
        f.key = m_grid.colKey(c);
        f.text = m_grid.text(0, c).trimmed();
        if (f.text.isEmpty())
            f.text = f.key == JournalColumns::key(JournalColumns::Dir) ? QStringLiteral("方向") : f.key;
        f.shown = !m_grid.isColHidden(c);
        ++seen[f.text];
        out << f;
    }
    // Two columns under one header (字段一 twice) are told apart by key.
    for (Field &f : out)
        if (seen.value(f.text) > 1)
            f.text += QStringLiteral("（%1）").arg(f.key);
    return out;
}

bool FieldChoice::setShown(const QString &key, bool shown)
{
    const int col = m_grid.colIndex(key);
    if (col < 0 || !offered(col) || m_grid.isColHidden(col) == !shown)
        return false;
    m_grid.setColHidden(col, !shown);
    m_state.columns.shown.insert(key, shown);
    return true;
}

void FieldChoice::rememberWidth(int col, int width)
{
    const QString key = m_grid.colKey(col);
    if (col >= m_grid.fixedCols() && !key.isEmpty() && width > 0)
        m_state.columns.widths.insert(key, width);
}

QString FieldChoice::shownText(const ColumnChoices &choices)
{
    QHash<QString, int> values;
    for (auto it = choices.shown.cbegin(); it != choices.shown.cend(); ++it)
        values.insert(it.key(), it.value() ? 1 : 0);
    return pairs(values);
}

QString FieldChoice::widthText(const ColumnChoices &choices)
{
    return pairs(choices.widths);
}

void FieldChoice::read(ColumnChoices &choices, const QString &shown, const QString &widths)
{
    choices.shown.clear();
    const QHash<QString, int> s = readPairs(shown);
    for (auto it = s.cbegin(); it != s.cend(); ++it)
        choices.shown.insert(it.key(), it.value() != 0);
    choices.widths.clear();
    const QHash<QString, int> w = readPairs(widths);
    for (auto it = w.cbegin(); it != w.cend(); ++it)
        if (it.value() > 0 && it.value() <= 4000)
            choices.widths.insert(it.key(), it.value());
}

} // namespace kx
