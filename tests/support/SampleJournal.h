#pragma once

#include "support/TestDatabase.h"

#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

namespace kxtest {

/// A SQLite file with the sample books (\a records records in one bottom
/// book), that book open in a control, its messages collected, and a
/// scratch folder for files written from it.
struct SampleJournal {
    explicit SampleJournal(int records) : db(Engine::Sqlite)
    {
        kx::Database conn = db.open();
        book = fillSampleBooks(conn, records, 1);
        acc = std::make_unique<kx::SqlAccContext>(db.open());
        journal.setAcc(acc.get());
        QObject::connect(&journal, &kx::Journal::Notify, [this](const QString &m, bool) { said << m; });
        EXPECT_TRUE(journal.Load(book));
    }

    TestDatabase db;
    std::unique_ptr<kx::SqlAccContext> acc;
    kx::Journal journal;
    QTemporaryDir folder;
    QStringList said;
    int book = 0;
};

} // namespace kxtest
