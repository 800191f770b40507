// Trouble with the database itself: a file nobody may write, a server that
// went away. The control says so plainly and never claims to have stored.
#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kx::Journal;

// A journal file nobody may write: it opens for reading, and a save says
// plainly that it cannot store rather than failing half-way.
TEST(DatabaseTrouble, AReadOnlyDatabaseOpensForReadingAndRefusesToSaveClearly)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("readonly.db"));
    int docId = 0;
    {
        kx::Database db = kx::Database::open(QStringLiteral("sqlite:") + path);
        docId = kxtest::fillSampleBooks(db, 40, 1);
        ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("PRAGMA journal_mode=DELETE"), {}}).ok());
    }
    ASSERT_GT(docId, 0);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    // An administrator writes whatever the permissions say; an immutable file stops even them.
    const bool immutable = QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("+i"), path}) == 0;
    const auto release = qScopeGuard([&] {
        if (immutable)
            QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("-i"), path});
    });
    {
        QFile probe(path);
        if (probe.open(QIODevice::ReadWrite))
            GTEST_SKIP() << "this user can write any file here";
    }

    kx::SqlAccContext acc(kx::Database::open(QStringLiteral("sqlite:") + path));
    ASSERT_TRUE(acc.Connection().isOpen()) << acc.Connection().lastError().toStdString();
    EXPECT_TRUE(acc.Connection().isReadOnly());
    QStringList said;
    Journal journal;
    journal.setAcc(&acc);
    QObject::connect(&journal, &Journal::Notify, [&said](const QString &m, bool) { said << m; });
    journal.setDocID(docId);
    ASSERT_TRUE(journal.Load()) << said.join(QLatin1Char('\n')).toStdString();
    journal.Grid()->setText(journal.Grid()->fixedRows() + 1, QStringLiteral("Explain"), QStringLiteral("改不了"));
    journal.setIsDirty(true);
    said.clear();
    EXPECT_FALSE(journal.Save());
    EXPECT_TRUE(journal.IsDirty());
    EXPECT_TRUE(said.join(QLatin1Char('\n')).contains(QStringLiteral("只读"))) << said.join(QLatin1Char('\n')).toStdString();
    EXPECT_FALSE(QFile::exists(path + QStringLiteral("-wal"))) << "a file that cannot be written is not switched to WAL";
}

// A server that went away: a save with nothing to write still says it could
// not reach the database, rather than that the book was stored.
TEST(DatabaseTrouble, ASaveWithNothingChangedAfterTheServerWentAwayDoesNotClaimSuccess)
{
    const QString state = QDir::tempPath() + QStringLiteral("/kxpg-gone-%1").arg(QCoreApplication::applicationPid());
    const auto cluster = [&state](const char *what) {
        QProcess p;
        p.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        p.start(QStringLiteral(KX_TEST_SUPPORT_DIR "/pg-cluster"), {QString::fromLatin1(what), state});
        return p.waitForFinished(120000) && p.exitCode() == 0;
    };
    ASSERT_TRUE(cluster("start"));
    QFile urlFile(state + QStringLiteral("/url"));
    ASSERT_TRUE(urlFile.open(QIODevice::ReadOnly));
    const QString url = QString::fromUtf8(urlFile.readAll()).trimmed();
    {
        kx::Database db = kx::Database::open(url);
        ASSERT_GT(kxtest::fillSampleBooks(db, 50, 1), 0);
    }
    kx::SqlAccContext acc(kx::Database::open(url));
    QStringList said;
    Journal journal;
    journal.setAcc(&acc);
    QObject::connect(&journal, &Journal::Notify, [&said](const QString &m, bool) { said << m; });
    journal.setDocID(kx::sqlScalar(acc.Connection(), {QStringLiteral("Select asID From kxJournal Where AssistCode='020101'"), {}})
                         .value()
                         .toInt());
    ASSERT_TRUE(journal.Load());
    ASSERT_TRUE(cluster("stop"));
    said.clear();
    EXPECT_FALSE(journal.Save());
    EXPECT_FALSE(said.join(QLatin1Char('\n')).contains(QStringLiteral("已存储"))) << said.join(QLatin1Char('\n')).toStdString();
}
