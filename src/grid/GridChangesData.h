#pragma once

#include "grid/Cell.h"
#include "grid/CellStore.h"
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
    enum Kind : quint8 { Value, Look, RowColor, RowMark, RowCount, RowsIn, RowsOut, RowMove, Shape, Data };
    struct Entry {
        Kind kind;
        int row;
        int col;   ///< Value, Look, Data; RowMove: where the row went
        int side;  ///< index into the side table (-1: none); RowCount: the earlier count; RowsIn: how many
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
    void rowsInserted(int at, int count) { entries.push_back({RowsIn, at, -1, count, Cell()}); }
    /// Rows taken out at \a at, with everything they held.
    struct Removed {
        std::vector<CellStore::RowCopy> cells;
        std::vector<GridStyles::RowCopy> looks;
    };
    void rowsRemoved(int at, Removed removed)
    {
        this->removed.push_back(std::move(removed));
        entries.push_back({RowsOut, at, -1, int(this->removed.size()) - 1, Cell()});
    }
    void rowMoved(int from, int to) { entries.push_back({RowMove, from, to, -1, Cell()}); }
    void shape(int row, CellStore::RowShape before)
    {
        shapes.push_back(before);
        entries.push_back({Shape, row, -1, int(shapes.size()) - 1, Cell()});
    }
    void data(int row, int col, const QVariant &before)
    {
        marks.push_back(before);
        entries.push_back({Data, row, col, int(marks.size()) - 1, Cell()});
    }

    std::vector<Entry> entries;
    std::vector<QString> texts;
    std::vector<LookBefore> looks;
    std::vector<QColor> colors;
    std::vector<QVariant> marks;  ///< row data and hidden cell data
    std::vector<Removed> removed;
    std::vector<CellStore::RowShape> shapes;
    bool complete = true;
};

} // namespace kx
