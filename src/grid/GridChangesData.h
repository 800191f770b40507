#pragma once

#include "grid/Cell.h"
#include "grid/GridStyles.h"

#include <QString>
#include <QVariant>
#include <vector>

namespace kx {

/// The record behind GridChanges: one entry per change, in the order made,
/// each holding what was there before. Texts, looks and row marks sit in
/// side tables so that the many cell entries of a recalculation stay small.
class GridChangesData
{
public:
    /// What an entry put back.
    enum Kind : quint8 { Value, Look, RowColor, RowMark, RowCount };
    struct Entry {
        Kind kind;
        int row;
        int col;   ///< Value, Look
        int side;  ///< index into the side table (-1: none); RowCount: the earlier count
        Cell cell; ///< Value: the earlier cell (a text's is in texts[side])
    };
    /// The earlier look of a cell (none when it had no look of its own).
    struct LookBefore {
        GridStyles::CellStyle style;
        bool had = false;
    };

    void value(int row, int col, Cell before, const QString *text)
    {
        int side = -1;
        if (text) {
            side = int(texts.size());
            texts.push_back(*text);
        }
        entries.push_back({Value, row, col, side, before});
    }
    void look(int row, int col, const GridStyles::CellStyle *before)
    {
        looks.push_back({before ? *before : GridStyles::CellStyle(), before != nullptr});
        entries.push_back({Look, row, col, int(looks.size()) - 1, Cell()});
    }
    void rowColor(int row, const QColor &before)
    {
        colors.push_back(before);
        entries.push_back({RowColor, row, -1, int(colors.size()) - 1, Cell()});
    }
    void rowMark(int row, const QVariant &before)
    {
        marks.push_back(before);
        entries.push_back({RowMark, row, -1, int(marks.size()) - 1, Cell()});
    }
    void rowCount(int before) { entries.push_back({RowCount, -1, -1, before, Cell()}); }

    std::vector<Entry> entries;
    std::vector<QString> texts;
    std::vector<LookBefore> looks;
    std::vector<QColor> colors;
    std::vector<QVariant> marks;
    bool complete = true;
};

} // namespace kx
