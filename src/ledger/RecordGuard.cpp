#include "ledger/RecordGuard.h"

#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"

#include <algorithm>

namespace kx {

RecordGuard::RecordGuard(const Book &book)
    : m_grid(book.sheet()), m_state(book.state()), m_columns(m_grid)
{
}

bool RecordGuard::isClosed(int row) const
{
    if (!m_grid.isDataRow(row))
        return false;
    const BookRow line = BookRow::of(m_grid, m_columns, row);
    if (line.isSummary())
        return false;
    // The last summary row is the border: everything above it is closed,
    // whether the closing was stored (rows locked at load) or made just now.
    if (m_state.lastSumRow > m_grid.fixedRows() && row < m_state.lastSumRow)
        return true;
    // The opening row is locked against typing; it closes no period.
    return row > m_grid.fixedRows() && line.isLocked() && !m_state.unwritable.contains(line.recId());
}

bool RecordGuard::isLinked(int row) const
{
    if (!m_grid.isDataRow(row))
        return false;
    const BookRow line = BookRow::of(m_grid, m_columns, row);
    return !line.isSummary() && line.dirId() > 0;
}

bool RecordGuard::closesAt(int row) const
{
    return m_state.lastSumRow > m_grid.fixedRows() && row <= m_state.lastSumRow;
}

bool RecordGuard::deletes(int row, int r1, int r2) const
{
    if (row <= m_grid.fixedRows() || !m_grid.isDataRow(row))
        return false;
    if (BookRow::of(m_grid, m_columns, row).isSummary())
        return std::max(r1, m_grid.fixedRows() + 1) == std::min(r2, m_grid.rows() - 1);
    return !keeps(row);
}

void RecordGuard::sortForDeletion(int r1, int r2, QList<int> &going, QList<int> &kept) const
{
    r1 = std::max(r1, m_grid.fixedRows() + 1);
    r2 = std::min(r2, m_grid.rows() - 1);
    for (int r = r1; r <= r2; ++r)
        (deletes(r, r1, r2) ? going : kept) << r;
}

QString RecordGuard::rowList(const QList<int> &rows)
{
    constexpr int shown = 10;
    QStringList names;
    for (int i = 0; i < rows.size() && i < shown; ++i)
        names << QStringLiteral("第%1行").arg(rows.at(i));
    QString text = names.join(QStringLiteral("、"));
    if (rows.size() > shown)
        text += QStringLiteral("……等 %1 行").arg(rows.size());
    return text;
}

QString RecordGuard::keptReason()
{
    return QStringLiteral("是已结账或已生成凭证的记录");
}

QList<int> RecordGuard::afterRemoval(const QList<int> &kept, const QList<int> &gone)
{
    QList<int> out;
    out.reserve(kept.size());
    qsizetype above = 0;
    for (int row : kept) {
        while (above < gone.size() && gone.at(above) < row)
            ++above;
        out << row - int(above);
    }
    return out;
}

} // namespace kx
