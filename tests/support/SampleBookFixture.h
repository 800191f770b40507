#pragma once

#include "support/TestDatabase.h"

#include <kxjournal/SqlAccContext.h>

#include <memory>

namespace kx {
class Book;
class LedgerHost;
} // namespace kx

namespace kxtest {

/// A sample book in a fresh test database and a context over it: where the
/// tests of ledger work without a control start.
class SampleBookFixture
{
protected:
    /// Fills \a records records of one book on \a engine.
    void openSample(Engine engine, int records);
    /// \a book, on the sample's context, reporting to \a host from now on.
    kx::Book &on(kx::Book &book, kx::LedgerHost &host) const;
    /// Reads the sample's definition into \a book (figures as "0.00") and
    /// loads its records; a failed load fails the test.
    void loadSample(kx::Book &book, kx::LedgerHost &host) const;
    /// As loadSample(), telling nobody.
    void loadSample(kx::Book &book) const;

    std::unique_ptr<TestDatabase> testDb;
    std::unique_ptr<kx::SqlAccContext> acc;
    int docId = 0;
};

} // namespace kxtest
