#include "output/BookFinder.h"

#include "grid/Sheet.h"
#include "output/LikePattern.h"
#include "output/ShownColumns.h"

namespace kx {

namespace {

// A cell's text as typed, and as shown when a format makes it look different
// ("1250.5" shows as "1,250.50"): a bookkeeper searches for either.
struct CellTexts {
    QString text;
    QString shown;
    bool shownRead = false;
};

bool isBlank(const QString &text)
{
    for (const QChar c : text)
        if (!c.isSpace())
            return false;
    return true;
}

} // namespace

QStringList BookFinder::keywords(const QString &text)
{
    QString normal = text;
    for (const QChar sep : {QChar(u' '), QChar(u';'), QChar(u','), QChar(u'；'), QChar(u'，')})
        normal.replace(sep, QLatin1Char('|'));
    QStringList words;
    for (const QString &piece : normal.split(QLatin1Char('|'), Qt::SkipEmptyParts)) {
        const QString word = piece.trimmed();
        if (!word.isEmpty())
            words << word;
    }
    return words;
}

Result<QVector<BookFinder::Hit>> BookFinder::find(const QString &text) const
{
    const QStringList words = keywords(text);
    if (words.isEmpty())
        return Error(QStringLiteral("请输入要查找的文字;"));
    QVector<LikePattern> patterns;
    for (const QString &word : words) {
        Result<LikePattern> p = LikePattern::containing(word);
        if (!p.ok())
            return Error(p.error());
        patterns.append(p.value());
    }

    const QVector<int> cols = shownColumns(m_grid);
    QVector<bool> formatted(cols.size());
    for (int k = 0; k < cols.size(); ++k)
        formatted[k] = !m_grid.colFormat(cols[k]).isEmpty();
    QVector<CellTexts> cells(cols.size());
    QVector<Hit> hits;
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        for (int k = 0; k < cols.size(); ++k) {
            cells[k].text = m_grid.text(r, cols[k]);
            cells[k].shownRead = !formatted[k];
        }
        bool all = true;
        for (const LikePattern &p : patterns) {
            bool found = false;
            for (int k = 0; k < cols.size() && !found; ++k) {
                CellTexts &cell = cells[k];
                if (cell.text.isEmpty() || isBlank(cell.text))
                    continue;
                found = p.matches(cell.text);
                if (!found && formatted[k]) {
                    if (!cell.shownRead) {
                        cell.shown = m_grid.data(m_grid.indexAt(r, cols[k])).toString();
                        cell.shownRead = true;
                    }
                    found = cell.shown != cell.text && p.matches(cell.shown);
                }
            }
            if (!found) {
                all = false;
                break;
            }
        }
        if (all)
            hits.append({r, describe(r)});
    }
    return hits;
}

QString BookFinder::describe(int row) const
{
    const auto textOf = [&](JournalColumns::Column c) {
        return m_columns[c] < 0 ? QString() : m_grid.text(row, m_columns[c]).trimmed();
    };
    const QString name = textOf(JournalColumns::ShowName);
    QString d = name.isEmpty() ? QStringLiteral("[无名称]") : name;
    d += QLatin1Char(' ');
    d += textOf(JournalColumns::JnlNo);
    const QString voucher = textOf(JournalColumns::AccDoc);
    if (!voucher.isEmpty())
        d += QLatin1Char('[') + voucher + QLatin1Char(']');
    d += QLatin1Char('|') + QString::number(row);
    const QString explain = textOf(JournalColumns::Explain);
    if (!explain.isEmpty())
        d += QLatin1Char('|') + explain;
    return d;
}

} // namespace kx
