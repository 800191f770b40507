// What export and print must never write over: the database the control
// works on (however its path is spelled), any other SQLite database, and
// what is not a regular file (a device, a pipe, a socket).
#include "support/SampleJournal.h"
#include "support/TestDatabase.h"

#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

QByteArray contents(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// A socket file at \a path; false where the system refuses one.
bool makeSocket(const QString &path, int &fd)
{
    fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (fd < 0 || name.size() >= qsizetype(sizeof address.sun_path))
        return false;
    std::copy(name.begin(), name.end(), address.sun_path);
    return ::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

struct GuardedBook : kxtest::SampleJournal {
    GuardedBook() : SampleJournal(60) {}
    QString databasePath() const { return db.url().mid(int(qstrlen("sqlite:"))); }
};

} // namespace

TEST(OutputSafety, NeverWritesOverADatabaseADeviceOrAPipe)
{
    GuardedBook b;
    const QString database = b.databasePath();
    const QFileInfo info(database);
    ASSERT_TRUE(info.isFile());
    const QByteArray stored = contents(database);

    // The open database, spelled in other ways too.
    const QString link = b.folder.filePath(QStringLiteral("link.db"));
    ASSERT_TRUE(QFile::link(database, link));
    const QString dotted = info.absolutePath() + QStringLiteral("/./") + info.fileName();
    const QString climbed = info.absolutePath() + QStringLiteral("/../") + info.dir().dirName() + QLatin1Char('/') + info.fileName();
    // Another database: a copy, found by what it holds.
    const QString other = b.folder.filePath(QStringLiteral("other.csv"));
    ASSERT_TRUE(QFile::copy(database, other));
    // Files that are no regular files.
    const QString fifo = b.folder.filePath(QStringLiteral("pipe.csv"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    int socketFd = -1;
    const QString socketPath = b.folder.filePath(QStringLiteral("s.pdf"));
    const bool socketMade = makeSocket(socketPath, socketFd);
    // A device node of our own (the system's /dev stays out of a test's
    // reach); only where the system lets this process make one.
    const QString device = b.folder.filePath(QStringLiteral("null.csv"));
    const bool deviceMade = ::mknod(QFile::encodeName(device).constData(), S_IFCHR | 0666, makedev(1, 3)) == 0;

    struct Target {
        QString path;
        const char *reason;
    };
    QList<Target> targets{{database, "正在使用的数据库"}, {link, "正在使用的数据库"},     {dotted, "正在使用的数据库"},
                          {climbed, "正在使用的数据库"}, {database + QStringLiteral("-wal"), "正在使用的数据库"},
                          {other, "SQLite 数据库"},     {fifo, "不是普通文件"}};
    if (socketMade)
        targets << Target{socketPath, "不是普通文件"};
    if (deviceMade)
        targets << Target{device, "不是普通文件"};
    for (const Target &t : targets) {
        for (int kind = 0; kind < 2; ++kind) {
            b.said.clear();
            const bool written = kind == 0 ? b.journal.ExportToFile(t.path, 0) : b.journal.printToPdf(t.path);
            EXPECT_FALSE(written) << qPrintable(t.path) << (kind == 0 ? " (export)" : " (print)");
            ASSERT_FALSE(b.said.isEmpty());
            EXPECT_TRUE(b.said.last().contains(QString::fromUtf8(t.reason))) << qPrintable(b.said.last());
        }
    }
    EXPECT_EQ(contents(database), stored);
    EXPECT_EQ(contents(other), stored);
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    struct stat st {};
    ASSERT_EQ(::stat(QFile::encodeName(fifo).constData(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
    if (socketMade) {
        ASSERT_EQ(::stat(QFile::encodeName(socketPath).constData(), &st), 0);
        EXPECT_TRUE(S_ISSOCK(st.st_mode));
    }
    if (deviceMade) {
        ASSERT_EQ(::stat(QFile::encodeName(device).constData(), &st), 0);
        EXPECT_TRUE(S_ISCHR(st.st_mode));
    }
    if (socketFd >= 0)
        ::close(socketFd);
    EXPECT_TRUE(b.journal.Load(b.book)) << "the database still reads";

    // Beside it, an ordinary file is written (and written over) as before.
    const QString csv = b.folder.filePath(QStringLiteral("book.csv"));
    EXPECT_TRUE(b.journal.ExportToFile(csv, 0));
    EXPECT_TRUE(b.journal.ExportToFile(csv, 0));
    EXPECT_TRUE(b.journal.printToPdf(b.folder.filePath(QStringLiteral("book.pdf"))));
}
