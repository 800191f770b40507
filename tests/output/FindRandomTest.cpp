// Find over random books: the rows BookFinder reports, in order and with
// their descriptions, against a plain match of every keyword on every shown
// cell of every row, as typed and as shown.
#include "grid/Sheet.h"
#include "output/BookFinder.h"
#include "output/LikePattern.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>
#include <iostream>

using kx::BookFinder;
using kx::Currency;
using kx::LikePattern;
using kx::Sheet;

namespace {

// The rows of \a grid holding every keyword of \a text, cell by cell: a
// keyword is held by a shown cell that is not blank when its text, or the
// text the grid shows for it, matches.
QVector<BookFinder::Hit> plainFind(const Sheet &grid, const QString &text)
{
    QVector<LikePattern> patterns;
    for (const QString &word : BookFinder::keywords(text))
        patterns << LikePattern::containing(word).value();
    QVector<BookFinder::Hit> hits;
    for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
        bool all = true;
        for (const LikePattern &p : patterns) {
            bool held = false;
            for (int c = grid.fixedCols(); c < grid.cols() && !held; ++c) {
                if (grid.isColHidden(c) || grid.colWidth(c) == 0)
                    continue;
                const QString cell = grid.text(r, c);
                if (cell.trimmed().isEmpty())
                    continue;
                const QString shown = grid.data(grid.indexAt(r, c)).toString();
                held = p.matches(cell) || p.matches(shown);
            }
            all = all && held;
        }
        if (all)
            hits.append({r, BookFinder(grid).describe(r)});
    }
    return hits;
}

struct RandomBook {
    explicit RandomBook(quint32 seed) : random(seed) {}

    QString pick(const QStringList &from) { return from[int(random.bounded(int(from.size())))]; }
    QString draw(int maxLength)
    {
        static const QStringList alphabet{QStringLiteral("收"), QStringLiteral("付"), QStringLiteral("款"),
                                          QStringLiteral("a"),  QStringLiteral("A"),  QStringLiteral("b"),
                                          QStringLiteral("1"),  QStringLiteral("0"),  QStringLiteral(","),
                                          QStringLiteral("."),  QStringLiteral("-"),  QStringLiteral(" "),
                                          QStringLiteral("元"), QStringLiteral("𠀀")};
        QString s;
        for (int n = int(random.bounded(maxLength)) + 1; n > 0; --n)
            s += pick(alphabet);
        return s;
    }

    // Columns of every kind a book has: plain texts few or many, amounts
    // with and without a format, days, some hidden or squeezed to nothing;
    // rows with empty and blank cells, and summary rows with two-line totals.
    void fill(int rows)
    {
        const int cols = 4 + int(random.bounded(6));
        grid.setCols(grid.fixedCols() + cols);
        grid.setRows(grid.fixedRows() + rows);
        static const QStringList keys{QStringLiteral("ShowName"), QStringLiteral("JnlNo"), QStringLiteral("AccDoc"),
                                      QStringLiteral("Explain")};
        static const QStringList amountFormats{QString(), QStringLiteral("#,##0.00"), QStringLiteral("¥#,##0.00;(#,##0.00);-"),
                                               QStringLiteral("0.0000元"), QStringLiteral("#,##0")};
        QStringList vocabulary;
        for (int i = 0; i < 6; ++i)
            vocabulary << draw(5);
        for (int k = 0; k < cols; ++k) {
            const int c = grid.fixedCols() + k;
            if (k < keys.size())
                grid.setColKey(c, keys[k]);
            const int kind = int(random.bounded(5));
            if (kind == 3) {
                grid.setColDataType(c, Sheet::TypeCurrency);
                grid.setColFormat(c, pick(amountFormats));
            } else if (kind == 4) {
                grid.setColDataType(c, Sheet::TypeDate);
                grid.setColFormat(c, random.bounded(2) ? QStringLiteral("yyyy年M月d日") : QString());
            }
            if (random.bounded(6) == 0)
                grid.setColHidden(c, true);
            else if (random.bounded(8) == 0)
                grid.setColWidth(c, 0);
            for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
                const int what = int(random.bounded(10));
                if (what < 2)
                    continue;  // empty
                if (what == 2)
                    grid.setText(r, c, QStringLiteral("  "));
                else if (kind == 3 && what < 8)
                    // Whole, zero and negative amounts among them: their shown texts hold
                    // characters ("1,250.00", "-", "(30.00)") their texts lack.
                    grid.setAmount(r, c, random.bounded(3) ? Currency::fromRaw(qint64(random.bounded(-2000000, 2000000)) * 100)
                                                           : Currency::fromUnits(random.bounded(-3, 3000)));
                else if (kind == 4 && what < 8)
                    grid.setDate(r, c, QDate(2025, 1, 1).addDays(random.bounded(400)));
                else if (what < 7)
                    grid.setText(r, c, pick(vocabulary));  // texts that repeat down the column
                else
                    grid.setText(r, c, draw(8));
            }
        }
        for (int r = grid.fixedRows(); r < grid.rows(); ++r) {
            if (random.bounded(20) != 0)
                continue;
            grid.setSubtotal(r, true);
            for (int c = grid.fixedCols(); c < grid.cols(); ++c)
                if (grid.colDataType(c) == Sheet::TypeCurrency)
                    grid.setText(r, c, QStringLiteral("1250.5\n-30"));
        }
    }

    QString keywords()
    {
        static const QStringList wild{QStringLiteral("*"), QStringLiteral("?"), QStringLiteral("#"), QStringLiteral("[a-c]"),
                                      QStringLiteral("[!0]"), QStringLiteral("1,2"), QStringLiteral("元"), QStringLiteral("¥"),
                                      QStringLiteral("("), QStringLiteral("月"), QStringLiteral(".5"), QStringLiteral(".0"), QStringLiteral("-"), QStringLiteral(")")};
        if (random.bounded(15) == 0) {
            // More keywords than one word of bits holds.
            QStringList many;
            for (int n = 60 + int(random.bounded(20)); n > 0; --n)
                many << pick({QStringLiteral("a"), QStringLiteral("1"), QStringLiteral("收")});
            return many.join(QLatin1Char(' '));
        }
        QStringList words;
        for (int n = 1 + int(random.bounded(3)); n > 0; --n) {
            QString word = random.bounded(2) ? draw(2) : QString();
            if (word.isEmpty() || random.bounded(2))
                word += pick(wild);
            words << word.trimmed().remove(QLatin1Char(','));
        }
        return words.join(pick({QStringLiteral(" "), QStringLiteral("，"), QStringLiteral(";")}));
    }

    QRandomGenerator random;
    Sheet grid;
};

} // namespace

TEST(FindRandom, FindsWhatAPlainMatchOfEveryCellFinds)
{
    const quint32 seed = qEnvironmentVariableIsSet("KX_SEED") ? quint32(qEnvironmentVariableIntValue("KX_SEED"))
                                                              : QRandomGenerator::global()->generate();
    std::cout << "FindRandom seed " << seed << " (KX_SEED replays)" << std::endl;
    int found = 0, searched = 0;
    for (int book = 0; book < 12; ++book) {
        RandomBook b(seed + quint32(book));
        // One book long enough for columns of unique texts to drop their table.
        b.fill(book == 0 ? 6000 : 50 + int(b.random.bounded(400)));
        for (int search = 0; search < (book == 0 ? 6 : 25); ++search) {
            const QString text = b.keywords();
            const kx::Result<QVector<BookFinder::Hit>> hits = BookFinder(b.grid).find(text);
            if (!hits.ok())
                continue;  // an empty or malformed search: told apart elsewhere
            const QVector<BookFinder::Hit> expected = plainFind(b.grid, text);
            ASSERT_EQ(hits.value().size(), expected.size()) << qPrintable(text) << " book " << book << " seed " << seed;
            for (int i = 0; i < expected.size(); ++i) {
                ASSERT_EQ(hits.value()[i].row, expected[i].row) << qPrintable(text) << " book " << book << " seed " << seed;
                ASSERT_EQ(hits.value()[i].description, expected[i].description);
            }
            found += int(expected.size());
            ++searched;
        }
    }
    // The searches must find rows, and not every row, to tell anything.
    EXPECT_GT(searched, 150);
    EXPECT_GT(found, 1000);
}
