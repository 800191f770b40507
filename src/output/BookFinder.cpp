#include "output/BookFinder.h"

#include "grid/Sheet.h"
#include "output/LikePattern.h"
#include "output/ShownColumns.h"

#include <algorithm>
#include <memory>
#include <type_traits>
#include <vector>

namespace kx {

namespace {

bool isBlank(QStringView text)
{
    for (const QChar c : text)
        if (!c.isSpace())
            return false;
    return true;
}

// Which keywords the cells of one shown column hold, as bits (keyword p is
// bit p % 64 of word p / 64). A cell holds a keyword in its text as typed
// or, when a format makes it look different ("1250.5" shows as "1,250.50"),
// as shown; a blank cell holds none. That depends on the text and the
// column alone (equal texts are equal cells), so a text met again is not
// looked over again: the row above is checked first, then a fixed table of
// texts met lately, picked by their hash. A column whose texts hardly repeat
// (amounts, balances) stops using the table: it would only cost.
class ColumnLook
{
public:
    ColumnLook(const Sheet &grid, int col, const QVector<LikePattern> &patterns, int width)
        : m_grid(grid), m_col(col), m_patterns(patterns), m_width(std::size_t(width)), m_own(m_width)
    {
        static_assert(!std::is_copy_constructible_v<ColumnLook>, "m_recent may point into the object");
        if (grid.colFormat(col).isEmpty())
            return;
        m_formatted = true;
        const GridModel::DataType type = grid.colDataType(col);
        if (type != GridModel::TypeLong && type != GridModel::TypeDouble && type != GridModel::TypeCurrency)
            return;
        // A numeric format shows an amount with digits, ",", ".", "-", the
        // format's own characters and, past the money range, "#溢出"; a text
        // it cannot read stays itself. A character of a keyword outside
        // those must come from the cell's text for the shown text to hold it.
        const QString shownChars = grid.colFormat(col) + QStringLiteral("0123456789,.-#溢出");
        m_fromText.resize(patterns.size());
        for (int p = 0; p < patterns.size(); ++p)
            for (const char32_t c : patterns[p].literals()) {
                const QString one = QString::fromUcs4(&c, 1);
                if (!shownChars.contains(one))
                    m_fromText[p] << one;
            }
    }

    // The keywords the cell in row \a r holds.
    const quint64 *found(int r)
    {
        const quint64 hash = m_grid.textHash(r, m_col);
        QString text = m_grid.text(r, m_col);
        if (m_recent->holds(hash, text))
            return m_recent->found.data();
        Slot *slot = &m_own;
        if (m_tableOn) {
            if (m_table.empty())
                m_table.resize(Slots, Slot(m_width));
            slot = &m_table[std::size_t((hash * 0x9e3779b97f4a7c15ULL) >> 54)];
            ++m_lookUps;
            if (slot->holds(hash, text)) {
                ++m_tableHits;
                m_recent = slot;
                return slot->found.data();
            }
            if (m_lookUps == 4096 && m_tableHits < m_lookUps / 8) {
                m_tableOn = false;
                m_table = {};
                slot = &m_own;
            }
        }
        slot->hash = hash;
        slot->text = std::move(text);
        slot->used = true;
        std::fill(slot->found.begin(), slot->found.end(), quint64(0));
        look(r, slot->text, slot->found.data());
        m_recent = slot;
        return slot->found.data();
    }

private:
    static constexpr std::size_t Slots = 1024;
    struct Slot {
        explicit Slot(std::size_t width) : found(width) {}
        bool holds(quint64 h, const QString &t) const
        {
            return used && hash == h && text.size() == t.size() && (text.constData() == t.constData() || text == t);
        }
        quint64 hash = 0;
        QString text;
        bool used = false;
        std::vector<quint64> found;
    };

    static bool has(const quint64 *found, int p) { return found[p / 64] & (quint64(1) << (p % 64)); }
    static void set(quint64 *found, int p) { found[p / 64] |= quint64(1) << (p % 64); }

    void look(int r, const QString &text, quint64 *found) const
    {
        if (text.isEmpty() || isBlank(text))
            return;
        bool every = true;
        for (int p = 0; p < m_patterns.size(); ++p) {
            if (m_patterns[p].matches(text))
                set(found, p);
            else
                every = false;
        }
        if (every || !m_formatted)
            return;
        QString shown;
        bool shownRead = false;
        for (int p = 0; p < m_patterns.size(); ++p) {
            if (has(found, p) || !mayShow(p, text))
                continue;
            if (!shownRead) {
                shown = m_grid.data(m_grid.indexAt(r, m_col)).toString();
                shownRead = true;
                if (shown == text)
                    return;
            }
            if (m_patterns[p].matches(shown))
                set(found, p);
        }
    }
    // False when the shown text of \a text cannot hold keyword \a p.
    bool mayShow(int p, const QString &text) const
    {
        if (m_fromText.isEmpty())
            return true;
        for (const QString &c : m_fromText[p])
            if (!text.contains(c))
                return false;
        return true;
    }

    ColumnLook(const ColumnLook &) = delete;
    ColumnLook &operator=(const ColumnLook &) = delete;

    const Sheet &m_grid;
    const int m_col;
    const QVector<LikePattern> &m_patterns;
    const std::size_t m_width;
    bool m_formatted = false;
    QVector<QStringList> m_fromText;  ///< per keyword: characters only the text can bring
    Slot m_own;                ///< the text met last, while the table is off
    Slot *m_recent = &m_own;   ///< the slot of the row above
    std::vector<Slot> m_table;
    bool m_tableOn = true;
    int m_lookUps = 0;
    int m_tableHits = 0;
};

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

    // A row is found when each keyword is in some shown cell of it.
    const QVector<int> cols = shownColumns(m_grid);
    const int count = int(patterns.size());
    const int width = (count + 63) / 64;
    std::vector<quint64> all(std::size_t(width), ~quint64(0));
    if (count % 64 != 0)
        all.back() = (quint64(1) << (count % 64)) - 1;
    std::vector<std::unique_ptr<ColumnLook>> looks;
    for (const int c : cols)
        looks.push_back(std::make_unique<ColumnLook>(m_grid, c, patterns, width));

    std::vector<quint64> row(std::size_t(width), 0);
    QVector<Hit> hits;
    for (int r = m_grid.fixedRows(); r < m_grid.rows(); ++r) {
        std::fill(row.begin(), row.end(), quint64(0));
        bool hit = false;
        for (std::size_t k = 0; k < looks.size() && !hit; ++k) {
            const quint64 *found = looks[k]->found(r);
            hit = true;
            for (std::size_t w = 0; w < row.size(); ++w) {
                row[w] |= found[w];
                hit = hit && row[w] == all[w];
            }
        }
        if (hit)
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
