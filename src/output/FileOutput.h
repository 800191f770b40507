#pragma once

#include "kxjournal/Result.h"

#include <QString>

class QSaveFile;

namespace kx {

/// Puts a finished file in its place in one step, so a reader never meets
/// half a file and a failed write leaves whatever was there before.
class FileOutput
{
public:
    /// Opens \a out (a file written beside its target and renamed over it
    /// once complete); open it before the work, so that an unwritable
    /// folder is known at once.
    static Result<void> open(QSaveFile &out);
    /// Copies the file at \a written into \a out and puts it in its place.
    static Result<void> publish(const QString &written, QSaveFile &out);
    /// The message for a file that cannot be written at \a target.
    static QString cannotWrite(const QString &target, const QString &why);
};

} // namespace kx
