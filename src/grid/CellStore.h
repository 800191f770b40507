#pragma once

#include "grid/Cell.h"
#include "grid/CellColumn.h"
#include "grid/TextPool.h"

#include <QVariant>
#include <memory>
#include <utility>
#include <vector>

namespace kx {

class CellArray;
class GridChangesData;

/// The grid's cells and per-row marks, typed and compact: a column is one
/// array of eight-byte cells, or one cell for nearly every row and a short
/// list of the rows that differ (CellColumn); a row has a few bytes of marks,
/// and texts live once in a pool. A pass down a column reads one dense array
/// or walks a short list (ColumnReader). Text is made on demand when read.
/// Knows nothing of looks, columns or Qt models: Sheet projects it.
class CellStore
{
public:
    CellStore() = default;
    ~CellStore();
    CellStore(const CellStore &) = delete;
    CellStore &operator=(const CellStore &) = delete;

    /// Row count (fixed rows included).
    int rows() const { return int(m_rows.size()); }
    /// Column count (fixed columns included).
    int cols() const { return m_cols; }
    /// True inside the store.
    bool contains(int row, int col) const { return row >= 0 && row < rows() && col >= 0 && col < m_cols; }

    /// Moves whenever rows or columns come, go or move, or a column changes
    /// form or list: what column() gave may then hold other cells.
    std::uint64_t layout() const { return m_layout; }
    /// Moves whenever a cell's value is written (derived values apart) or
    /// the layout moves: what was worked out from the values while it held
    /// still holds.
    std::uint64_t values() const { return m_layout + m_writes; }
    /// Grows or shrinks to \a n rows; new rows are empty and touched.
    void resizeRows(int n);
    /// Grows or shrinks every row to \a n columns.
    void resizeCols(int n);
    /// Inserts an empty, touched row before \a at.
    void insertRow(int at) { insertRows(at, 1); }
    /// Inserts \a count empty, touched rows before \a at.
    void insertRows(int at, int count);
    /// Removes row \a at.
    void removeRow(int at) { removeRows(at, 1); }
    /// Removes rows \a at … at + count − 1.
    void removeRows(int at, int count);

    /// A row apart from the store: its cells (texts held as texts, so that
    /// it outlives the pool), hidden data, row data and marks.
    struct RowCopy {
        std::vector<Cell> cells;                   ///< typed cells; a text's slot is empty here
        std::vector<std::pair<int, QString>> texts;  ///< (column, text) of the text cells
        std::vector<QVariant> data;
        QVariant rowData;
        std::int16_t height = -1;
        std::int8_t mark = 0;
        std::uint8_t outline = 0;
        std::uint8_t flags = 0;
        std::vector<std::pair<int, QString>> before;  ///< (column, text as of the last clean mark)
    };
    /// A copy of row \a row.
    RowCopy copyRow(int row) const;
    /// Makes row \a row what \a copy holds (without recording it).
    void restoreRow(int row, const RowCopy &copy);
    /// The marks that shape a row: hidden, subtotal, height, outline.
    struct RowShape {
        std::int16_t height = -1;
        std::uint8_t outline = 0;
        std::uint8_t flags = 0;  ///< Hidden and Subtotal only
    };
    /// The shape of \a row.
    RowShape shape(int row) const;
    /// Gives \a row the shape \a shape.
    void setShape(int row, RowShape shape);
    /// Moves row \a from so that it ends up at \a to.
    void moveRow(int from, int to);
    /// Moves column \a from so that it ends up at \a to.
    void moveCol(int from, int to);
    /// Replaces the rows from \a firstRow on with \a block's rows, its
    /// cells from column \a firstCol; the block is emptied. Adopted rows are
    /// clean (not touched).
    void adopt(CellArray &block, int firstRow, int firstCol);

    /// The cell at (row, col) (Empty outside).
    Cell cell(int row, int col) const
    {
        return contains(row, col) ? m_columns[std::size_t(col)].at(row) : Cell();
    }
    /// Column \a col (in range), for passes down it. Good until layout() moves.
    const CellColumn &column(int col) const { return m_columns[std::size_t(col)]; }
    /// Lists again the columns that turned dense since they were last
    /// compacted, where few of their cells differ from one.
    void compactGrown();
    /// The cell \a text is held as, for comparing cells with it: a typed
    /// cell for the canonical form of a number or a day, the pooled text
    /// else; \a held is false when no cell holds that text.
    Cell cellOf(const QString &text, bool &held) const
    {
        bool isText = false;
        const Cell typed = Cell::classify(text, isText);
        if (!isText) {
            held = true;
            return typed;
        }
        const std::uint32_t id = m_pool.find(text);
        held = id != UINT32_MAX;
        return held ? Cell::text(id) : Cell();
    }
    /// The cell's text, as written.
    QString text(int row, int col) const;
    /// Writes a text; false when the cell already held it (nothing changes).
    bool setText(int row, int col, const QString &text);
    /// Writes a typed cell (not Text); false when nothing changes.
    bool setTyped(int row, int col, Cell cell);
    /// Writes a value worked out from other cells (not Text): not recorded,
    /// no clean text kept; the row is marked touched when it changes, so a
    /// save looks at it. False when nothing changes.
    bool setDerived(int row, int col, Cell next)
    {
        if (!contains(row, col) || next.kind() == Cell::Text)
            return false;
        if (cell(row, col) == next)
            return false;
        store(row, col, next);
        m_rows[std::size_t(row)].flags |= Touched;
        return true;
    }
    /// The cell as an amount (see Sheet::amount).
    Currency amount(int row, int col) const
    {
        const Cell c = cell(row, col);
        return c.kind() == Cell::Text ? textAmount(c) : c.typedAmount();
    }
    /// The cell as a whole number (see Sheet::number).
    qint64 number(int row, int col) const
    {
        const Cell c = cell(row, col);
        return c.kind() == Cell::Number ? c.payload() : slowNumber(c);
    }
    /// A hash of a cell's text made without the text (see Sheet::textHash).
    quint64 textHash(int row, int col) const { return textHash(cell(row, col)); }
    /// The text hashes of columns \a cols[0…count) of \a row, mixed in order.
    quint64 textsHash(int row, const int *cols, int count) const;
    /// The cell as a day (see Sheet::date).
    QDate date(int row, int col) const;

    /// Hidden data of a cell.
    QVariant cellData(int row, int col) const;
    /// Sets hidden data of a cell.
    void setCellData(int row, int col, const QVariant &value);
    /// Row data.
    QVariant rowData(int row) const;
    /// Sets row data.
    void setRowData(int row, const QVariant &value);

    /// Per-row flags.
    enum RowFlag : std::uint8_t { Hidden = 1, Subtotal = 2, Touched = 4, SmallMark = 8, Pristine = 16, Marked = 32 };
    /// Whether \a flag is set on \a row.
    bool rowFlag(int row, RowFlag flag) const { return row >= 0 && row < rows() && (m_rows[std::size_t(row)].flags & flag); }
    /// Sets or clears \a flag on \a row.
    void setRowFlag(int row, RowFlag flag, bool on);
    /// Sets or clears Marked on \a row (it shapes nothing, so no count moves).
    void setMarked(int row, bool on)
    {
        if (row < 0 || row >= rows())
            return;
        std::uint8_t &flags = m_rows[std::size_t(row)].flags;
        flags = on ? std::uint8_t(flags | Marked) : std::uint8_t(flags & ~Marked);
    }
    /// Clears Touched on every row; every row becomes Pristine: the first
    /// change of a kept column from now on keeps the text it replaces.
    void markAllClean();
    /// The columns whose texts as of the last clean mark are kept when they change.
    void setKeptCols(const std::vector<bool> &kept);
    /// Whether \a row was there at the last clean mark (its clean texts are known).
    bool knowsClean(int row) const { return rowFlag(row, Pristine); }
    /// The text of (row, col) as of the last clean mark, when the column is
    /// kept and the row was there; else the text as it stands.
    QString cleanText(int row, int col) const;
    /// Makes \a text the clean text of (row, col): what is stored there now,
    /// when a change stored since the clean mark makes that the base.
    void setCleanText(int row, int col, const QString &text);
    /// Row height (-1: the default).
    int rowHeight(int row) const { return row >= 0 && row < rows() ? m_rows[std::size_t(row)].height : -1; }
    /// Sets a row height (-1: the default).
    void setRowHeight(int row, int height);
    /// Outline level of a row.
    int outline(int row) const { return row >= 0 && row < rows() ? m_rows[std::size_t(row)].outline : 0; }
    /// Sets the outline level of a row (0…255).
    void setOutline(int row, int level);
    /// Rows whose height was set or that are hidden (0: every row is uniform).
    int irregularRows() const { return m_irregular; }

    /// Records the earlier value of every cell written from now on into
    /// \a log (nullptr: stop recording).
    void setLog(GridChangesData *log) { m_log = log; }

    /// Bytes held by rows and pool beyond the texts' characters (for measurements).
    std::size_t overheadBytes() const;

private:
    struct RowExtra {
        std::vector<QVariant> data;  ///< empty, or one per column
        QVariant rowData;
        std::vector<std::pair<int, QString>> before;  ///< kept columns changed since the clean mark
    };
    struct Row {
        std::unique_ptr<RowExtra> extra;
        std::int16_t height = -1;
        std::int8_t mark = 0;  ///< row data when it is a small whole number
        std::uint8_t outline = 0;
        std::uint8_t flags = Touched;
    };

    Currency textAmount(Cell cell) const;
    quint64 textHash(Cell cell) const
    {
        // Each text has one encoding, so hashing the encoding of typed cells
        // is hashing their text; pooled texts carry their characters' hash.
        return cell.kind() == Cell::Text ? m_pool.hash(std::uint32_t(cell.payload())) : cell.bits() * 0x9e3779b97f4a7c15ULL;
    }
    qint64 slowNumber(Cell cell) const;
    void keepPooledTextsOf(int n);
    /// Makes \a next the cell of (row, col), in range, releasing what it replaces.
    void store(int row, int col, Cell next)
    {
        if (m_columns[std::size_t(col)].put(row, next, rows(), m_pool))
            ++m_layout;
    }
    /// Releases the texts of rows \a first … last − 1.
    void releaseRows(int first, int last);
    void release(Cell cell);
    void logValue(int row, int col, Cell before);
    /// Replaces the cell at (row, col), which differs from \a next.
    void put(int row, int col, Cell next);
    /// Keeps the text of \a cell, about to be replaced in kept column \a col of \a row.
    void keepBefore(Row &row, int col, Cell cell);
    static bool irregular(const Row &row) { return row.height >= 0 || (row.flags & Hidden); }
    void countIrregular(const Row &row, int delta) { m_irregular += irregular(row) ? delta : 0; }

    std::vector<Row> m_rows;
    std::vector<CellColumn> m_columns;
    int m_cols = 0;
    int m_irregular = 0;
    std::uint64_t m_layout = 0;
    std::uint64_t m_writes = 0;
    std::vector<bool> m_kept;  ///< per column: keep its text as of the clean mark
    TextPool m_pool;
    GridChangesData *m_log = nullptr;
};

} // namespace kx
