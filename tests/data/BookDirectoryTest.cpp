// The book tree a host shows: read from kxJournal on both engines, and
// judged as the control judges a consolidated book.
#include "data/BookDefinition.h"
#include "data/JournalDefinition.h"
#include "support/BookBuilder.h"
#include "support/TestDatabase.h"

#include <kxjournal/BookDirectory.h>
#include <kxjournal/Schema.h>

#include <gtest/gtest.h>

using kxtest::Engine;

namespace {

class BookDirectoryTest : public ::testing::TestWithParam<Engine>
{
};

QList<int> idsOf(const QList<kx::BookDirectory::Book> &books)
{
    QList<int> ids;
    for (const auto &b : books)
        ids << b.id;
    return ids;
}

} // namespace

TEST_P(BookDirectoryTest, TreeLevelsAndLookupsAgreeWithConsolidation)
{
    kxtest::TestDatabase tdb(GetParam());
    kx::Database db = tdb.open();
    ASSERT_TRUE(kx::Schema::create(db).ok());
    kxtest::BookBuilder b(db);
    // Inserted out of order; "03" has a child two characters longer and a
    // grandchild whose direct parent code ("030101") is missing.
    const int cash = b.book(QStringLiteral("01"), QStringLiteral("现金日记账"));
    const int bank = b.book(QStringLiteral("02"), QStringLiteral("银行日记账"));
    const int ccb = b.book(QStringLiteral("0202"), QStringLiteral("建设银行"));
    const int icbc = b.book(QStringLiteral("0201"), QStringLiteral("工商银行"));
    const int basic = b.book(QStringLiteral("020101"), QStringLiteral("基本户"));
    const int other = b.book(QStringLiteral("03"), QStringLiteral("其他"));
    const int deep = b.book(QStringLiteral("03010101"), QStringLiteral("深层"));
    const int lone = b.book(QStringLiteral("9"), QStringLiteral("单字"));

    const kx::Result<kx::BookDirectory> read = kx::BookDirectory::read(db);
    ASSERT_TRUE(read.ok()) << qPrintable(read.error());
    const kx::BookDirectory &dir = read.value();
    ASSERT_EQ(dir.count(), 8);
    EXPECT_EQ(idsOf(dir.books()), (QList<int>{cash, bank, icbc, basic, ccb, other, deep, lone})) << "code order";

    const kx::BookDirectory::Book *found = dir.byCode(QStringLiteral("020101"));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->id, basic);
    EXPECT_EQ(found->name, QStringLiteral("基本户"));
    EXPECT_EQ(found->level, 3);
    EXPECT_EQ(found->parentId, icbc);
    EXPECT_FALSE(found->hasChildren);
    ASSERT_NE(dir.byId(bank), nullptr);
    EXPECT_EQ(dir.byId(bank)->level, 1);
    EXPECT_TRUE(dir.byId(bank)->hasChildren);
    EXPECT_EQ(dir.byId(bank)->parentId, 0);
    EXPECT_EQ(dir.byId(deep)->parentId, other) << "the nearest book above, whatever the gap";
    EXPECT_EQ(dir.byId(deep)->level, 2);
    EXPECT_EQ(dir.byCode(QStringLiteral("0203")), nullptr);
    EXPECT_EQ(dir.byId(0), nullptr);

    EXPECT_EQ(idsOf(dir.children(0)), (QList<int>{cash, bank, other, lone}));
    EXPECT_EQ(idsOf(dir.children(bank)), (QList<int>{icbc, ccb}));
    EXPECT_TRUE(dir.children(basic).isEmpty());
    EXPECT_TRUE(dir.children(987654).isEmpty()) << "an unknown book has no children, not the top books";

    // Every book's subtree is what the control reads when it shows the book
    // consolidated, and hasChildren is the opposite of IsBottomClass.
    for (const auto &book : dir.books()) {
        kx::BookDefinition def;
        kx::JournalDefinition journal(db, def);
        journal.read(book.id);
        QList<int> subordinate = journal.subordinateIds();
        QList<int> subtree = idsOf(dir.subtree(book.id));
        std::sort(subordinate.begin(), subordinate.end());
        std::sort(subtree.begin(), subtree.end());
        EXPECT_EQ(subtree, subordinate) << qPrintable(book.code);
        EXPECT_EQ(book.hasChildren, !def.isBottomClass) << qPrintable(book.code);
    }
}

TEST_P(BookDirectoryTest, ADatabaseWithoutBooksFailsSaying)
{
    kxtest::TestDatabase tdb(GetParam());
    kx::Database db = tdb.open();
    const kx::Result<kx::BookDirectory> none = kx::BookDirectory::read(db);
    EXPECT_FALSE(none.ok()) << "no kxJournal table";
    EXPECT_FALSE(none.error().isEmpty());
    ASSERT_TRUE(kx::Schema::create(db).ok());
    const kx::Result<kx::BookDirectory> empty = kx::BookDirectory::read(db);
    ASSERT_TRUE(empty.ok()) << qPrintable(empty.error());
    EXPECT_EQ(empty.value().count(), 0);
}

INSTANTIATE_TEST_SUITE_P(Engines, BookDirectoryTest, ::testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const ::testing::TestParamInfo<Engine> &info) { return kxtest::engineName(info.param); });

TEST(BookDirectory, BooksGivenByTheHostSkipDuplicatesAndEmptyCodes)
{
    using Book = kx::BookDirectory::Book;
    const kx::BookDirectory dir = kx::BookDirectory::fromBooks(
        {Book{3, QStringLiteral("0101"), QStringLiteral("乙"), 0, 0, false},
         Book{1, QStringLiteral("01"), QStringLiteral("甲"), 0, 0, false},
         Book{4, QString(), QStringLiteral("无码"), 0, 0, false},
         Book{5, QStringLiteral("01"), QStringLiteral("重码"), 0, 0, false},
         Book{3, QStringLiteral("0102"), QStringLiteral("重号"), 0, 0, false}});
    ASSERT_EQ(dir.count(), 2);
    EXPECT_EQ(dir.byCode(QStringLiteral("01"))->name, QStringLiteral("甲"));
    EXPECT_EQ(dir.byId(3)->parentId, 1);
    EXPECT_EQ(dir.byId(3)->level, 2);
    const kx::BookDirectory copy = dir;
    EXPECT_EQ(copy.byId(3)->code, QStringLiteral("0101")) << "a copy holds its own books";
}
