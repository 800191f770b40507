#include "kxjournal/BookDirectory.h"

#include "data/RecordFetcher.h"
#include "kxjournal/Database.h"

#include <QHash>
#include <algorithm>

namespace kx {

class BookDirectory::Private
{
public:
    QList<Book> books;          // in code order
    QHash<QString, int> byCode; // index into books
    QHash<int, int> byId;
};

BookDirectory::BookDirectory() : d(std::make_unique<Private>()) {}
BookDirectory::~BookDirectory() = default;
BookDirectory::BookDirectory(const BookDirectory &other) : d(std::make_unique<Private>(*other.d)) {}

BookDirectory &BookDirectory::operator=(const BookDirectory &other)
{
    if (this != &other)
        *d = *other.d;
    return *this;
}

Result<BookDirectory> BookDirectory::read(const Database &db)
{
    const Result<FetchedRows> r = RecordFetcher::fetch(
        db, {QStringLiteral("Select asID, AssistCode, AssistName From kxJournal Order by AssistCode"), {}}, {}, 1);
    if (!r.ok())
        return Error(r.error());
    const FetchedRows &rows = r.value();
    const int idCol = rows.fieldIndex(QStringLiteral("asID"));
    const int codeCol = rows.fieldIndex(QStringLiteral("AssistCode"));
    const int nameCol = rows.fieldIndex(QStringLiteral("AssistName"));
    if (idCol < 0 || codeCol < 0 || nameCol < 0)
        return Error(QStringLiteral("日记账定义表（kxJournal）缺少 asID、AssistCode 或 AssistName 字段。"));
    QList<Book> books;
    for (int row = 0; row < rows.cells.rows(); ++row) {
        Book b;
        b.id = rows.cells.text(row, idCol).toInt();
        b.code = rows.cells.text(row, codeCol);
        b.name = rows.cells.text(row, nameCol);
        books << b;
    }
    return fromBooks(books);
}

BookDirectory BookDirectory::fromBooks(const QList<Book> &given)
{
    BookDirectory out;
    Private &p = *out.d;
    QList<Book> books;
    QHash<int, bool> ids;
    QHash<QString, bool> codes;
    for (const Book &g : given) {
        if (g.code.isEmpty() || g.id == 0 || ids.contains(g.id) || codes.contains(g.code))
            continue;
        ids.insert(g.id, true);
        codes.insert(g.code, true);
        Book b;
        b.id = g.id;
        b.code = g.code;
        b.name = g.name;
        books << b;
    }
    // Code order puts every book after the books whose codes begin it.
    std::sort(books.begin(), books.end(), [](const Book &a, const Book &b) { return a.code < b.code; });
    for (int i = 0; i < books.size(); ++i) {
        p.byCode.insert(books.at(i).code, i);
        p.byId.insert(books.at(i).id, i);
    }
    for (int i = 0; i < books.size(); ++i) {
        Book &b = books[i];
        for (int len = int(b.code.size()) - 1; len > 0; --len) {
            const auto parent = p.byCode.constFind(b.code.left(len));
            if (parent == p.byCode.cend())
                continue;
            Book &above = books[parent.value()];
            b.parentId = above.id;
            b.level = above.level + 1;
            above.hasChildren = true;
            break;
        }
        if (b.parentId == 0)
            b.level = 1;
    }
    p.books = books;
    return out;
}

const QList<BookDirectory::Book> &BookDirectory::books() const { return d->books; }
int BookDirectory::count() const { return int(d->books.size()); }

const BookDirectory::Book *BookDirectory::byCode(const QString &code) const
{
    const auto it = d->byCode.constFind(code);
    return it == d->byCode.cend() ? nullptr : &d->books.at(it.value());
}

const BookDirectory::Book *BookDirectory::byId(int id) const
{
    const auto it = d->byId.constFind(id);
    return it == d->byId.cend() ? nullptr : &d->books.at(it.value());
}

QList<BookDirectory::Book> BookDirectory::children(int id) const
{
    QList<Book> out;
    if (id != 0 && !byId(id))
        return out;
    for (const Book &b : d->books)
        if (b.parentId == id)
            out << b;
    return out;
}

QList<BookDirectory::Book> BookDirectory::subtree(int id) const
{
    QList<Book> out;
    const Book *top = byId(id);
    if (!top)
        return out;
    for (const Book &b : d->books)
        if (b.code.startsWith(top->code))
            out << b;
    return out;
}

} // namespace kx
