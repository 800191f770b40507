#pragma once

#include <QString>
#include <QVariantList>

namespace kx {

/// One SQL statement: its text, with a "?" for every value, and the values
/// bound to those placeholders in order. Only typed integers (ids, counts)
/// are ever written into the text itself.
struct SqlStatement {
    QString text;        ///< the statement text
    QVariantList binds;  ///< values for the "?" placeholders, in order
};

} // namespace kx
