#pragma once

#include <QList>
#include <QString>

namespace kx {

class Database;
struct BookDefinition;

/// A journal book's definition in kxJournal and its place in the book tree.
///
/// Books form a tree by their codes: the books below a book are those whose
/// code begins with its code. Reads never fail loudly: a failing query
/// leaves what was read so far.
class JournalDefinition
{
public:
    /// Works on \a db for the book in \a book.
    JournalDefinition(const Database &db, BookDefinition &book);

    /// Makes \a id the current book and reads its direction, account,
    /// relative account, name and whether books lie below it.
    void read(int id);
    /// Field \a name of book \a id as text (id 0: the current book, and the
    /// id is written back); empty when there is no such book or field.
    QString field(const QString &name, int &id) const;
    /// Field \a name of book \a id as text.
    QString fieldOf(const QString &name, int id) const;
    /// The ids of the current book and every book below it, by code.
    QList<int> subordinateIds() const;
    /// The same ids as text: each preceded by "|", with a final "|" ("|5|7|9|").
    QString subordinateList() const;
    /// The path of the current book from its top-level book down ("银行日记账\工商银行"),
    /// with "(合并日记账)" when \a consolidated; "流水账" for no book.
    QString caption(bool consolidated) const;

private:
    QString codeOf(int id) const;

    const Database &m_db;
    BookDefinition &m_book;
};

} // namespace kx
