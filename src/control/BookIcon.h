#pragma once

#include <QIcon>
#include <QPalette>

namespace kx {

/// The option button's picture, drawn rather than shipped: a ruled account
/// book ("Jnl"), or a stack of two ("Jnl1", a consolidated journal), in the
/// palette's highlight colour, sharp at every device pixel ratio.
class BookIcon
{
public:
    /// The icon for a consolidated journal when \a consolidated, else a single book.
    static QIcon make(bool consolidated, const QPalette &palette);
};

} // namespace kx
