#pragma once

#include "ledger/LedgerState.h"

#include "grid/Sheet.h"
#include <kxjournal/SqlAccContext.h>

#include <QString>
#include <memory>

namespace kxbench {

/// A sample bank book read into a bare grid, as the benchmarks work on it.
struct Opened {
    std::unique_ptr<kx::SqlAccContext> acc;
    kx::Sheet grid;
    kx::LedgerState book;
};

/// Reads book 020101 of the database at \a url into a grid; \a fresh first
/// writes \a records sample records there. Null when that fails.
std::unique_ptr<Opened> openBook(const QString &url, int records, bool fresh);
/// A fresh SQLite file of \a records sample records in the temporary
/// folder (\a name tells the benchmarks' files apart), read into a grid.
std::unique_ptr<Opened> sqliteBook(int records, const QString &name = QStringLiteral("save"));

/// Resident memory of this process in bytes (0 where /proc is not there).
long long residentBytes();

} // namespace kxbench
