// GridModel: per-cell looks and per-column settings.
#include "kxjournal/GridModel.h"
#include "grid/Sheet.h"

#include "grid/GridModelPrivate.h"

#include <algorithm>

namespace kx {

using CellStyle = GridStyles::CellStyle;

template <typename Fn>
void GridModel::forRange(int r1, int c1, int r2, int c2, Fn fn)
{
    if (r1 > r2)
        std::swap(r1, r2);
    if (c1 > c2)
        std::swap(c1, c2);
    r1 = std::max(r1, 0);
    c1 = std::max(c1, 0);
    r2 = std::min(r2, rows() - 1);
    c2 = std::min(c2, cols() - 1);
    if (r1 > r2 || c1 > c2)
        return;
    for (int r = r1; r <= r2; ++r)
        for (int c = c1; c <= c2; ++c) {
            d->logLook(r, c);
            fn(r, c);
        }
    notifyCells(r1, c1, r2, c2);
}

QColor GridModel::cellForeColor(int row, int col) const
{
    // The marked column's colour follows its derived value, not a look.
    if (col == d->markCol && d->isCell(row, col))
        return d->store.rowFlag(row, CellStore::Marked) ? d->markColor : d->styles.rowFore(row);
    const CellStyle *s = d->styles.at(row, col);
    if (s && (s->flags & CellStyle::HasFore))
        return QColor::fromRgba(s->fore);
    if (d->isCell(row, col) && col >= d->fixedCols)
        return d->styles.rowFore(row);
    return QColor();
}

void Sheet::setDerivedMark(int row, bool on)
{
    d->store.setMarked(row, on);
}

void Sheet::setDerivedMarkColumn(int col, const QColor &color)
{
    d->markCol = col;
    d->markColor = color;
}

QColor Sheet::rowForeColor(int row) const
{
    return d->styles.rowFore(row);
}

void Sheet::setRowForeColor(int row, const QColor &color)
{
    if (row < 0 || row >= rows())
        return;
    if (d->log) {
        // The row's colour replaces its cells' own text colours: note them first.
        for (int c = d->fixedCols; c < cols(); ++c)
            if (d->styles.at(row, c))
                d->logLook(row, c);
        d->log->rowColor(row, d->styles.rowFore(row));
    }
    d->styles.setRowFore(row, color, d->fixedCols);
    notifyCells(row, d->fixedCols, row, cols() - 1);
}

void GridModel::setCellForeColor(int r1, int c1, int r2, int c2, const QColor &color)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (!color.isValid() && !d->styles.at(r, c))
            return;
        CellStyle *s = &d->styles.make(r, c);
        s->fore = color.rgba();
        s->flags = color.isValid() ? (s->flags | CellStyle::HasFore) : (s->flags & ~CellStyle::HasFore);
    });
}

void Sheet::setCellForeColor(int row, int col, const QColor &color)
{
    if (!d->isCell(row, col))
        return;
    const CellStyle *now = d->styles.at(row, col);
    const bool had = now && (now->flags & CellStyle::HasFore);
    if (!color.isValid()) {
        if (!had)
            return;
    } else if (had && now->fore == color.rgba()) {
        return;
    }
    d->logLook(row, col);
    // Clearing a cell's own colour lets its row's colour show again.
    CellStyle *s = &d->styles.make(row, col);
    s->fore = color.rgba();
    s->flags = color.isValid() ? (s->flags | CellStyle::HasFore) : (s->flags & ~CellStyle::HasFore);
    notifyCells(row, col, row, col);
}

QColor GridModel::cellBackColor(int row, int col) const
{
    const CellStyle *s = d->styles.at(row, col);
    return s && (s->flags & CellStyle::HasBack) ? QColor::fromRgba(s->back) : QColor();
}

void GridModel::setCellBackColor(int r1, int c1, int r2, int c2, const QColor &color)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (!color.isValid() && !d->styles.at(r, c))
            return;
        CellStyle *s = &d->styles.make(r, c);
        s->back = color.rgba();
        s->flags = color.isValid() ? (s->flags | CellStyle::HasBack) : (s->flags & ~CellStyle::HasBack);
    });
}

bool GridModel::cellBold(int row, int col) const
{
    const CellStyle *s = d->styles.at(row, col);
    if (s && (s->flags & CellStyle::HasBold))
        return s->flags & CellStyle::Bold;
    return d->font.bold();
}

void GridModel::setCellBold(int r1, int c1, int r2, int c2, bool bold)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        CellStyle *s = &d->styles.make(r, c);
        s->flags |= CellStyle::HasBold;
        s->flags = bold ? (s->flags | CellStyle::Bold) : (s->flags & ~CellStyle::Bold);
    });
}

QString GridModel::cellFontName(int row, int col) const
{
    const CellStyle *s = d->styles.at(row, col);
    if (s && s->fontIndex > 0)
        return d->styles.fontName(s->fontIndex);
    if (isDataRow(row) && d->isCell(row, col) && d->columns.at(col).dataFont > 0)
        return d->styles.fontName(d->columns.at(col).dataFont);
    return d->font.family();
}

void Sheet::setColDataFont(int col, const QString &family)
{
    if (!d->columns.contains(col))
        return;
    d->unrecordable();
    d->columns.edit(col).dataFont = d->styles.fontIndex(family);
    d->styles.dropColumnFont(col);
    notifyCells(d->fixedRows, col, rows() - 1, col);
}

void GridModel::setCellFontName(int r1, int c1, int r2, int c2, const QString &family)
{
    const int idx = d->styles.fontIndex(family);
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (idx == 0 && !d->styles.at(r, c))
            return;
        d->styles.make(r, c).fontIndex = quint16(idx);
    });
}

Qt::Alignment GridModel::cellAlignment(int row, int col) const
{
    const CellStyle *s = d->styles.at(row, col);
    if (s && s->align != 0)
        return Qt::Alignment(s->align);
    return colAlignment(col);
}

void Sheet::setCellAlignment(int r1, int c1, int r2, int c2, Qt::Alignment align)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (align == 0 && !d->styles.at(r, c))
            return;
        d->styles.make(r, c).align = quint16(align);
    });
}

void Sheet::clearCellStyles(int r1, int c1, int r2, int c2)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (d->styles.at(r, c))
            d->styles.make(r, c) = CellStyle();
    });
}

QVariant GridModel::fontFor(int row, int col) const
{
    const CellStyle *s = d->styles.at(row, col);
    const int colFont = isDataRow(row) ? d->columns.at(col).dataFont : 0;
    const bool own = s && (s->fontIndex > 0 || (s->flags & CellStyle::HasBold));
    if (!own && colFont == 0)
        return d->fontSet ? QVariant(d->font) : QVariant();
    QFont f = d->font;
    if (s && s->fontIndex > 0)
        f.setFamilies({d->styles.fontName(s->fontIndex)});
    else if (colFont > 0)
        f.setFamilies({d->styles.fontName(quint16(colFont))});
    if (s && (s->flags & CellStyle::HasBold))
        f.setBold(s->flags & CellStyle::Bold);
    return f;
}

bool GridModel::isColHidden(int col) const
{
    return d->columns.contains(col) && d->columns.at(col).hidden;
}

void GridModel::setColHidden(int col, bool hidden)
{
    if (!d->columns.contains(col) || d->columns.at(col).hidden == hidden)
        return;
    d->columns.edit(col).hidden = hidden;
    notifyColLayout(col);
}

int GridModel::colWidth(int col) const
{
    return d->columns.contains(col) ? d->columns.at(col).width : -1;
}

void GridModel::setColWidth(int col, int width)
{
    if (!d->columns.contains(col))
        return;
    d->columns.edit(col).width = width < 0 ? -1 : width;
    notifyColLayout(col);
}

QString GridModel::colFormat(int col) const
{
    return d->columns.contains(col) ? d->columns.at(col).format : QString();
}

void Sheet::setColFormat(int col, const QString &format)
{
    if (!d->columns.contains(col))
        return;
    d->columns.edit(col).format = format;
    notifyCells(d->fixedRows, col, rows() - 1, col);
}

GridModel::DataType GridModel::colDataType(int col) const
{
    return d->columns.contains(col) ? DataType(d->columns.at(col).dataType) : TypeString;
}

void Sheet::setColDataType(int col, DataType type)
{
    if (!d->columns.contains(col))
        return;
    d->columns.edit(col).dataType = type;
    notifyCells(d->fixedRows, col, rows() - 1, col);
}

Qt::Alignment GridModel::colAlignment(int col) const
{
    if (!d->columns.contains(col))
        return Qt::AlignLeft | Qt::AlignVCenter;
    const auto &c = d->columns.at(col);
    if (c.align != 0)
        return Qt::Alignment(c.align);
    const bool numeric = c.dataType == TypeLong || c.dataType == TypeDouble || c.dataType == TypeCurrency;
    return (numeric ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

void Sheet::setColAlignment(int col, Qt::Alignment align)
{
    if (!d->columns.contains(col))
        return;
    d->columns.edit(col).align = int(align);
    notifyCells(d->fixedRows, col, rows() - 1, col);
}

QString GridModel::colComboList(int col) const
{
    return d->columns.contains(col) ? d->columns.at(col).comboList : QString();
}

void Sheet::setColComboList(int col, const QString &list)
{
    if (d->columns.contains(col))
        d->columns.edit(col).comboList = list;
}

void GridModel::moveColTo(int from, int to)
{
    if (!isDataCol(from) || !isDataCol(to) || from == to)
        return;
    d->unrecordable();
    const int dest = (to > from ? to + 1 : to) - d->fixedCols;
    beginMoveColumns({}, from - d->fixedCols, from - d->fixedCols, {}, dest);
    d->store.moveCol(from, to);
    d->styles.moveCol(from, to);
    d->columns.move(from, to);
    if (d->markCol == from)
        d->markCol = to;
    else if (from < d->markCol && d->markCol <= to)
        --d->markCol;
    else if (to <= d->markCol && d->markCol < from)
        ++d->markCol;
    endMoveColumns();
    notifyColLayout(-1);
}

} // namespace kx
