#pragma once

#include "support/TestDatabase.h"

#include <kxjournal/SqlAccContext.h>

#include <memory>

namespace kx {
class LedgerHost;
struct LedgerState;
class Sheet;
} // namespace kx

namespace kxtest {

/// A sample book in a fresh test database and a context over it: where the
/// tests of ledger work without a control start.
class SampleBookFixture
{
protected:
    /// Fills \a records records of one book on \a engine.
    void openSample(Engine engine, int records);
    /// Reads the book's definition into \a state (figures as "0.00") and
    /// loads the book into \a grid; a failed load fails the test.
    void loadSample(kx::Sheet &grid, kx::LedgerState &state, kx::LedgerHost &host) const;
    /// As loadSample(), telling nobody.
    void loadSample(kx::Sheet &grid, kx::LedgerState &state) const;

    std::unique_ptr<TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> acc;
    int docId = 0;
};

} // namespace kxtest
