// A process that opens a book, changes every record and saves it: the crash
// test kills it at chosen moments and looks at what the database kept.
#include "data/JournalDefinition.h"
#include "ledger/Book.h"
#include "ledger/BookLoader.h"
#include "ledger/BookSaver.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QCoreApplication>
#include <QDate>
#include <algorithm>
#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 3 && argc != 5) {
        std::fprintf(stderr, "usage: save_worker DBPATH|URL DOCID [PREFIX EVERY]\n");
        return 2;
    }
    // A bare path is a SQLite file; anything with a scheme is a URL.
    const QString where = QString::fromLocal8Bit(argv[1]);
    kx::SqlAccContext acc(kx::Database::open(where.contains(QLatin1Char(':')) ? where : QStringLiteral("sqlite:") + where));
    // Every EVERY-th record gets an explanation starting with PREFIX (a partial save when EVERY > 1).
    const QString prefix = argc == 5 ? QString::fromLocal8Bit(argv[3]) : QStringLiteral("v2-");
    const int every = argc == 5 ? std::max(1, QString::fromLatin1(argv[4]).toInt()) : 1;
    struct : kx::LedgerHost {
        void prompt(const QString &text, bool) override { std::fprintf(stderr, "%s\n", qPrintable(text)); }
    } host;
    kx::Book book(host, [&acc] { return &acc; });
    kx::Sheet &grid = book.sheet();
    kx::LedgerState &state = book.state();
    kx::JournalDefinition(acc.Connection(), state.book).read(QString::fromLatin1(argv[2]).toInt());
    if (kx::BookLoader(book).load(0) != kx::BookLoader::Loaded)
        return 3;
    for (int r = grid.fixedRows(); r < grid.rows(); r += every)
        if (QDate::fromString(grid.text(r, QStringLiteral("JnlDate")), Qt::ISODate).isValid())
            grid.setText(r, QStringLiteral("Explain"), prefix + QString::number(r));
    state.dirty = true;
    std::printf("saving\n");
    std::fflush(stdout);
    const bool saved = kx::BookSaver(book).save(QStringLiteral("crash"), 1);
    std::printf(saved ? "done\n" : "failed\n");
    std::fflush(stdout);
    return saved ? 0 : 1;
}
