#include "support/SampleBookFixture.h"

#include "data/JournalDefinition.h"
#include "ledger/Book.h"
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

kx::Book &SampleBookFixture::on(kx::Book &book, kx::LedgerHost &host) const
{
    book.setHost(host);
    book.setContext([this] { return acc.get(); });
    return book;
}

void SampleBookFixture::loadSample(kx::Book &book, kx::LedgerHost &host) const
{
    kx::JournalDefinition(acc->Connection(), book.state().book).read(docId);
    book.state().fields.accountFormat = QStringLiteral("0.00");
    ASSERT_EQ(kx::BookLoader(on(book, host)).load(0), kx::BookLoader::Loaded);
}

void SampleBookFixture::loadSample(kx::Book &book) const
{
    loadSample(book, kx::LedgerHost::none());
}

} // namespace kxtest
