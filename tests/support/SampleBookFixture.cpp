#include "support/SampleBookFixture.h"

#include "data/JournalDefinition.h"
#include "ledger/BookLoader.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"

#include <gtest/gtest.h>

namespace kxtest {

void SampleBookFixture::openSample(Engine engine, int records)
{
    testDb = std::make_unique<TestDatabase>(engine);
    {
        kx::Database filler = testDb->open();
        docId = fillSampleBooks(filler, records, 1);
    }
    ASSERT_GT(docId, 0);
    acc = std::make_unique<kx::SqlAccContext>(testDb->open());
}

void SampleBookFixture::loadSample(kx::Sheet &grid, kx::LedgerState &state, kx::LedgerHost &host) const
{
    kx::JournalDefinition(acc->Connection(), state.book).read(docId);
    state.fields.accountFormat = QStringLiteral("0.00");
    ASSERT_EQ(kx::BookLoader(grid, state, host, acc.get()).load(0), kx::BookLoader::Loaded);
}

void SampleBookFixture::loadSample(kx::Sheet &grid, kx::LedgerState &state) const
{
    loadSample(grid, state, kx::LedgerHost::none());
}

} // namespace kxtest
