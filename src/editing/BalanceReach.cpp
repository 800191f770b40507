#include "editing/BalanceReach.h"

#include "data/SqlAccess.h"
#include "data/SqlDialect.h"
#include "editing/EditContext.h"
#include "grid/Cell.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BookRow.h"
#include "ledger/LedgerState.h"
#include "ledger/RowAmounts.h"

#include <algorithm>

namespace kx {

namespace {

__int128 magnitude(Currency c)
{
    return c.raw() < 0 ? -__int128(c.raw()) : __int128(c.raw());
}

// The grid holds amounts typed up to a bound below the largest amount; one
// beyond would come back as text, closed to editing.
bool fitsGrid(Currency value)
{
    bool fits = false;
    Cell::amount(value, &fits);
    return fits;
}

// An overflowed balance can never pass the quick tests.
__int128 peakOf(Currency local, Currency foreign)
{
    return local.isValid() && foreign.isValid() ? std::max(magnitude(local), magnitude(foreign)) : __int128(INT64_MAX) * 4;
}

} // namespace

int BalanceReach::exactDigits(const EditContext &ctx)
{
    const Database *db = ctx.db();
    return db ? sqlDialect(*db).exactDigits() : 19;
}

QString BalanceReach::refusal(const EditContext &ctx, Currency value)
{
    if (!fitsGrid(value))
        return QStringLiteral("“%1”超出了金额的范围。").arg(value.toString());
    const int digits = exactDigits(ctx);
    if (value.significantDigits() <= digits)
        return {};
    return QStringLiteral("“%1”超出了账簿能准确保存的位数（最多%2位有效数字）。").arg(value.toString()).arg(digits);
}

BalanceReach::BalanceReach(const EditContext &ctx)
    : m_ctx(ctx), m_digits(exactDigits(ctx)), m_first(ctx.grid.fixedRows()), m_outline(ctx.state.outlineColumn(ctx.grid)),
      m_rows(std::max(0, ctx.grid.rows() - m_first))
{
    // The balances as a recalculation makes them: rows without a day are
    // passed over, a summary row carries the balance through.
    // The last whole balance pass noted the largest while nothing changed since.
    if (ctx.book.balancePeak(m_peak))
        return;
    RowAmounts read(ctx.book);
    Currency local, foreign;
    for (int i = 0; i < m_rows; ++i) {
        if (read.read(m_first + i) != RowAmounts::Record)
            continue;
        local += read.debit - read.credit;
        foreign += read.forex;
        m_peak = std::max(m_peak, peakOf(local, foreign));
    }
    ctx.book.noteBalancePeak(m_peak);
}

void BalanceReach::layOut() const
{
    if (!m_reach.empty() || m_rows == 0)
        return;
    m_local.resize(std::size_t(m_rows));
    m_foreign.resize(std::size_t(m_rows));
    m_reach.resize(std::size_t(m_rows) + 1, 0);
    Currency local, foreign;
    for (int i = 0; i < m_rows; ++i) {
        const Share s = share(m_first + i);
        local += s.local;
        foreign += s.foreign;
        m_local[std::size_t(i)] = local;
        m_foreign[std::size_t(i)] = foreign;
    }
    for (int i = m_rows - 1; i >= 0; --i)
        m_reach[std::size_t(i)] = std::max(peakOf(m_local[std::size_t(i)], m_foreign[std::size_t(i)]), m_reach[std::size_t(i) + 1]);
}

__int128 BalanceReach::bound() const
{
    __int128 tens = 1;
    for (int i = 0; i < m_digits && tens < Cell::Limit; ++i)
        tens *= 10;
    return std::min(tens, __int128(Cell::Limit));
}

BalanceReach::Share BalanceReach::share(int row) const
{
    const Sheet &grid = m_ctx.grid;
    if (row < m_first || row >= grid.rows() || grid.isEmpty(row, m_outline))
        return {};
    const BookRow line = BookRow::of(grid, m_ctx.columns, row);
    if (line.isSummary())
        return {};
    return {line.debit() - line.credit(), line.forex()};
}

bool BalanceReach::storable(Currency value) const
{
    return value.isValid() && value.significantDigits() <= m_digits;
}

QString BalanceReach::rowRefusal(int row, Share total) const
{
    layOut();
    const std::size_t i = std::size_t(row - m_first);
    const Currency local = m_local[i] + total.local;
    const Currency foreign = m_foreign[i] + total.foreign;
    if (!fitsGrid(local) || !fitsGrid(foreign))
        return QStringLiteral("这样输入后，第%1行的余额超出了金额的范围。").arg(row);
    if (!storable(local) || !storable(foreign))
        return QStringLiteral("这样输入后，第%1行的余额超出了账簿能准确保存的位数（最多%2位有效数字）。")
            .arg(row)
            .arg(m_digits);
    return {};
}

QString BalanceReach::check(int row, Share change) const
{
    if (row < m_first || row - m_first >= m_rows)
        return {};
    const Share total{m_moved.local + change.local, m_moved.foreign + change.foreign};
    if (!total.local.isValid() || !total.foreign.isValid())
        return QStringLiteral("这样输入后，第%1行的余额超出了金额的范围。").arg(row);
    // Every figure below 10^digits ten-thousandths has at most that many
    // digits (and the grid holds it): when the largest balance, moved, stays
    // under that, all do.
    const __int128 limit = bound();
    const __int128 shift = std::max(magnitude(total.local), magnitude(total.foreign));
    if (m_peak + shift < limit)
        return {};
    layOut();
    if (m_reach[std::size_t(row - m_first)] + shift < limit)
        return {};
    for (int r = row; r - m_first < m_rows; ++r) {
        if (r != row && m_ctx.grid.isEmpty(r, m_outline))
            continue;
        const QString why = rowRefusal(r, total);
        if (!why.isEmpty())
            return why;
    }
    return {};
}

void BalanceReach::accept(Share change)
{
    m_moved.local += change.local;
    m_moved.foreign += change.foreign;
}

} // namespace kx
