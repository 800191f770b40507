#pragma once

#include "kxjournal/Result.h"

#include <QString>
#include <QStringList>

class QFileDevice;
class QSaveFile;

namespace kx {

/// Puts a finished file in its place in one step, so a reader never meets
/// half a file and a failed write leaves whatever was there before.
class FileOutput
{
public:
    /// Opens \a out (a file written beside its target and renamed over it
    /// once complete); open it before the work, so that an unwritable
    /// folder is known at once. Refuses, saying why, a target that is a
    /// folder, a device, a pipe or a socket, any SQLite database, and any
    /// of \a keep (by the path the file really has, links and "./" followed).
    static Result<void> open(QSaveFile &out, const QStringList &keep = {});
    /// Copies the file at \a written into \a out and puts it in its place.
    static Result<void> publish(const QString &written, QSaveFile &out);
    /// Puts \a out in its place; fails, saying why, when any write to it failed.
    static Result<void> commit(QSaveFile &out);
    /// The message for a file that cannot be written at \a target.
    static QString cannotWrite(const QString &target, const QString &why);
    /// Why the last read or write of \a file failed, a full disk said so in plain words.
    static QString why(const QFileDevice &file);
    /// The files of the SQLite database at \a path that no output may
    /// replace: the database and its journal files.
    static QStringList databaseFiles(const QString &path);
};

} // namespace kx
