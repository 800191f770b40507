#pragma once

#include "kxjournal/Currency.h"

#include <QString>
#include <vector>

namespace kx {

struct EditContext;

/// Whether the running balances of a book stay what its engine can store
/// exactly when the figures of a row change.
///
/// A balance Save writes must come back as it went: on an engine that keeps
/// fewer digits than an amount has, a change whose balances would pass that
/// is refused, as is one whose balances leave the range of amounts. The
/// largest balance is the one the last whole balance pass noted in the book
/// while the sheet is unchanged since, else the balances are read once to
/// find it; a change that keeps
/// that one inside the bounds passes at once. Only a change that comes near
/// them lays the balances out row by row. Changes taken in (accept()) move
/// the balances of the rows below, so a paste checks row after row in one
/// pass.
class BalanceReach
{
public:
    /// What a row adds to the balances: debit − credit, and the foreign amount.
    struct Share {
        Currency local;
        Currency foreign;
    };

    /// Reads the running balances of \a ctx's grid.
    explicit BalanceReach(const EditContext &ctx);

    /// The significant digits the book's engine keeps exactly.
    static int exactDigits(const EditContext &ctx);
    /// Why \a value cannot go into an amount cell of the book of \a ctx, or
    /// an empty text when it can.
    static QString refusal(const EditContext &ctx, Currency value);

    /// What \a row adds to the balances as it stands.
    Share share(int row) const;
    /// Why the balances from \a row on could not take \a row's share growing
    /// by \a change (on top of the changes taken in), or an empty text.
    QString check(int row, Share change) const;
    /// Takes \a change of a row at or below every row taken in before.
    void accept(Share change);

private:
    bool storable(Currency value) const;
    QString rowRefusal(int row, Share total) const;
    void layOut() const;
    __int128 bound() const;

    const EditContext &m_ctx;
    int m_digits;
    int m_first;
    int m_outline;
    int m_rows;
    __int128 m_peak = 0;                                ///< the largest balance magnitude of the book
    mutable std::vector<Currency> m_local, m_foreign;   ///< running balances by row, once laid out
    mutable std::vector<__int128> m_reach;              ///< largest magnitude from a row down
    Share m_moved;
};

} // namespace kx
