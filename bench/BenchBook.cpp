#include "BenchBook.h"

#include "SampleBooks.h"
#include "data/JournalDefinition.h"
#include "data/SqlAccess.h"
#include "ledger/BookLoader.h"
#include "ledger/LedgerHost.h"

#include <kxjournal/Database.h>

#include <QDir>
#include <QFile>

namespace kxbench {

std::unique_ptr<Opened> openBook(const QString &url, int records, bool fresh)
{
    auto o = std::make_unique<Opened>();
    kx::Database db = kx::Database::open(url);
    if (!db.isOpen())
        return nullptr;
    if (fresh && !fillSample(db, records))
        return nullptr;
    const int docId = sampleBookId(db);
    if (docId <= 0)
        return nullptr;
    o->acc = std::make_unique<kx::SqlAccContext>(std::move(db));
    kx::JournalDefinition(o->acc->Connection(), o->book.book).read(docId);
    if (kx::BookLoader(o->ledger).load(0) != kx::BookLoader::Loaded)
        return nullptr;
    return o;
}

std::unique_ptr<Opened> sqliteBook(int records, const QString &name)
{
    return openBook(QStringLiteral("sqlite:") + freshFilePath(name, records), records, true);
}

bool fillSample(kx::Database &db, int records)
{
    kx::SampleOptions options;
    options.records = records;
    options.books = 1;
    options.year = 2025;
    return db.isOpen() && kx::SampleBooks::create(db, options).ok();
}

QString freshFilePath(const QString &name, int records)
{
    const QString path = QDir::tempPath() + QStringLiteral("/kxjournal-%1-%2.db").arg(name).arg(records);
    for (const char *suffix : {"", "-wal", "-shm"})
        QFile::remove(path + QLatin1String(suffix));
    return path;
}

int sampleBookId(const kx::Database &db)
{
    return kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {QStringLiteral("020101")}})
        .valueOr(QVariant())
        .toInt();
}

long long residentBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong() * 1024;
    return 0;
}

} // namespace kxbench
