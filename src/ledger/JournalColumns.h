#pragma once

#include "grid/Sheet.h"

#include <QString>
#include <array>
#include <initializer_list>

namespace kx {

/// The journal's keyed columns: every key, its place in the default layout,
/// its header and looks, and where each key sits on a given grid.
///
/// Ledger code names a column by its Column value, never by a literal key,
/// and asks an instance for the grid column (the user may have moved it).
class JournalColumns
{
public:
    /// Every column, in the order the default layout lays them down.
    enum Column {
        SeqNo, ShowName, JnlDate, JnlNo, AccName, AccDoc, Explain, Debit, Credit, Rate, Forex, Dir, Balance,
        fxBalance, Field1, Field2, Field3, Field4, Remark, AssistName, AccCode, AccID, DirID, RecID, DocID, Flag,
        Tag, Locked, Row, Reconciled,
        Count  ///< not a column: how many there are
    };

    /// How a column is laid down by default.
    struct Layout {
        const char *key;
        const char *header;
        Sheet::DataType type;
        Qt::Alignment align;  ///< 0: by data type
        bool hidden;
        const char *format;
        int twips;            ///< width as designed, in twips
    };

    /// The key of \a column ("Debit").
    static const QString &key(Column column);
    /// The default layout of \a column.
    static const Layout &layout(Column column);
    /// The column keyed \a key, or Count when the journal has no such column.
    static Column fromKey(const QString &key);
    /// A key list of \a columns: "|Debit|Credit|".
    static QString keyList(std::initializer_list<Column> columns);
    /// Whether \a key is in the key list \a list ("|a|b|" form).
    static bool inList(const QString &list, const QString &key);

    /// The money and balance columns, as a key list.
    static const QString &amountKeys();

    /// Where every column sits on \a grid (-1 for columns it lacks).
    explicit JournalColumns(const Sheet &grid);
    /// The grid column of \a column (-1 when the grid lacks it).
    int operator[](Column column) const { return m_index[std::size_t(column)]; }

private:
    std::array<int, Count> m_index{};
};

} // namespace kx
