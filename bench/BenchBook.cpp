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
    if (fresh) {
        kx::SampleOptions options;
        options.records = records;
        options.books = 1;
        options.year = 2025;
        if (!kx::SampleBooks::create(db, options).ok())
            return nullptr;
    }
    const int docId =
        kx::sqlScalar(db, {QStringLiteral("Select asID From kxJournal Where AssistCode=?"), {QStringLiteral("020101")}})
            .value()
            .toInt();
    o->acc = std::make_unique<kx::SqlAccContext>(std::move(db));
    kx::JournalDefinition(o->acc->Connection(), o->book.book).read(docId);
    if (kx::BookLoader(o->grid, o->book, kx::LedgerHost::none(), o->acc.get()).load(0) != kx::BookLoader::Loaded)
        return nullptr;
    return o;
}

std::unique_ptr<Opened> sqliteBook(int records, const QString &name)
{
    const QString path = QDir::tempPath() + QStringLiteral("/kxjournal-%1-%2.db").arg(name).arg(records);
    for (const char *suffix : {"", "-wal", "-shm"})
        QFile::remove(path + QLatin1String(suffix));
    return openBook(QStringLiteral("sqlite:") + path, records, true);
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
