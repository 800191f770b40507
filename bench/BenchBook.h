#pragma once

#include "ledger/Book.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QString>
#include <memory>

namespace kxbench {

/// A sample bank book read into a bare grid, as the benchmarks work on it.
struct Opened {
    std::unique_ptr<kx::SqlAccContext> acc;
    kx::Book ledger{kx::LedgerHost::none(), [this] { return acc.get(); }};
    kx::Sheet &grid = ledger.sheet();
    kx::LedgerState &book = ledger.state();
};

/// Reads book 020101 of the database at \a url into a grid; \a fresh first
/// writes \a records sample records there. Null when that fails.
std::unique_ptr<Opened> openBook(const QString &url, int records, bool fresh);
/// A fresh SQLite file of \a records sample records in the temporary
/// folder (\a name tells the benchmarks' files apart), read into a grid.
std::unique_ptr<Opened> sqliteBook(int records, const QString &name = QStringLiteral("save"));

/// Writes \a records sample records (one book tree, the year 2025) into
/// the open database \a db; false when that fails.
bool fillSample(kx::Database &db, int records);
/// The path of a new, empty SQLite file in the temporary folder for
/// \a records records (\a name tells the benchmarks' files apart).
QString freshFilePath(const QString &name, int records);
/// The id of the sample's first bank book, 020101 (0 when there is none).
int sampleBookId(const kx::Database &db);

/// Resident memory of this process in bytes (0 where /proc is not there).
long long residentBytes();

} // namespace kxbench
