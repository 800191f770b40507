#pragma once

#include <QHash>
#include <QString>
#include <vector>

namespace kx {

/// The grid's column settings — key, format, combo list, width, data type,
/// alignment, data font, hidden — and the index from keys to columns.
class GridColumns
{
public:
    /// One column's settings.
    struct Column {
        QString key;
        QString format;
        QString comboList;
        quint16 dataFont = 0;  ///< font of the data cells: 0 = the grid's, else index + 1 into the font-name table
        int width = -1;        ///< -1 = the default width
        int dataType = 0;
        int align = 0;         ///< Qt::Alignment bits; 0 = by data type
        bool hidden = false;
    };

    /// Column count.
    int count() const { return int(m_cols.size()); }
    /// True for an existing column.
    bool contains(int col) const { return col >= 0 && col < count(); }
    /// Settings of an existing column.
    const Column &at(int col) const { return m_cols[std::size_t(col)]; }
    /// Writable settings of an existing column (a key change goes through setKey()).
    Column &edit(int col) { return m_cols[std::size_t(col)]; }
    /// Grows or shrinks to \a n columns.
    void resize(int n);
    /// Moves column \a from to \a to.
    void move(int from, int to);
    /// Sets the key of an existing column.
    void setKey(int col, const QString &key);
    /// The column keyed \a key (exact, else case-insensitive), or -1.
    int indexOf(const QString &key) const;

private:
    void rebuild() const;
    std::vector<Column> m_cols;
    mutable QHash<QString, int> m_exact;
    mutable QHash<QString, int> m_folded;
    mutable bool m_valid = false;
};

} // namespace kx
