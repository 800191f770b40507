#pragma once

#include "bank/Statement.h"
#include "kxjournal/Result.h"

#include <QByteArray>

namespace kx {

/// Reads an ISO 20022 bank-to-customer statement (camt.053, any version):
/// the account, the closing booked balance and every entry.
class CamtStatement
{
public:
    /// True when \a bytes look like a camt.053 document.
    static bool recognise(const QByteArray &bytes);
    /// The statement in \a bytes; any bad entry fails the whole read.
    static Result<Statement> read(const QByteArray &bytes);
};

} // namespace kx
