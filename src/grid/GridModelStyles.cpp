// GridModel: per-cell looks and per-column settings.
#include "kxjournal/GridModel.h"

#include <algorithm>

namespace kx {

using detail::CellStyle;

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
        for (int c = c1; c <= c2; ++c)
            fn(r, c);
    notifyCells(r1, c1, r2, c2);
}

const CellStyle *GridModel::styleAt(int row, int col) const
{
    if (!isCell(row, col))
        return nullptr;
    const auto &extra = m_rows[std::size_t(row)].extra;
    if (!extra || extra->styles.empty())
        return nullptr;
    return &extra->styles[std::size_t(col)];
}

CellStyle *GridModel::styleFor(int row, int col)
{
    auto &extra = m_rows[std::size_t(row)].extra;
    if (!extra)
        extra = std::make_unique<detail::RowExtra>();
    if (extra->styles.empty())
        extra->styles.resize(m_cols.size());
    return &extra->styles[std::size_t(col)];
}

QColor GridModel::cellForeColor(int row, int col) const
{
    const CellStyle *s = styleAt(row, col);
    if (s && (s->flags & CellStyle::HasFore))
        return QColor::fromRgba(s->fore);
    if (isCell(row, col) && col >= m_fixedCols && m_rows[std::size_t(row)].hasFore)
        return QColor::fromRgba(m_rows[std::size_t(row)].fore);
    return QColor();
}

QColor GridModel::rowForeColor(int row) const
{
    return row >= 0 && row < rows() && m_rows[std::size_t(row)].hasFore ? QColor::fromRgba(m_rows[std::size_t(row)].fore)
                                                                         : QColor();
}

void GridModel::setRowForeColor(int row, const QColor &color)
{
    if (row < 0 || row >= rows())
        return;
    detail::GridRow &r = m_rows[std::size_t(row)];
    r.hasFore = color.isValid();
    r.fore = color.isValid() ? color.rgba() : 0;
    if (r.extra && !r.extra->styles.empty())
        for (std::size_t c = std::size_t(m_fixedCols); c < r.extra->styles.size(); ++c)
            r.extra->styles[c].flags &= quint8(~CellStyle::HasFore);
    notifyCells(row, m_fixedCols, row, cols() - 1);
}

void GridModel::setCellForeColor(int r1, int c1, int r2, int c2, const QColor &color)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (!color.isValid() && !styleAt(r, c))
            return;
        CellStyle *s = styleFor(r, c);
        s->fore = color.rgba();
        s->flags = color.isValid() ? (s->flags | CellStyle::HasFore) : (s->flags & ~CellStyle::HasFore);
    });
}

void GridModel::setCellForeColor(int row, int col, const QColor &color)
{
    if (!isCell(row, col))
        return;
    const CellStyle *now = styleAt(row, col);
    const bool had = now && (now->flags & CellStyle::HasFore);
    if (!color.isValid()) {
        if (!had)
            return;
    } else if (had && now->fore == color.rgba()) {
        return;
    }
    // Clearing a cell's own colour lets its row's colour show again.
    CellStyle *s = styleFor(row, col);
    s->fore = color.rgba();
    s->flags = color.isValid() ? (s->flags | CellStyle::HasFore) : (s->flags & ~CellStyle::HasFore);
    notifyCells(row, col, row, col);
}

QColor GridModel::cellBackColor(int row, int col) const
{
    const CellStyle *s = styleAt(row, col);
    return s && (s->flags & CellStyle::HasBack) ? QColor::fromRgba(s->back) : QColor();
}

void GridModel::setCellBackColor(int r1, int c1, int r2, int c2, const QColor &color)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (!color.isValid() && !styleAt(r, c))
            return;
        CellStyle *s = styleFor(r, c);
        s->back = color.rgba();
        s->flags = color.isValid() ? (s->flags | CellStyle::HasBack) : (s->flags & ~CellStyle::HasBack);
    });
}

bool GridModel::cellBold(int row, int col) const
{
    const CellStyle *s = styleAt(row, col);
    if (s && (s->flags & CellStyle::HasBold))
        return s->flags & CellStyle::Bold;
    return m_font.bold();
}

void GridModel::setCellBold(int r1, int c1, int r2, int c2, bool bold)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        CellStyle *s = styleFor(r, c);
        s->flags |= CellStyle::HasBold;
        s->flags = bold ? (s->flags | CellStyle::Bold) : (s->flags & ~CellStyle::Bold);
    });
}

quint16 GridModel::fontIndexOf(const QString &family)
{
    if (family.isEmpty())
        return 0;
    int idx = int(m_fontNames.indexOf(family)) + 1;
    if (idx == 0) {
        m_fontNames << family;
        idx = int(m_fontNames.size());
    }
    return quint16(idx);
}

QString GridModel::cellFontName(int row, int col) const
{
    const CellStyle *s = styleAt(row, col);
    if (s && s->fontIndex > 0)
        return m_fontNames.at(s->fontIndex - 1);
    if (isDataRow(row) && isCell(row, col) && m_cols[std::size_t(col)].dataFont > 0)
        return m_fontNames.at(m_cols[std::size_t(col)].dataFont - 1);
    return m_font.family();
}

void GridModel::setColDataFont(int col, const QString &family)
{
    if (col < 0 || col >= cols())
        return;
    m_cols[std::size_t(col)].dataFont = fontIndexOf(family);
    for (int r = m_fixedRows; r < rows(); ++r) {
        const auto &extra = m_rows[std::size_t(r)].extra;
        if (extra && !extra->styles.empty())
            extra->styles[std::size_t(col)].fontIndex = 0;
    }
    notifyCells(m_fixedRows, col, rows() - 1, col);
}

void GridModel::setCellFontName(int r1, int c1, int r2, int c2, const QString &family)
{
    const int idx = fontIndexOf(family);
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (idx == 0 && !styleAt(r, c))
            return;
        styleFor(r, c)->fontIndex = quint16(idx);
    });
}

Qt::Alignment GridModel::cellAlignment(int row, int col) const
{
    const CellStyle *s = styleAt(row, col);
    if (s && s->align != 0)
        return Qt::Alignment(s->align);
    return colAlignment(col);
}

void GridModel::setCellAlignment(int r1, int c1, int r2, int c2, Qt::Alignment align)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (align == 0 && !styleAt(r, c))
            return;
        styleFor(r, c)->align = quint16(align);
    });
}

void GridModel::clearCellStyles(int r1, int c1, int r2, int c2)
{
    forRange(r1, c1, r2, c2, [&](int r, int c) {
        if (styleAt(r, c))
            *styleFor(r, c) = CellStyle();
    });
}

QVariant GridModel::fontFor(int row, int col) const
{
    const CellStyle *s = styleAt(row, col);
    const int colFont = isDataRow(row) ? m_cols[std::size_t(col)].dataFont : 0;
    const bool own = s && (s->fontIndex > 0 || (s->flags & CellStyle::HasBold));
    if (!own && colFont == 0)
        return m_fontSet ? QVariant(m_font) : QVariant();
    QFont f = m_font;
    if (s && s->fontIndex > 0)
        f.setFamilies({m_fontNames.at(s->fontIndex - 1)});
    else if (colFont > 0)
        f.setFamilies({m_fontNames.at(colFont - 1)});
    if (s && (s->flags & CellStyle::HasBold))
        f.setBold(s->flags & CellStyle::Bold);
    return f;
}

bool GridModel::isColHidden(int col) const
{
    return col >= 0 && col < cols() && m_cols[std::size_t(col)].hidden;
}

void GridModel::setColHidden(int col, bool hidden)
{
    if (col < 0 || col >= cols() || m_cols[std::size_t(col)].hidden == hidden)
        return;
    m_cols[std::size_t(col)].hidden = hidden;
    notifyColLayout(col);
}

int GridModel::colWidth(int col) const
{
    return col >= 0 && col < cols() ? m_cols[std::size_t(col)].width : -1;
}

void GridModel::setColWidth(int col, int width)
{
    if (col < 0 || col >= cols())
        return;
    m_cols[std::size_t(col)].width = width < 0 ? -1 : width;
    notifyColLayout(col);
}

QString GridModel::colFormat(int col) const
{
    return col >= 0 && col < cols() ? m_cols[std::size_t(col)].format : QString();
}

void GridModel::setColFormat(int col, const QString &format)
{
    if (col < 0 || col >= cols())
        return;
    m_cols[std::size_t(col)].format = format;
    notifyCells(m_fixedRows, col, rows() - 1, col);
}

GridModel::DataType GridModel::colDataType(int col) const
{
    return col >= 0 && col < cols() ? DataType(m_cols[std::size_t(col)].dataType) : TypeString;
}

void GridModel::setColDataType(int col, DataType type)
{
    if (col < 0 || col >= cols())
        return;
    m_cols[std::size_t(col)].dataType = type;
    notifyCells(m_fixedRows, col, rows() - 1, col);
}

Qt::Alignment GridModel::colAlignment(int col) const
{
    if (col < 0 || col >= cols())
        return Qt::AlignLeft | Qt::AlignVCenter;
    const auto &c = m_cols[std::size_t(col)];
    if (c.align != 0)
        return Qt::Alignment(c.align);
    const bool numeric = c.dataType == TypeLong || c.dataType == TypeDouble || c.dataType == TypeCurrency;
    return (numeric ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
}

void GridModel::setColAlignment(int col, Qt::Alignment align)
{
    if (col < 0 || col >= cols())
        return;
    m_cols[std::size_t(col)].align = int(align);
    notifyCells(m_fixedRows, col, rows() - 1, col);
}

QString GridModel::colComboList(int col) const
{
    return col >= 0 && col < cols() ? m_cols[std::size_t(col)].comboList : QString();
}

void GridModel::setColComboList(int col, const QString &list)
{
    if (col >= 0 && col < cols())
        m_cols[std::size_t(col)].comboList = list;
}

void GridModel::moveColTo(int from, int to)
{
    if (!isDataCol(from) || !isDataCol(to) || from == to)
        return;
    const int dest = (to > from ? to + 1 : to) - m_fixedCols;
    beginMoveColumns({}, from - m_fixedCols, from - m_fixedCols, {}, dest);
    auto moveOne = [from, to](auto &vec) {
        if (vec.empty())
            return;
        if (from < to)
            std::rotate(vec.begin() + from, vec.begin() + from + 1, vec.begin() + to + 1);
        else
            std::rotate(vec.begin() + to, vec.begin() + from, vec.begin() + from + 1);
    };
    moveOne(m_cols);
    for (auto &r : m_rows) {
        moveOne(r.cells);
        if (r.extra) {
            moveOne(r.extra->styles);
            moveOne(r.extra->data);
        }
    }
    m_keyIndexValid = false;
    endMoveColumns();
    if (m_cursorCol == from)
        m_cursorCol = to;
    else if (from < to && m_cursorCol > from && m_cursorCol <= to)
        --m_cursorCol;
    else if (to < from && m_cursorCol >= to && m_cursorCol < from)
        ++m_cursorCol;
    notifyColLayout(-1);
}

} // namespace kx
