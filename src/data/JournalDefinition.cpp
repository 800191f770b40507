#include "data/JournalDefinition.h"

#include "data/BookDefinition.h"
#include "data/RecordFetcher.h"
#include "data/SqlAccess.h"
#include "kxjournal/Database.h"

#include <QSqlRecord>
#include <QStringList>

namespace kx {

namespace {

// The number after the first "|" of "label|number"; 0 when there is none.
int numberAfterBar(const QString &s)
{
    const int bar = int(s.indexOf(QLatin1Char('|')));
    return bar < 0 ? 0 : s.mid(bar + 1).trimmed().toInt();
}

} // namespace

JournalDefinition::JournalDefinition(const Database &db, BookDefinition &book) : m_db(db), m_book(book) {}

QString JournalDefinition::fieldOf(const QString &name, int id) const
{
    // A book that cannot be read (no table, a lost connection) reads as no book.
    return sqlFirstRowField(m_db, sqlDialect(m_db).journalById(id), name).valueOr(QVariant()).toString();
}

QString JournalDefinition::field(const QString &name, int &id) const
{
    if (id == 0)
        id = m_book.docId;
    return fieldOf(name, id);
}

QString JournalDefinition::codeOf(int id) const
{
    return fieldOf(QStringLiteral("AssistCode"), id);
}

void JournalDefinition::read(int id)
{
    m_book.docId = id;
    int current = 0;
    m_book.direction = balanceSideOf(field(QStringLiteral("ZipCode"), current));
    m_book.accId = numberAfterBar(field(QStringLiteral("Address"), current));
    m_book.relativeAccId = numberAfterBar(field(QStringLiteral("Header"), current));
    m_book.journalName = fieldOf(QStringLiteral("AssistName"), id);
    m_book.isBottomClass = subordinateIds().size() == 1;
}

QList<int> JournalDefinition::subordinateIds() const
{
    QList<int> ids;
    Result<QSqlQuery> self = sqlExec(m_db, sqlDialect(m_db).journalById(m_book.docId));
    if (!self.ok())
        return ids;
    QSqlQuery book = self.takeValue();
    // No such book: no list (an empty code would otherwise match every book).
    if (!book.next())
        return ids;
    const QString code = book.record().value(QStringLiteral("AssistCode")).toString();
    book.finish();
    // The code is a value: read through the fetcher, which binds it on every engine.
    const Result<FetchedRows> r = RecordFetcher::fetch(m_db, sqlDialect(m_db).journalSubtree(code), {}, 1);
    if (!r.ok())
        return ids;
    const int col = r.value().fieldIndex(QStringLiteral("asID"));
    for (int row = 0; col >= 0 && row < r.value().cells.rows(); ++row)
        ids << r.value().cells.text(row, col).toInt();
    return ids;
}

QString JournalDefinition::subordinateList() const
{
    const QList<int> ids = subordinateIds();
    QString list;
    for (int id : ids)
        list += QLatin1Char('|') + QString::number(id);
    if (!list.isEmpty())
        list += QLatin1Char('|');
    return list;
}

QString JournalDefinition::caption(bool consolidated) const
{
    if (m_book.docId == 0)
        return QStringLiteral("流水账");
    const QString code = codeOf(m_book.docId);
    QString caption;
    // Every ancestor's code begins with the book's first character, however
    // long the top-level codes are (01 → 0102 → 010201).
    const Result<FetchedRows> r = RecordFetcher::fetch(m_db, sqlDialect(m_db).journalGroup(code.left(1)), {}, 1);
    if (r.ok()) {
        const CellArray &rows = r.value().cells;
        for (int row = 0; rows.cols() >= 2 && row < rows.rows(); ++row) {
            const QString rowCode = rows.text(row, 1);
            if (code.startsWith(rowCode))
                caption += QLatin1Char('\\') + rows.text(row, 0);
        }
    }
    if (caption.startsWith(QLatin1Char('\\')))
        caption.remove(0, 1);
    if (consolidated)
        caption += QStringLiteral("(合并日记账)");
    return caption;
}

} // namespace kx
