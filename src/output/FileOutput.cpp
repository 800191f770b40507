#include "output/FileOutput.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace kx {

QString FileOutput::cannotWrite(const QString &target, const QString &why)
{
    return QStringLiteral("不能写入文件“%1”：%2").arg(QFileInfo(target).absoluteFilePath(), why);
}

Result<void> FileOutput::open(QSaveFile &out)
{
    if (out.fileName().isEmpty())
        return Error(QStringLiteral("没有给出文件的名字。"));
    if (QFileInfo(out.fileName()).isDir())
        return Error(cannotWrite(out.fileName(), QStringLiteral("这是一个文件夹。")));
    if (!out.open(QIODevice::WriteOnly))
        return Error(cannotWrite(out.fileName(), out.errorString()));
    return {};
}

Result<void> FileOutput::publish(const QString &written, QSaveFile &out)
{
    const QString target = out.fileName();
    QFile in(written);
    if (!in.open(QIODevice::ReadOnly))
        return Error(cannotWrite(target, in.errorString()));
    char buffer[1 << 16];
    for (;;) {
        const qint64 n = in.read(buffer, sizeof buffer);
        if (n < 0)
            return Error(cannotWrite(target, in.errorString()));
        if (n == 0)
            break;
        if (out.write(buffer, n) != n)
            return Error(cannotWrite(target, out.errorString()));
    }
    if (!out.commit())
        return Error(cannotWrite(target, out.errorString()));
    return {};
}

} // namespace kx
