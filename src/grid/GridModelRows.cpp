// GridModel: rows and their marks, the cursor and the selection.
#include "kxjournal/GridModel.h"
#include "grid/Sheet.h"

#include "grid/GridModelPrivate.h"

#include <algorithm>
#include <climits>

namespace kx {

QVariant GridModel::rowData(int row) const
{
    return d->store.rowData(row);
}

void GridModel::setRowData(int row, const QVariant &value)
{
    if (row < 0 || row >= rows())
        return;
    ++d->revision;
    if (d->log)
        d->log->rowMark(row, d->store.rowData(row));
    d->store.setRowData(row, value);
}

bool GridModel::isSubtotal(int row) const
{
    return d->store.rowFlag(row, CellStore::Subtotal);
}

void Sheet::setSubtotal(int row, bool on)
{
    if (row < 0 || row >= rows() || isSubtotal(row) == on)
        return;
    d->logShape(row);
    d->store.setRowFlag(row, CellStore::Subtotal, on);
}

int GridModel::outlineLevel(int row) const
{
    return d->store.outline(row);
}

void Sheet::setOutlineLevel(int row, int level)
{
    if (row < 0 || row >= rows() || outlineLevel(row) == level)
        return;
    d->logShape(row);
    d->store.setOutline(row, level);
}

bool GridModel::isRowHidden(int row) const
{
    return d->store.rowFlag(row, CellStore::Hidden);
}

void GridModel::setRowHidden(int row, bool hidden)
{
    if (row < 0 || row >= rows() || isRowHidden(row) == hidden)
        return;
    d->logShape(row);
    d->store.setRowFlag(row, CellStore::Hidden, hidden);
    notifyRowLayout(row);
}

int GridModel::rowHeight(int row) const
{
    const int own = d->store.rowHeight(row);
    int h = own >= 0 ? own : d->defaultRowHeight;
    if (d->rowHeightMax > 0)
        h = std::min(h, d->rowHeightMax);
    return std::max(h, d->rowHeightMin);
}

void GridModel::setRowHeight(int row, int height)
{
    if (row < 0 || row >= rows() || d->store.rowHeight(row) == std::max(height, -1))
        return;
    d->logShape(row);
    d->store.setRowHeight(row, height);
    notifyRowLayout(row);
}

void Sheet::setDefaultRowHeight(int height)
{
    d->defaultRowHeight = std::max(1, height);
    notifyRowLayout(-1);
}

void Sheet::setRowHeightMin(int height)
{
    d->rowHeightMin = std::max(0, height);
    notifyRowLayout(-1);
}

void Sheet::setRowHeightMax(int height)
{
    d->rowHeightMax = std::max(0, height);
    notifyRowLayout(-1);
}

bool Sheet::isRowTouched(int row) const
{
    return d->store.rowFlag(row, CellStore::Touched);
}

void Sheet::markRowTouched(int row)
{
    d->store.setRowFlag(row, CellStore::Touched, true);
}

void Sheet::markRowsClean()
{
    d->store.markAllClean();
    d->rowsShifted = false;
}

void Sheet::setCleanTextCols(const QList<int> &cols)
{
    std::vector<bool> kept(std::size_t(std::max(0, this->cols())));
    for (int c : cols)
        if (c >= 0 && std::size_t(c) < kept.size())
            kept[std::size_t(c)] = true;
    d->store.setKeptCols(kept);
}

bool Sheet::knowsCleanText(int row) const
{
    return d->store.knowsClean(row);
}

void Sheet::setCleanText(int row, int col, const QString &text)
{
    d->store.setCleanText(row, col, text);
}

QString Sheet::cleanText(int row, int col) const
{
    return d->store.cleanText(row, col);
}

void GridModel::insertRowsAt(int row, int count)
{
    if (count <= 0)
        return;
    d->rowsShifted = true;
    ++d->revision;
    row = std::clamp(row, d->fixedRows, rows());
    if (d->log)
        d->log->rowsInserted(row, count);
    const int cursorRow = this->row();
    const int cursorCol = col();
    beginInsertRows({}, row - d->fixedRows, row + count - 1 - d->fixedRows);
    d->store.insertRows(row, count);
    // Rows moved under it: the widest figure noted is sought again.
    d->derivedPeaks.clear();
    d->styles.insertRows(row, count);
    endInsertRows();
    restoreCursor(cursorRow >= row ? cursorRow + count : cursorRow, cursorCol);
}

void GridModel::removeRowsAt(int row, int count)
{
    count = std::min(count, rows() - row);
    if (!isDataRow(row) || count <= 0)
        return;
    d->rowsShifted = true;
    ++d->revision;
    if (d->log) {
        GridChangesData::Removed removed;
        removed.cells.reserve(std::size_t(count));
        removed.looks.reserve(std::size_t(count));
        for (int r = row; r < row + count; ++r) {
            removed.cells.push_back(d->store.copyRow(r));
            removed.looks.push_back(d->styles.copyRow(r));
        }
        d->log->rowsRemoved(row, std::move(removed));
    }
    const int cursorRow = this->row();
    const int cursorCol = col();
    beginRemoveRows({}, row - d->fixedRows, row + count - 1 - d->fixedRows);
    d->store.removeRows(row, count);
    // Rows moved under it: the widest figure noted is sought again.
    d->derivedPeaks.clear();
    d->styles.removeRows(row, count);
    endRemoveRows();
    // The cursor stays on its row when that row stays, else where the block was.
    restoreCursor(cursorRow >= row + count ? cursorRow - count : std::min(cursorRow, row), cursorCol);
}

void GridModel::moveRowTo(int from, int to)
{
    if (!isDataRow(from) || !isDataRow(to) || from == to)
        return;
    d->rowsShifted = true;
    ++d->revision;
    if (d->log)
        d->log->rowMoved(from, to);
    // Qt counts the destination before the move; the grid counts it after.
    const int dest = (to > from ? to + 1 : to) - d->fixedRows;
    beginMoveRows({}, from - d->fixedRows, from - d->fixedRows, {}, dest);
    d->store.moveRow(from, to);
    // Rows moved under it: the widest figure noted is sought again.
    d->derivedPeaks.clear();
    d->styles.moveRow(from, to);
    endMoveRows();
}

void GridModel::addItem(const QString &text, int at)
{
    const int row = at < 0 ? rows() : std::clamp(at, d->fixedRows, rows());
    const QStringList parts = text.split(QLatin1Char('\t'));
    if (parts.size() > cols())
        setCols(int(parts.size()));
    insertRowAt(row);
    for (int c = 0; c < int(parts.size()); ++c)
        d->store.setText(row, c, parts.at(c));
    notifyCells(row, 0, row, cols() - 1);
}

void Sheet::loadArray(CellArray array, int firstRow, int firstCol)
{
    d->unrecordable();
    d->derivedPeaks.clear();
    firstRow = firstRow < 0 ? d->fixedRows : std::max(firstRow, d->fixedRows);
    firstCol = firstCol < 0 ? d->fixedCols : firstCol;
    firstRow = std::min(firstRow, rows());
    const int cursorRow = row();
    const int cursorCol = col();
    beginResetModel();
    d->rowsShifted = true;
    d->store.adopt(array, firstRow, firstCol);
    d->styles.resizeRows(firstRow);
    d->styles.resizeCols(d->store.cols());
    d->styles.resizeRows(d->store.rows());
    d->columns.resize(d->store.cols());
    endResetModel();
    restoreCursor(cursorRow, cursorCol);
    notifyRowLayout(-1);
}

int GridModel::row() const
{
    const QModelIndex current = d->selection->currentIndex();
    return current.isValid() ? gridRow(current) : -1;
}

int GridModel::col() const
{
    const QModelIndex current = d->selection->currentIndex();
    if (current.isValid())
        return gridCol(current);
    return cols() <= d->fixedCols ? d->fixedCols : std::clamp(d->lastCol, d->fixedCols, cols() - 1);
}

void GridModel::restoreCursor(int row, int col)
{
    // A reset or a removal may leave the cursor nowhere; it belongs on a
    // data cell whenever there is one.
    if (rows() <= d->fixedRows || cols() <= d->fixedCols)
        return;
    row = std::clamp(row < 0 ? d->fixedRows : row, d->fixedRows, rows() - 1);
    col = std::clamp(col, d->fixedCols, cols() - 1);
    if (this->row() != row || this->col() != col || !d->selection->currentIndex().isValid())
        setCursor(row, col);
}

void GridModel::setCursor(int row, int col)
{
    if (!isDataRow(row) || !isDataCol(col))
        return;
    d->selection->setCurrentIndex(indexAt(row, col), QItemSelectionModel::ClearAndSelect);
}

void GridModel::selection(int &r1, int &c1, int &r2, int &c2) const
{
    const QItemSelection all = d->selection->selection();
    if (all.isEmpty()) {
        r1 = r2 = row();
        c1 = c2 = col();
        return;
    }
    int top = INT_MAX, left = INT_MAX, bottom = -1, right = -1;
    for (const QItemSelectionRange &range : all) {
        top = std::min(top, range.top());
        left = std::min(left, range.left());
        bottom = std::max(bottom, range.bottom());
        right = std::max(right, range.right());
    }
    r1 = top + d->fixedRows;
    r2 = bottom + d->fixedRows;
    c1 = left + d->fixedCols;
    c2 = right + d->fixedCols;
}

void GridModel::select(int r1, int c1, int r2, int c2)
{
    if (!isDataRow(r1) || !isDataRow(r2) || !isDataCol(c1) || !isDataCol(c2))
        return;
    d->selection->setCurrentIndex(indexAt(r1, c1), QItemSelectionModel::NoUpdate);
    const QItemSelection block(indexAt(std::min(r1, r2), std::min(c1, c2)), indexAt(std::max(r1, r2), std::max(c1, c2)));
    d->selection->select(block, QItemSelectionModel::ClearAndSelect);
}

} // namespace kx
