#include "QtPrinters.h"

#include "SampleBooks.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include <kxjournal/Database.h>

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <random>

namespace {

struct BookState {
    int records = 0;
    int rewritten = 0;
    QString integrity;
};

BookState inspect(const QString &path, int docId)
{
    kx::Database db = kx::Database::open(QStringLiteral("sqlite:") + path);
    BookState s;
    s.integrity = kx::sqlScalar(db, {QStringLiteral("PRAGMA integrity_check"), {}}).value().toString();
    s.records = kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=?"), {docId}}).value().toInt();
    s.rewritten = kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=? And Explain Like 'v2-%'"),
                             {docId}}).value().toInt();
    return s;
}

void copyBook(const QString &from, const QString &to)
{
    for (const char *suffix : {"", "-wal", "-shm"})
        QFile::remove(to + QLatin1String(suffix));
    ASSERT_TRUE(QFile::copy(from, to));
}

// Starts the worker and waits until it begins its save; returns the time that took.
bool startSaving(QProcess &worker, const QString &path, int docId, const QStringList &more = {})
{
    worker.start(QStringLiteral(KX_SAVE_WORKER), QStringList{path, QString::number(docId)} + more);
    if (!worker.waitForStarted(10000))
        return false;
    QByteArray out;
    while (!out.contains("saving")) {
        if (!worker.waitForReadyRead(60000))
            return false;
        out += worker.readAllStandardOutput();
    }
    return true;
}

} // namespace

TEST(SaveCrash, KilledWriterLeavesTheOldBookOrTheNewNeverAMix)
{
    QTemporaryDir dir;
    const QString original = dir.filePath(QStringLiteral("original.db"));
    const QString work = dir.filePath(QStringLiteral("work.db"));
    int docId = 0;
    {
        kx::Database db = kx::Database::open(QStringLiteral("sqlite:") + original);
        kx::SampleOptions options;
        options.records = 20000;
        options.books = 1;
        options.year = 2025;
        ASSERT_TRUE(kx::SampleBooks::create(db, options).ok());
        docId = kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode='020101'"), {}}).value().toInt();
    }
    const int records = inspect(original, docId).records;
    ASSERT_GT(records, 19000);

    // One undisturbed save tells how long a save takes here.
    copyBook(original, work);
    QProcess worker;
    ASSERT_TRUE(startSaving(worker, work, docId));
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(worker.waitForFinished(120000));
    const qint64 saveMs = std::max<qint64>(clock.elapsed(), 20);
    ASSERT_EQ(worker.exitCode(), 0) << worker.readAllStandardError().toStdString();
    EXPECT_EQ(inspect(work, docId).rewritten, records);

    std::mt19937 rng(7);
    int kept = 0, replaced = 0;
    const int kills = 16;
    for (int i = 0; i < kills; ++i) {
        copyBook(original, work);
        QProcess victim;
        ASSERT_TRUE(startSaving(victim, work, docId));
        // Kill points spread over the whole save, a little past its end.
        const int at = int(std::uniform_int_distribution<qint64>(0, saveMs * 11 / 10)(rng));
        QThread::msleep(static_cast<unsigned long>(at));
        victim.kill();
        victim.waitForFinished(10000);
        const BookState s = inspect(work, docId);
        ASSERT_EQ(s.integrity, QStringLiteral("ok")) << "kill after " << at << " ms";
        ASSERT_EQ(s.records, records) << "kill after " << at << " ms";
        ASSERT_TRUE(s.rewritten == 0 || s.rewritten == records)
            << "a mix of old and new after a kill at " << at << " ms: " << s.rewritten << " of " << records;
        (s.rewritten == 0 ? kept : replaced)++;
    }
    RecordProperty("save_ms", int(saveMs));
    RecordProperty("kept_old", kept);
    RecordProperty("saw_new", replaced);
    EXPECT_GT(kept, 0) << "no kill landed before the commit";
}

// The same on PostgreSQL (the server undoes the transaction of a client that
// died), and for saves that write only some of the rows.
TEST(SaveCrash, PostgresAndPartialSavesAreAllOrNothingToo)
{
    using kxtest::Engine;
    for (const auto &[engine, every] : {std::pair{Engine::Postgres, 1}, std::pair{Engine::Postgres, 7},
                                        std::pair{Engine::Sqlite, 7}}) {
        kxtest::TestDatabase testDb(engine);
        kx::Database db = testDb.open();
        const int docId = kxtest::fillSampleBooks(db, 6000, 1);
        ASSERT_GT(docId, 0);
        const auto count = [&](const QString &like) {
            return kx::sqlScalar(db, {QStringLiteral("Select count(*) From kxJournalRecs Where DocID=? And Explain Like ?"),
                              {docId, like}})
                .value()
                .toInt();
        };
        const int records = count(QStringLiteral("%"));
        const QString every_ = QString::number(every);

        QProcess worker;
        ASSERT_TRUE(startSaving(worker, testDb.url(), docId, {QStringLiteral("base-"), every_}));
        QElapsedTimer clock;
        clock.start();
        ASSERT_TRUE(worker.waitForFinished(120000));
        const qint64 saveMs = std::max<qint64>(clock.elapsed(), 20);
        ASSERT_EQ(worker.exitCode(), 0) << worker.readAllStandardError().toStdString();
        const int written = count(QStringLiteral("base-%"));
        ASSERT_GT(written, every == 1 ? records - 10 : records / every - 10);

        std::mt19937 rng(11);
        int kept = 0;
        for (int i = 0; i < 8; ++i) {
            const QString prefix = QStringLiteral("k%1-").arg(i);
            QProcess victim;
            ASSERT_TRUE(startSaving(victim, testDb.url(), docId, {prefix, every_}));
            const int at = int(std::uniform_int_distribution<qint64>(0, saveMs * 11 / 10)(rng));
            QThread::msleep(static_cast<unsigned long>(at));
            victim.kill();
            victim.waitForFinished(10000);
            // A server may take a moment to notice its client is gone; until
            // then the old rows are what everybody else reads.
            const int now = count(prefix + QLatin1Char('%'));
            ASSERT_TRUE(now == 0 || now == written)
                << "a mix after a kill at " << at << " ms: " << now << " of " << written << " (" << every << ")";
            ASSERT_EQ(count(QStringLiteral("%")), records);
            kept += now == 0 ? 1 : 0;
        }
        EXPECT_GT(kept, 0) << "no kill landed before the commit";
    }
}
