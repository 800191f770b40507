#include "kxjournal/GridModel.h"

#include "kxjournal/EditCycle.h"

#include <QDate>
#include <algorithm>

namespace kx {

using detail::GridColumn;
using detail::GridRow;

namespace {

bool isNumericType(int type)
{
    return type == GridModel::TypeLong || type == GridModel::TypeDouble || type == GridModel::TypeCurrency;
}

// Amounts in cells are plain text; a formatted copy ("1,234.50") or a two-line
// total reads by its first line.
QStringView firstLine(const QString &text)
{
    const int nl = int(text.indexOf(QLatin1Char('\n')));
    return nl < 0 ? QStringView(text) : QStringView(text).left(nl);
}

} // namespace

GridModel::GridModel(QObject *parent)
    : QAbstractTableModel(parent), m_editCycle(new EditCycle(this))
{
    m_rows.resize(std::size_t(m_fixedRows));
    m_cols.resize(std::size_t(m_fixedCols));
    for (auto &r : m_rows)
        resizeRowCells(r);
}

GridModel::~GridModel() = default;

int GridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows() - m_fixedRows;
}

int GridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : cols() - m_fixedCols;
}

QModelIndex GridModel::indexAt(int row, int col) const
{
    if (!isDataRow(row) || !isDataCol(col))
        return {};
    return index(row - m_fixedRows, col - m_fixedCols);
}

QVariant GridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.model() != this)
        return {};
    const int r = gridRow(index);
    const int c = gridCol(index);
    if (!isCell(r, c))
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return displayText(r, c);
    case Qt::EditRole:
        return text(r, c);
    case Qt::ForegroundRole: {
        const QColor fc = cellForeColor(r, c);
        return fc.isValid() ? QVariant(fc) : QVariant();
    }
    case Qt::BackgroundRole: {
        const QColor bc = cellBackColor(r, c);
        return bc.isValid() ? QVariant(bc) : QVariant();
    }
    case Qt::FontRole:
        return fontFor(r, c);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(int(cellAlignment(r, c)));
    case CellDataRole:
        return cellData(r, c);
    case ComboListRole:
        return colComboList(c);
    case NumericValueRole:
        return value(r, c);
    default:
        return {};
    }
}

QVariant GridModel::displayText(int row, int col) const
{
    const QString &t = m_rows[std::size_t(row)].cells[std::size_t(col)];
    const GridColumn &column = m_cols[std::size_t(col)];
    if (t.isEmpty() || column.format.isEmpty())
        return t;
    if (isNumericType(column.dataType)) {
        // Two-line totals are formatted line by line.
        const QStringList lines = t.split(QLatin1Char('\n'));
        QStringList shown;
        shown.reserve(lines.size());
        for (const QString &line : lines) {
            const Result<Currency> v = Currency::fromText(line);
            shown << (v.ok() && !line.trimmed().isEmpty() ? v.value().format(column.format) : line);
        }
        return shown.join(QLatin1Char('\n'));
    }
    if (column.dataType == TypeDate) {
        const QDate d = QDate::fromString(t, Qt::ISODate);
        if (d.isValid())
            return d.toString(column.format);
    }
    return t;
}

bool GridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || index.model() != this)
        return false;
    if (role == Qt::EditRole || role == Qt::DisplayRole) {
        setText(gridRow(index), gridCol(index), value.toString());
        return true;
    }
    if (role == CellDataRole) {
        setCellData(gridRow(index), gridCol(index), value);
        return true;
    }
    return false;
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const int r = orientation == Qt::Horizontal ? 0 : section + m_fixedRows;
    const int c = orientation == Qt::Horizontal ? section + m_fixedCols : 0;
    if (!isCell(r, c))
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return text(r, c);
    case Qt::FontRole:
        return fontFor(r, c);
    case Qt::ForegroundRole: {
        const QColor fc = cellForeColor(r, c);
        return fc.isValid() ? QVariant(fc) : QVariant();
    }
    case Qt::TextAlignmentRole:
        return orientation == Qt::Horizontal ? QVariant::fromValue(int(Qt::AlignCenter)) : QVariant();
    default:
        return {};
    }
}

Qt::ItemFlags GridModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (m_editable)
        f |= Qt::ItemIsEditable;
    return f;
}

void GridModel::resizeRowCells(GridRow &row) const
{
    row.cells.resize(m_cols.size());
    if (row.extra) {
        if (!row.extra->styles.empty())
            row.extra->styles.resize(m_cols.size());
        if (!row.extra->data.empty())
            row.extra->data.resize(m_cols.size());
    }
}

void GridModel::setRows(int n)
{
    n = std::max(n, m_fixedRows);
    const int old = rows();
    if (n == old)
        return;
    m_rowsShifted = true;
    if (n > old) {
        beginInsertRows({}, old - m_fixedRows, n - m_fixedRows - 1);
        m_rows.resize(std::size_t(n));
        for (int r = old; r < n; ++r)
            resizeRowCells(m_rows[std::size_t(r)]);
        endInsertRows();
    } else {
        beginRemoveRows({}, n - m_fixedRows, old - m_fixedRows - 1);
        m_rows.resize(std::size_t(n));
        endRemoveRows();
    }
    clampCursor();
}

void GridModel::setCols(int n)
{
    n = std::max(n, m_fixedCols);
    const int old = cols();
    if (n == old)
        return;
    if (n > old)
        beginInsertColumns({}, old - m_fixedCols, n - m_fixedCols - 1);
    else
        beginRemoveColumns({}, n - m_fixedCols, old - m_fixedCols - 1);
    m_cols.resize(std::size_t(n));
    for (auto &r : m_rows)
        resizeRowCells(r);
    m_keyIndexValid = false;
    if (n > old)
        endInsertColumns();
    else
        endRemoveColumns();
    clampCursor();
}

void GridModel::rebuildKeyIndex() const
{
    m_keyIndex.clear();
    for (int c = int(m_cols.size()) - 1; c >= 0; --c) {
        const QString &k = m_cols[std::size_t(c)].key;
        if (k.isEmpty())
            continue;
        m_keyIndex.insert(k, c);
        m_keyIndex.insert(QLatin1Char('\x01') + k.toLower(), c);
    }
    m_keyIndexValid = true;
}

int GridModel::colIndex(const QString &key) const
{
    if (key.isEmpty())
        return -1;
    if (!m_keyIndexValid)
        rebuildKeyIndex();
    auto it = m_keyIndex.constFind(key);
    if (it != m_keyIndex.constEnd())
        return it.value();
    it = m_keyIndex.constFind(QLatin1Char('\x01') + key.toLower());
    return it != m_keyIndex.constEnd() ? it.value() : -1;
}

QString GridModel::colKey(int col) const
{
    return col >= 0 && col < cols() ? m_cols[std::size_t(col)].key : QString();
}

void GridModel::setColKey(int col, const QString &key)
{
    if (col < 0 || col >= cols())
        return;
    m_cols[std::size_t(col)].key = key;
    m_keyIndexValid = false;
}

QString GridModel::text(int row, int col) const
{
    return isCell(row, col) ? m_rows[std::size_t(row)].cells[std::size_t(col)] : QString();
}

const QString &GridModel::textRef(int row, int col) const
{
    static const QString empty;
    return isCell(row, col) ? m_rows[std::size_t(row)].cells[std::size_t(col)] : empty;
}

void GridModel::setText(int row, int col, const QString &text)
{
    if (!isCell(row, col))
        return;
    QString &cell = m_rows[std::size_t(row)].cells[std::size_t(col)];
    if (cell == text)
        return;
    cell = text;
    m_rows[std::size_t(row)].touched = true;
    notifyCells(row, col, row, col);
}

double GridModel::value(int row, int col) const
{
    if (!isCell(row, col))
        return 0.0;
    const QStringView t = firstLine(m_rows[std::size_t(row)].cells[std::size_t(col)]);
    if (t.isEmpty())
        return 0.0;
    bool ok = false;
    const double v = t.toDouble(&ok);
    if (ok)
        return v;
    const Result<Currency> a = Currency::fromText(t);
    return a.ok() ? a.value().toDouble() : 0.0;
}

Currency GridModel::amount(int row, int col) const
{
    if (!isCell(row, col))
        return {};
    return Currency::fromText(firstLine(m_rows[std::size_t(row)].cells[std::size_t(col)])).valueOr(Currency());
}

QVariant GridModel::cellData(int row, int col) const
{
    if (!isCell(row, col))
        return {};
    const auto &extra = m_rows[std::size_t(row)].extra;
    return extra && !extra->data.empty() ? extra->data[std::size_t(col)] : QVariant();
}

void GridModel::setCellData(int row, int col, const QVariant &value)
{
    if (!isCell(row, col))
        return;
    auto &extra = m_rows[std::size_t(row)].extra;
    if (!extra) {
        if (!value.isValid())
            return;
        extra = std::make_unique<detail::RowExtra>();
    }
    if (extra->data.empty())
        extra->data.resize(m_cols.size());
    extra->data[std::size_t(col)] = value;
    m_rows[std::size_t(row)].touched = true;
}

QVariant GridModel::rowData(int row) const
{
    return row >= 0 && row < rows() ? m_rows[std::size_t(row)].data : QVariant();
}

void GridModel::setRowData(int row, const QVariant &value)
{
    if (row >= 0 && row < rows())
        m_rows[std::size_t(row)].data = value;
}

bool GridModel::isSubtotal(int row) const
{
    return row >= 0 && row < rows() && m_rows[std::size_t(row)].subtotal;
}

void GridModel::setSubtotal(int row, bool on)
{
    if (row >= 0 && row < rows())
        m_rows[std::size_t(row)].subtotal = on;
}

int GridModel::outlineLevel(int row) const
{
    return row >= 0 && row < rows() ? m_rows[std::size_t(row)].outline : 0;
}

void GridModel::setOutlineLevel(int row, int level)
{
    if (row >= 0 && row < rows())
        m_rows[std::size_t(row)].outline = level;
}

bool GridModel::isRowHidden(int row) const
{
    return row >= 0 && row < rows() && m_rows[std::size_t(row)].hidden;
}

void GridModel::setRowHidden(int row, bool hidden)
{
    if (row < 0 || row >= rows() || m_rows[std::size_t(row)].hidden == hidden)
        return;
    m_rows[std::size_t(row)].hidden = hidden;
    notifyRowLayout(row);
}

int GridModel::rowHeight(int row) const
{
    int h = row >= 0 && row < rows() && m_rows[std::size_t(row)].height >= 0 ? m_rows[std::size_t(row)].height
                                                                             : m_defaultRowHeight;
    if (m_rowHeightMax > 0)
        h = std::min(h, m_rowHeightMax);
    return std::max(h, m_rowHeightMin);
}

void GridModel::setRowHeight(int row, int height)
{
    if (row < 0 || row >= rows())
        return;
    m_rows[std::size_t(row)].height = height < 0 ? -1 : height;
    notifyRowLayout(row);
}

void GridModel::setDefaultRowHeight(int height)
{
    m_defaultRowHeight = std::max(1, height);
    notifyRowLayout(-1);
}

void GridModel::setRowHeightMin(int height)
{
    m_rowHeightMin = std::max(0, height);
    notifyRowLayout(-1);
}

void GridModel::setRowHeightMax(int height)
{
    m_rowHeightMax = std::max(0, height);
    notifyRowLayout(-1);
}

bool GridModel::isRowTouched(int row) const
{
    return row >= 0 && row < rows() && m_rows[std::size_t(row)].touched;
}

void GridModel::markRowTouched(int row)
{
    if (row >= 0 && row < rows())
        m_rows[std::size_t(row)].touched = true;
}

void GridModel::markRowsClean()
{
    for (auto &r : m_rows)
        r.touched = false;
    m_rowsShifted = false;
}

void GridModel::insertRowAt(int row)
{
    m_rowsShifted = true;
    row = std::clamp(row, m_fixedRows, rows());
    beginInsertRows({}, row - m_fixedRows, row - m_fixedRows);
    m_rows.emplace(m_rows.begin() + row);
    resizeRowCells(m_rows[std::size_t(row)]);
    endInsertRows();
    if (m_cursorRow >= row)
        ++m_cursorRow;
    clampCursor();
}

void GridModel::removeRowAt(int row)
{
    m_rowsShifted = true;
    if (!isDataRow(row))
        return;
    beginRemoveRows({}, row - m_fixedRows, row - m_fixedRows);
    m_rows.erase(m_rows.begin() + row);
    endRemoveRows();
    if (m_cursorRow > row)
        --m_cursorRow;
    clampCursor();
}

void GridModel::moveRowTo(int from, int to)
{
    m_rowsShifted = true;
    if (!isDataRow(from) || !isDataRow(to) || from == to)
        return;
    // Qt counts the destination before the move; the grid counts it after.
    const int dest = (to > from ? to + 1 : to) - m_fixedRows;
    beginMoveRows({}, from - m_fixedRows, from - m_fixedRows, {}, dest);
    if (from < to)
        std::rotate(m_rows.begin() + from, m_rows.begin() + from + 1, m_rows.begin() + to + 1);
    else
        std::rotate(m_rows.begin() + to, m_rows.begin() + from, m_rows.begin() + from + 1);
    endMoveRows();
    if (m_cursorRow == from)
        m_cursorRow = to;
    else if (from < to && m_cursorRow > from && m_cursorRow <= to)
        --m_cursorRow;
    else if (to < from && m_cursorRow >= to && m_cursorRow < from)
        ++m_cursorRow;
}

void GridModel::addItem(const QString &text, int at)
{
    const int row = at < 0 ? rows() : std::clamp(at, m_fixedRows, rows());
    const QStringList parts = text.split(QLatin1Char('\t'));
    if (parts.size() > cols())
        setCols(int(parts.size()));
    insertRowAt(row);
    std::vector<QString> &cells = m_rows[std::size_t(row)].cells;
    for (int c = 0; c < int(parts.size()); ++c)
        cells[std::size_t(c)] = parts.at(c);
    notifyCells(row, 0, row, cols() - 1);
}

void GridModel::loadArray(CellArray array, int firstRow, int firstCol)
{
    firstRow = firstRow < 0 ? m_fixedRows : std::max(firstRow, m_fixedRows);
    firstCol = firstCol < 0 ? m_fixedCols : firstCol;
    firstRow = std::min(firstRow, rows());
    beginResetModel();
    m_rowsShifted = true;
    if (firstCol + array.cols() > cols()) {
        m_cols.resize(std::size_t(firstCol + array.cols()));
        for (auto &r : m_rows)
            resizeRowCells(r);
        m_keyIndexValid = false;
    }
    m_rows.resize(std::size_t(firstRow));
    m_rows.resize(std::size_t(firstRow + array.rows()));
    std::vector<QString> taken;
    for (int r = 0; r < array.rows(); ++r) {
        GridRow &row = m_rows[std::size_t(firstRow + r)];
        row.touched = false;
        if (firstCol == 0 && array.cols() == cols()) {
            array.takeRow(r, row.cells);
        } else {
            resizeRowCells(row);
            array.takeRow(r, taken);
            std::move(taken.begin(), taken.end(), row.cells.begin() + firstCol);
        }
    }
    endResetModel();
    clampCursor();
    notifyRowLayout(-1);
}

void GridModel::setFont(const QFont &font)
{
    m_font = font;
    m_fontSet = true;
    notifyCells(0, 0, rows() - 1, cols() - 1);
}

void GridModel::setRedraw(bool on)
{
    if (m_redraw == on)
        return;
    m_redraw = on;
    if (!on)
        return;
    if (rows() > m_fixedRows && cols() > m_fixedCols)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    if (cols() > m_fixedCols)
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    if (rows() > m_fixedRows)
        Q_EMIT headerDataChanged(Qt::Vertical, 0, rowCount() - 1);
    Q_EMIT rowLayoutChanged(-1);
    Q_EMIT colLayoutChanged(-1);
}

void GridModel::notifyCells(int r1, int c1, int r2, int c2)
{
    if (!m_redraw)
        return;
    if (r1 < m_fixedRows || c1 < m_fixedCols) {
        if (r1 < m_fixedRows && cols() > m_fixedCols)
            Q_EMIT headerDataChanged(Qt::Horizontal, std::max(c1 - m_fixedCols, 0),
                                   std::max(c2 - m_fixedCols, 0));
        if (c1 < m_fixedCols && rows() > m_fixedRows)
            Q_EMIT headerDataChanged(Qt::Vertical, std::max(r1 - m_fixedRows, 0), std::max(r2 - m_fixedRows, 0));
    }
    r1 = std::max(r1, m_fixedRows);
    c1 = std::max(c1, m_fixedCols);
    r2 = std::min(r2, rows() - 1);
    c2 = std::min(c2, cols() - 1);
    if (r1 <= r2 && c1 <= c2)
        Q_EMIT dataChanged(indexAt(r1, c1), indexAt(r2, c2));
}

void GridModel::notifyRowLayout(int row)
{
    if (m_redraw)
        Q_EMIT rowLayoutChanged(row);
}

void GridModel::notifyColLayout(int col)
{
    if (m_redraw)
        Q_EMIT colLayoutChanged(col);
}

void GridModel::clampCursor()
{
    const int oldRow = m_cursorRow;
    const int oldCol = m_cursorCol;
    if (rows() <= m_fixedRows)
        m_cursorRow = -1;
    else
        m_cursorRow = std::clamp(m_cursorRow, m_fixedRows, rows() - 1);
    m_cursorCol = cols() <= m_fixedCols ? m_fixedCols : std::clamp(m_cursorCol, m_fixedCols, cols() - 1);
    const bool selValid = m_selRow1 >= m_fixedRows && m_selRow2 < rows() && m_selCol2 < cols();
    if (!selValid || oldRow != m_cursorRow || oldCol != m_cursorCol) {
        m_selRow1 = m_selRow2 = m_cursorRow;
        m_selCol1 = m_selCol2 = m_cursorCol;
    }
    if (oldRow != m_cursorRow || oldCol != m_cursorCol)
        Q_EMIT cursorChanged(m_cursorRow, m_cursorCol);
}

void GridModel::setCursor(int row, int col)
{
    if (!isDataRow(row) || !isDataCol(col))
        return;
    const bool moved = row != m_cursorRow || col != m_cursorCol;
    if (moved)
        Q_EMIT leaveCell(m_cursorRow, m_cursorCol);
    m_cursorRow = row;
    m_cursorCol = col;
    const bool selMoved = m_selRow1 != row || m_selRow2 != row || m_selCol1 != col || m_selCol2 != col;
    m_selRow1 = m_selRow2 = row;
    m_selCol1 = m_selCol2 = col;
    if (moved)
        Q_EMIT cursorChanged(row, col);
    if (selMoved)
        Q_EMIT selectionBlockChanged();
}

void GridModel::selection(int &r1, int &c1, int &r2, int &c2) const
{
    r1 = std::min(m_selRow1, m_selRow2);
    r2 = std::max(m_selRow1, m_selRow2);
    c1 = std::min(m_selCol1, m_selCol2);
    c2 = std::max(m_selCol1, m_selCol2);
}

void GridModel::select(int r1, int c1, int r2, int c2)
{
    setCursor(r1, c1);
    setSelectionBlock(r1, c1, r2, c2);
}

void GridModel::setSelectionBlock(int r1, int c1, int r2, int c2)
{
    if (!isDataRow(r1) || !isDataRow(r2) || !isDataCol(c1) || !isDataCol(c2))
        return;
    if (m_selRow1 == r1 && m_selCol1 == c1 && m_selRow2 == r2 && m_selCol2 == c2)
        return;
    m_selRow1 = r1;
    m_selCol1 = c1;
    m_selRow2 = r2;
    m_selCol2 = c2;
    Q_EMIT selectionBlockChanged();
}

} // namespace kx
