#include "output/FileOutput.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cerrno>
#include <cstring>

namespace kx {

namespace {

// The path \a path really names: links and "." or ".." followed, also for
// a file not there yet (its folder followed).
QString realPath(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    if (!canonical.isEmpty())
        return canonical;
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? info.absoluteFilePath() : QDir(folder).filePath(info.fileName());
}

bool isSqliteDatabase(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    static const QByteArray header("SQLite format 3\0", 16);
    return file.read(header.size()) == header;
}

// The text the system gives for \a code, as Qt reports it.
QString systemText(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

} // namespace

QString FileOutput::cannotWrite(const QString &target, const QString &why)
{
    return QStringLiteral("不能写入文件“%1”：%2").arg(QFileInfo(target).absoluteFilePath(), why);
}

QString FileOutput::why(const QFileDevice &file)
{
    const QString text = file.errorString();
    if (text == systemText(ENOSPC))
        return QStringLiteral("磁盘空间不足，文件没有写完（没有剩余空间）。");
    if (text == systemText(EDQUOT))
        return QStringLiteral("磁盘配额已用完，文件没有写完。");
    if (text == systemText(EFBIG))
        return QStringLiteral("文件超出了允许的大小，没有写完。");
    if (text.isEmpty() || text == QLatin1String("Unknown error"))
        return QStringLiteral("写入失败，文件没有写完。");
    return text;
}

QStringList FileOutput::databaseFiles(const QString &path)
{
    if (path.isEmpty() || path == QLatin1String(":memory:"))
        return {};
    return {path, path + QLatin1String("-wal"), path + QLatin1String("-shm"), path + QLatin1String("-journal")};
}

Result<void> FileOutput::open(QSaveFile &out, const QStringList &keep)
{
    const QString target = out.fileName();
    if (target.isEmpty())
        return Error(QStringLiteral("没有给出文件的名字。"));
    const QFileInfo info(target);
    if (info.isDir())
        return Error(cannotWrite(target, QStringLiteral("这是一个文件夹。")));
    const QString real = realPath(target);
    for (const QString &kept : keep)
        if (!kept.isEmpty() && realPath(kept) == real)
            return Error(cannotWrite(target, QStringLiteral("这是正在使用的数据库文件，不能用输出的内容覆盖它。")));
    if (info.exists()) {
        // Looked at before anything is opened: a pipe would wait for a reader.
        if (!info.isFile())
            return Error(cannotWrite(target, QStringLiteral("这不是普通文件（是设备、管道或套接字），不能覆盖。")));
        if (isSqliteDatabase(target))
            return Error(cannotWrite(target, QStringLiteral("这是一个 SQLite 数据库文件，不能用输出的内容覆盖它。")));
    }
    if (!out.open(QIODevice::WriteOnly))
        return Error(cannotWrite(target, why(out)));
    return {};
}

Result<void> FileOutput::commit(QSaveFile &out)
{
    // What is still buffered is written first, so its failure is seen here;
    // a failed write makes the commit fail and leaves the target as it was.
    if (out.isOpen() && out.error() == QFileDevice::NoError)
        out.flush();
    if (out.error() != QFileDevice::NoError) {
        const QString reason = why(out);
        out.cancelWriting();
        out.commit();
        return Error(cannotWrite(out.fileName(), reason));
    }
    if (!out.commit())
        return Error(cannotWrite(out.fileName(), why(out)));
    return {};
}

Result<void> FileOutput::publish(const QString &written, QSaveFile &out)
{
    const QString target = out.fileName();
    QFile in(written);
    if (!in.open(QIODevice::ReadOnly))
        return Error(cannotWrite(target, why(in)));
    char buffer[1 << 16];
    for (;;) {
        const qint64 n = in.read(buffer, sizeof buffer);
        if (n < 0)
            return Error(cannotWrite(target, why(in)));
        if (n == 0)
            break;
        if (out.write(buffer, n) != n)
            return Error(cannotWrite(target, why(out)));
    }
    return commit(out);
}

} // namespace kx
