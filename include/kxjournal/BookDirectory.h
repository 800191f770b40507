#pragma once

#include "kxjournal/Result.h"
#include "kxjournal/kxjournal_export.h"

#include <QList>
#include <QString>
#include <memory>

namespace kx {

class Database;

/// The tree of a database's journal books (the table kxJournal), read once.
///
/// Books form a tree by their codes, as the control judges it when it
/// consolidates a book: the books below a book are those whose code begins
/// with its code. A book's parent is the book with the longest code that
/// is a proper beginning of its own; its level is 1 for a book without a
/// parent, one more than its parent's otherwise. Books come in code order.
class KXJOURNAL_EXPORT BookDirectory
{
public:
    /// One book of the tree.
    struct Book {
        int id = 0;            ///< kxJournal.asID, what Journal::setDocID takes
        QString code;          ///< AssistCode
        QString name;          ///< AssistName
        int level = 0;         ///< 1 for a top book, one more per book above it
        int parentId = 0;      ///< the book above it (0: none)
        bool hasChildren = false;  ///< books lie below it (Journal::IsBottomClass is its opposite)
    };

    /// An empty directory.
    BookDirectory();
    /// Frees the books.
    ~BookDirectory();
    /// A copy of \a other.
    BookDirectory(const BookDirectory &other);
    /// Makes this a copy of \a other.
    BookDirectory &operator=(const BookDirectory &other);

    /// Reads every book of \a db; fails, saying why, when kxJournal cannot be read.
    static Result<BookDirectory> read(const Database &db);
    /// Makes a directory of \a books (id, code and name are taken; the
    /// rest is worked out from the codes). A book with an empty code, or
    /// with a code or an id met before, is left out.
    static BookDirectory fromBooks(const QList<Book> &books);

    /// Every book, in code order.
    const QList<Book> &books() const;
    /// The number of books.
    int count() const;
    /// The book coded \a code, or nullptr.
    const Book *byCode(const QString &code) const;
    /// The book \a id, or nullptr.
    const Book *byId(int id) const;
    /// The books right below book \a id, in code order (\a id 0: the top books).
    QList<Book> children(int id) const;
    /// Book \a id and every book below it, in code order (what a consolidated
    /// journal of that book shows); empty for an unknown id.
    QList<Book> subtree(int id) const;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace kx
