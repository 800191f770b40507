#include "kxjournal/GridModel.h"
#include "grid/Sheet.h"

#include "grid/GridModelPrivate.h"
#include "kxjournal/EditCycle.h"

#include <QDate>
#include <algorithm>

namespace kx {

namespace {

bool isNumericType(int type)
{
    return type == GridModel::TypeLong || type == GridModel::TypeDouble || type == GridModel::TypeCurrency;
}

} // namespace

GridModel::GridModel(QObject *parent) : QAbstractTableModel(parent), d(std::make_unique<GridModelPrivate>())
{
    d->resizeCols(d->fixedCols);
    d->resizeRows(d->fixedRows);
    d->editCycle = new EditCycle(this);
    d->selection = new QItemSelectionModel(this, this);
    connect(d->selection, &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current, const QModelIndex &previous) {
                if (previous.isValid() && previous != current)
                    Q_EMIT leaveCell(gridRow(previous), gridCol(previous));
                if (current.isValid())
                    d->lastCol = gridCol(current);
                Q_EMIT cursorChanged(row(), col());
            });
    connect(d->selection, &QItemSelectionModel::selectionChanged, this, [this] { Q_EMIT selectionBlockChanged(); });
}

GridModel::~GridModel()
{
    // The selection model and the edit cycle are children; they go before d.
    delete d->selection;
    delete d->editCycle;
}

int GridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows() - d->fixedRows;
}

int GridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : cols() - d->fixedCols;
}

QModelIndex GridModel::indexAt(int row, int col) const
{
    if (!isDataRow(row) || !isDataCol(col))
        return {};
    return index(row - d->fixedRows, col - d->fixedCols);
}

int GridModel::rows() const { return d->store.rows(); }
int GridModel::cols() const { return d->store.cols(); }
int GridModel::fixedRows() const { return d->fixedRows; }
int GridModel::fixedCols() const { return d->fixedCols; }
int Sheet::defaultRowHeight() const { return d->defaultRowHeight; }
int GridModel::rowHeightMin() const { return d->rowHeightMin; }
int GridModel::rowHeightMax() const { return d->rowHeightMax; }
bool Sheet::rowsShiftedSinceClean() const { return d->rowsShifted; }
QString GridModel::tag() const { return d->tag; }
void GridModel::setTag(const QString &tag) { d->tag = tag; }
bool GridModel::redraw() const { return d->redraw; }
bool GridModel::editable() const { return d->editable; }
void Sheet::setEditable(bool on) { d->editable = on; }
QFont GridModel::font() const { return d->font; }
EditCycle *GridModel::editCycle() const { return d->editCycle; }
QItemSelectionModel *GridModel::selectionModel() const { return d->selection; }
bool GridModel::uniformRows() const { return d->store.irregularRows() == 0; }
std::size_t Sheet::storeBytes() const { return d->store.overheadBytes(); }

QVariant GridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.model() != this)
        return {};
    const int r = gridRow(index);
    const int c = gridCol(index);
    if (!d->isCell(r, c))
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
    const GridColumns::Column &column = d->columns.at(col);
    const Cell cell = d->store.cell(row, col);
    if (cell.kind() == Cell::Empty || column.format.isEmpty())
        return text(row, col);
    if (isNumericType(column.dataType)) {
        if (cell.kind() == Cell::Number || cell.kind() == Cell::Amount)
            return cell.typedAmount().format(column.format);
        if (cell.kind() != Cell::Text)
            return text(row, col);
        // Two-line totals are formatted line by line.
        const QStringList lines = text(row, col).split(QLatin1Char('\n'));
        QStringList shown;
        shown.reserve(lines.size());
        for (const QString &line : lines) {
            const Result<Currency> v = Currency::fromText(line);
            shown << (v.ok() && !line.trimmed().isEmpty() ? v.value().format(column.format) : line);
        }
        return shown.join(QLatin1Char('\n'));
    }
    if (column.dataType == TypeDate && cell.kind() == Cell::Day)
        return QDate::fromJulianDay(cell.payload()).toString(column.format);
    return text(row, col);
}

bool GridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || index.model() != this)
        return false;
    const int r = gridRow(index);
    const int c = gridCol(index);
    if (role == Qt::EditRole || role == Qt::DisplayRole) {
        setText(r, c, value.toString());
        return true;
    }
    if (role == CellDataRole) {
        setCellData(r, c, value);
        notifyCells(r, c, r, c);
        return true;
    }
    return false;
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const int r = orientation == Qt::Horizontal ? 0 : section + d->fixedRows;
    const int c = orientation == Qt::Horizontal ? section + d->fixedCols : 0;
    if (!d->isCell(r, c))
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
    case Qt::BackgroundRole:
        // The row being dragged wears a yellow marker on its header.
        return orientation == Qt::Vertical && r == d->dragMarkRow ? QVariant(QColor(Qt::yellow)) : QVariant();
    default:
        return {};
    }
}

int Sheet::dragMarkRow() const
{
    return d->dragMarkRow;
}

void Sheet::setDragMarkRow(int row)
{
    const int old = d->dragMarkRow;
    d->dragMarkRow = isDataRow(row) ? row : -1;
    for (int r : {old, d->dragMarkRow})
        if (isDataRow(r))
            Q_EMIT headerDataChanged(Qt::Vertical, r - d->fixedRows, r - d->fixedRows);
}

Qt::ItemFlags GridModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (d->editable)
        f |= Qt::ItemIsEditable;
    return f;
}

void GridModel::setRows(int n)
{
    n = std::max(n, d->fixedRows);
    const int old = rows();
    if (n == old)
        return;
    // Rows cut off while recording are kept in the record with all they
    // held, except when a revert removes rows it had emptied itself.
    if (d->log && n < old && !d->reverting) {
        removeRowsAt(n, old - n);
        return;
    }
    d->rowsShifted = true;
    ++d->revision;
    if (d->log)
        d->log->rowCount(old);
    if (n > old) {
        beginInsertRows({}, old - d->fixedRows, n - d->fixedRows - 1);
        d->resizeRows(n);
        endInsertRows();
    } else {
        beginRemoveRows({}, n - d->fixedRows, old - d->fixedRows - 1);
        d->resizeRows(n);
        endRemoveRows();
    }
    restoreCursor(row(), col());
}

void GridModel::setCols(int n)
{
    n = std::max(n, d->fixedCols);
    const int old = cols();
    if (n == old)
        return;
    d->unrecordable();
    if (n > old)
        beginInsertColumns({}, old - d->fixedCols, n - d->fixedCols - 1);
    else
        beginRemoveColumns({}, n - d->fixedCols, old - d->fixedCols - 1);
    d->resizeCols(n);
    if (n > old)
        endInsertColumns();
    else
        endRemoveColumns();
    restoreCursor(row(), col());
}

int GridModel::colIndex(const QString &key) const
{
    return d->columns.indexOf(key);
}

QString GridModel::colKey(int col) const
{
    return d->columns.contains(col) ? d->columns.at(col).key : QString();
}

void GridModel::setColKey(int col, const QString &key)
{
    if (d->columns.contains(col))
        d->columns.setKey(col, key);
}

QString GridModel::text(int row, int col) const
{
    return d->store.text(row, col);
}

void GridModel::setText(int row, int col, const QString &text)
{
    if (d->store.setText(row, col, text))
        notifyCells(row, col, row, col);
}

double GridModel::value(int row, int col) const
{
    const Cell cell = d->store.cell(row, col);
    if (cell.kind() == Cell::Number || cell.kind() == Cell::Amount)
        return cell.typedAmount().toDouble();
    if (cell.kind() != Cell::Text)
        return 0.0;
    const QString t = text(row, col);
    const qsizetype nl = t.indexOf(QLatin1Char('\n'));
    const QStringView first = nl < 0 ? QStringView(t) : QStringView(t).left(nl);
    bool ok = false;
    const double v = first.toDouble(&ok);
    if (ok)
        return v;
    const Result<Currency> a = Currency::fromText(first);
    return a.ok() ? a.value().toDouble() : 0.0;
}

Currency GridModel::amount(int row, int col) const
{
    return d->store.amount(row, col);
}

void Sheet::setAmount(int row, int col, Currency value)
{
    bool fits = false;
    const Cell cell = Cell::amount(value, &fits);
    if (!fits)
        setText(row, col, value.toString());
    else if (d->store.setTyped(row, col, cell))
        notifyCells(row, col, row, col);
}

void Sheet::setDerivedAmount(int row, int col, Currency value)
{
    bool fits = false;
    const Cell cell = Cell::amount(value, &fits);
    // A figure too wide for a cell is kept as its text, the way any write does.
    if (!fits)
        setText(row, col, value.toString());
    else
        d->store.setDerived(row, col, cell);
}

void Sheet::clearDerived(int row, int col)
{
    if (d->store.cell(row, col).kind() == Cell::Text)
        setText(row, col, QString());
    else
        d->store.setDerived(row, col, Cell());
}

void Sheet::announceDerived(int r1, int c1, int r2, int c2)
{
    // A first pass over a book writes a direction into every row: that
    // column is one value again, kept as such.
    d->store.compactGrown();
    if (!d->redraw)
        return;
    r1 = std::max(r1, d->fixedRows);
    c1 = std::max(c1, d->fixedCols);
    r2 = std::min(r2, rows() - 1);
    c2 = std::min(c2, cols() - 1);
    if (r1 <= r2 && c1 <= c2)
        Q_EMIT dataChanged(indexAt(r1, c1), indexAt(r2, c2));
}

void Sheet::setDerivedPeak(int col, int row)
{
    if (d->columns.contains(col))
        d->derivedPeaks.insert(d->columns.at(col).key, row);
}

int Sheet::derivedPeak(int col) const
{
    if (!d->columns.contains(col))
        return -1;
    const int row = d->derivedPeaks.value(d->columns.at(col).key, -1);
    return row < rows() ? row : -1;
}

Cell Sheet::cell(int row, int col) const
{
    return d->store.cell(row, col);
}

const CellStore &Sheet::cellStore() const
{
    return d->store;
}

qint64 Sheet::number(int row, int col) const
{
    return d->store.number(row, col);
}

void Sheet::setNumber(int row, int col, qint64 value)
{
    if (value >= Cell::Limit || value <= -Cell::Limit)
        setText(row, col, QString::number(value));
    else if (d->store.setTyped(row, col, Cell::number(value)))
        notifyCells(row, col, row, col);
}

QDate Sheet::date(int row, int col) const
{
    return d->store.date(row, col);
}

void Sheet::setDate(int row, int col, const QDate &date)
{
    if (d->store.setTyped(row, col, Cell::day(date)))
        notifyCells(row, col, row, col);
}

bool GridModel::isEmpty(int row, int col) const
{
    return d->store.cell(row, col).kind() == Cell::Empty;
}

bool Sheet::holdsAmount(int row, int col) const
{
    const Cell cell = d->store.cell(row, col);
    if (cell.kind() == Cell::Empty)
        return true;
    return (cell.kind() == Cell::Number || cell.kind() == Cell::Amount) && cell.typedAmount().isValid();
}

quint64 Sheet::textHash(int row, int col) const
{
    return d->store.textHash(row, col);
}

quint64 Sheet::textsHash(int row, const int *cols, int count) const
{
    return d->store.textsHash(row, cols, count);
}

QVariant GridModel::cellData(int row, int col) const
{
    return d->store.cellData(row, col);
}

void GridModel::setCellData(int row, int col, const QVariant &value)
{
    if (!d->isCell(row, col))
        return;
    const QVariant before = d->store.cellData(row, col);
    if (before == value && before.typeId() == value.typeId())
        return;
    ++d->revision;
    if (d->log)
        d->log->data(row, col, before);
    d->store.setCellData(row, col, value);
}

void Sheet::setFont(const QFont &font)
{
    d->font = font;
    d->fontSet = true;
    notifyCells(0, 0, rows() - 1, cols() - 1);
}

void GridModel::setRedraw(bool on)
{
    if (d->redraw == on)
        return;
    d->redraw = on;
    if (!on)
        return;
    if (rows() > d->fixedRows && cols() > d->fixedCols)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    if (cols() > d->fixedCols)
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    if (rows() > d->fixedRows)
        Q_EMIT headerDataChanged(Qt::Vertical, 0, rowCount() - 1);
    Q_EMIT rowLayoutChanged(-1);
    Q_EMIT colLayoutChanged(-1);
}

void GridModel::notifyCells(int r1, int c1, int r2, int c2)
{
    ++d->revision;
    if (!d->redraw)
        return;
    const int fr = d->fixedRows;
    const int fc = d->fixedCols;
    if (r1 < fr || c1 < fc) {
        if (r1 < fr && cols() > fc)
            Q_EMIT headerDataChanged(Qt::Horizontal, std::max(c1 - fc, 0), std::max(c2 - fc, 0));
        if (c1 < fc && rows() > fr)
            Q_EMIT headerDataChanged(Qt::Vertical, std::max(r1 - fr, 0), std::max(r2 - fr, 0));
    }
    r1 = std::max(r1, fr);
    c1 = std::max(c1, fc);
    r2 = std::min(r2, rows() - 1);
    c2 = std::min(c2, cols() - 1);
    if (r1 <= r2 && c1 <= c2)
        Q_EMIT dataChanged(indexAt(r1, c1), indexAt(r2, c2));
}

void GridModel::notifyRowLayout(int row)
{
    if (d->redraw)
        Q_EMIT rowLayoutChanged(row);
}

void GridModel::notifyColLayout(int col)
{
    if (d->redraw)
        Q_EMIT colLayoutChanged(col);
}

} // namespace kx
