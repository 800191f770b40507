#pragma once

#include "kxjournal/Result.h"

#include <QByteArray>
#include <QString>

namespace kx {

/// Reads one stream out of a compound file (the container of legacy Office
/// documents: sectors, allocation tables and a directory). Every offset and
/// chain is checked against the file, so damaged or crafted bytes give an
/// error, never a read outside them or an endless loop.
class CompoundFile
{
public:
    /// The stream called \a name (a top-level entry, compared without case).
    static Result<QByteArray> stream(const QByteArray &file, const QString &name);
};

} // namespace kx
