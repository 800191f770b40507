#pragma once

#include <QColor>
#include <QFont>
#include <QStringList>
#include <memory>
#include <vector>

namespace kx {

/// The grid's looks: per-cell colours, bold, font and alignment kept only
/// for cells that have one, a text colour per row, and the font-name table.
/// Rows run parallel to the cell store's; Sheet keeps them in step.
class GridStyles
{
public:
    /// One cell's own look; a dozen bytes.
    struct CellStyle {
        QRgb fore = 0;
        QRgb back = 0;
        quint16 fontIndex = 0;  ///< 0 = none; else index + 1 into the font-name table
        quint16 align = 0;      ///< 0 = the column's alignment
        quint8 flags = 0;
        enum : quint8 { HasFore = 1, HasBack = 2, HasBold = 4, Bold = 8 };
    };

    /// The look of a cell, or nullptr when it has none.
    const CellStyle *at(int row, int col) const;
    /// The look of a cell, made when missing (row and col in range).
    CellStyle &make(int row, int col);
    /// The text colour of a row's data cells (invalid: none).
    QColor rowFore(int row) const;
    /// Sets a row's text colour and drops its cells' own text colours from \a firstCol on.
    void setRowFore(int row, const QColor &color, int firstCol);
    /// Drops the font of column \a col from every cell's own look.
    void dropColumnFont(int col);

    /// Index + 1 of \a family in the font-name table (0 for empty text).
    quint16 fontIndex(const QString &family);
    /// The family at index + 1 \a index.
    const QString &fontName(quint16 index) const { return m_fontNames.at(index - 1); }

    /// Row count kept in step with the cell store.
    void resizeRows(int n);
    /// Column count kept in step with the cell store.
    void resizeCols(int n);
    /// A row inserted before \a at.
    void insertRow(int at) { insertRows(at, 1); }
    /// \a count rows inserted before \a at.
    void insertRows(int at, int count);
    /// Row \a at removed.
    void removeRow(int at) { removeRows(at, 1); }
    /// Rows \a at … at + count − 1 removed.
    void removeRows(int at, int count);
    /// A row's looks apart from the grid.
    struct RowCopy {
        std::vector<CellStyle> cells;  ///< empty: no cell has a look of its own
        QRgb fore = 0;
        bool hasFore = false;
    };
    /// A copy of the looks of row \a row.
    RowCopy copyRow(int row) const;
    /// Gives row \a row the looks in \a copy.
    void restoreRow(int row, const RowCopy &copy);
    /// Row \a from moved to \a to.
    void moveRow(int from, int to);
    /// Column \a from moved to \a to.
    void moveCol(int from, int to);

private:
    struct RowLook {
        std::unique_ptr<CellStyle[]> cells;
        QRgb fore = 0;
        bool hasFore = false;
    };
    std::vector<RowLook> m_rows;
    int m_cols = 0;
    QStringList m_fontNames;
};

} // namespace kx
