#pragma once

#include "bank/Statement.h"
#include "kxjournal/Result.h"

#include <QByteArray>

namespace kx {

/// Reads an OFX or QFX bank statement, version 1 (SGML: leaf elements
/// without end tags) or 2 (XML), with a tolerant tag reader of its own: a
/// file cut short, or a transaction left open, fails instead of giving the
/// lines before the cut.
class OfxStatement
{
public:
    /// True when \a bytes look like OFX.
    static bool recognise(const QByteArray &bytes);
    /// The statement in \a bytes; any bad transaction fails the whole read.
    static Result<Statement> read(const QByteArray &bytes);
};

} // namespace kx
