#include "ledger/ConflictMerge.h"

#include "data/SqlAccess.h"
#include "kxjournal/Database.h"
#include "grid/Sheet.h"
#include "ledger/BalanceCalculator.h"
#include "ledger/BookRow.h"
#include "ledger/ConflictCheck.h"
#include "ledger/LedgerHost.h"
#include "ledger/LedgerState.h"
#include "ledger/StoredRecords.h"

#include <algorithm>
#include <vector>

namespace kx {

using C = JournalColumns;

// A record as the database holds it now.
struct ConflictMerge::Stored {
    int docId = 0;
    quint64 print = 0;          // what a load would remember of it
    std::vector<QString> texts;  // one per entered field
};

// A field both sides changed, to different values.
struct ConflictMerge::Clash {
    int row;
    C::Column column;
    QString theirs;
};

namespace {

bool sameValue(const FieldValue &a, const FieldValue &b)
{
    return a.number == b.number && a.text == b.text;
}

QString header(C::Column column)
{
    const char *h = C::layout(column).header;
    return h && *h ? QString::fromUtf8(h) : C::key(column);
}

// A text for the question, short enough to read in a box.
QString shown(const QString &text)
{
    const QString one = text.section(QLatin1Char('\r'), 0, 0).simplified();
    return one.size() > 30 ? one.left(30) + QStringLiteral("…") : one;
}

} // namespace

ConflictMerge::ConflictMerge(Book &book)
    : m_book(book), m_grid(book.sheet()), m_state(book.state()), m_host(book.host())
{
}

QString ConflictMerge::describe(int row) const
{
    const JournalColumns columns(m_grid);
    const BookRow r = BookRow::of(m_grid, columns, row);
    return QStringLiteral("第%1行（%2 %3）").arg(row).arg(r.dateText(), shown(r.text(C::Explain)));
}

QString ConflictMerge::question(const QStringList &lines, int total) const
{
    QStringList shownLines = lines.mid(0, 12);
    if (total > shownLines.size())
        shownLines << QStringLiteral("……共 %1 处").arg(total);
    return QStringLiteral("您读入账簿之后，其他用户也修改并存储了下面这些内容：\n") + shownLines.join(QLatin1Char('\n')) +
           QStringLiteral("\n\n选“是”保留您的内容；选“否”采用其他用户存储的内容。"
                          "双方对其他记录和其他项目的修改都会保留。");
}

Result<void> ConflictMerge::merge(const Database &db, const QHash<int, int> &rows, int docId)
{
    m_tookStored = false;
    const auto &fields = StoredRecords::entered();
    QHash<int, Stored> stored;
    const QList<int> keys = rows.keys();
    constexpr int Chunk = 500;
    for (int from = 0; from < keys.size(); from += Chunk) {
        const Result<void> read =
            ConflictCheck::readStored(db, sqlDialect(db).storedRecords(keys.mid(from, Chunk)), [&](const BookRow &row) {
                Stored s;
                s.docId = int(row.number(C::DocID));
                s.print = StoredRecords::fingerprint(row, s.docId, int(row.number(C::Row)), false);
                for (const auto &f : fields)
                    s.texts.push_back(row.text(f.column));
                stored.insert(row.recId(), std::move(s));
            });
        if (!read.ok())
            return read;
    }

    const JournalColumns columns(m_grid);
    const int first = m_grid.fixedRows();
    std::vector<std::pair<int, const Stored *>> merged;  // rows that take stored values
    std::vector<std::pair<int, std::pair<C::Column, QString>>> taken;  // fields only the other side changed
    std::vector<Clash> clashes;
    QList<int> goneChangedHere, goneUnchanged, removedChangedThere;
    QStringList lines, said;
    int asked = 0;
    for (auto it = rows.cbegin(); it != rows.cend(); ++it) {
        const int key = it.key();
        const int row = it.value();
        const auto at = stored.constFind(key);
        // A record another user moved to another book is that book's now.
        const bool moved = at != stored.constEnd() && at->docId != docId;
        const bool gone = at == stored.constEnd() || moved;
        if (row < 0) {
            // Removed here: asked about only when the other side changed it;
            // one moved to another book is never deleted from there.
            if (moved) {
                m_state.removedRecords.removeAll(key);
                m_state.stored.forget(key);
                said << QStringLiteral("您删除的记录（编号 %1）已被其他用户移到别的日记账，没有从那里删除。").arg(key);
            } else if (!gone) {
                removedChangedThere << key;
                lines << QStringLiteral("您删除的记录（编号 %1）：其他用户修改了它").arg(key);
                ++asked;
            }
            continue;
        }
        const BookRow here(m_grid, columns, row);
        const bool opening = row == first;
        if (gone) {
            bool changedHere = false;
            for (const auto &f : fields)
                changedHere = changedHere || (StoredRecords::writes(here, f, opening) && !StoredRecords::sameAsLoaded(here, f));
            if (changedHere) {
                goneChangedHere << key;
                lines << describe(row) + (moved ? QStringLiteral("：其他用户把这条记录移到了别的日记账，您修改了它")
                                                : QStringLiteral("：其他用户删除了这条记录，您修改了它"));
                ++asked;
            } else {
                goneUnchanged << row;
            }
            continue;
        }
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const auto &f = fields[i];
            if (!StoredRecords::writes(here, f, opening))
                continue;
            const FieldValue mine = StoredRecords::valueOf(f.kind, here.text(f.column));
            const FieldValue theirs = StoredRecords::valueOf(f.kind, at->texts[i]);
            if (sameValue(mine, theirs))
                continue;
            // Without what the row held when read, each difference is a clash.
            const bool known = here.knowsClean();
            const FieldValue loaded = StoredRecords::valueOf(f.kind, here.cleanText(f.column));
            const bool changedHere = !known || !sameValue(mine, loaded);
            const bool changedThere = !known || !sameValue(theirs, loaded);
            if (changedThere && !changedHere) {
                taken.push_back({row, {f.column, at->texts[i]}});
            } else if (changedThere) {
                clashes.push_back({row, f.column, at->texts[i]});
                lines << describe(row) + QStringLiteral("的%1：您的“%2”，其他用户的“%3”")
                                             .arg(header(f.column), shown(here.text(f.column)), shown(at->texts[i]));
                ++asked;
            }
        }
        merged.emplace_back(row, &at.value());
    }

    const bool keepMine = asked == 0 || m_host.ask(question(lines, asked));
    int firstChanged = m_grid.rows();
    for (const auto &[row, text] : taken) {
        BookRow(m_grid, columns, row).setText(text.first, text.second);
        firstChanged = std::min(firstChanged, row);
        m_tookStored = true;
    }
    if (!keepMine) {
        for (const Clash &c : clashes) {
            BookRow(m_grid, columns, c.row).setText(c.column, c.theirs);
            firstChanged = std::min(firstChanged, c.row);
            m_tookStored = true;
        }
    }
    // What was merged against is what the database holds from now on: the
    // fingerprint a save compares with, and the values a later merge judges
    // changes against.
    for (const auto &[row, s] : merged) {
        const BookRow merging(m_grid, columns, row);
        m_state.stored.remember(merging.recId(), s->print);
        for (std::size_t i = 0; i < fields.size(); ++i)
            merging.setCleanText(fields[i].column, s->texts[i]);
    }
    for (int key : removedChangedThere) {
        if (keepMine) {
            m_state.stored.remember(key, stored.value(key).print);
        } else {
            m_state.removedRecords.removeAll(key);
            m_state.stored.forget(key);
            m_tookStored = true;
        }
    }
    for (int key : goneChangedHere) {
        const int row = rows.value(key);
        if (keepMine) {
            // Written again, under a new key: the old one may name a record
            // of another book now.
            m_state.stored.forget(key);
            const BookRow again(m_grid, columns, row);
            again.setText(C::RecID, QStringLiteral("0"));
            again.setChangeMark(BookRow::Modified);
            m_grid.markRowTouched(row);
        } else {
            goneUnchanged << row;
        }
    }
    for (int row : std::as_const(goneUnchanged)) {
        m_state.stored.forget(BookRow::of(m_grid, columns, row).recId());
        firstChanged = std::min(firstChanged, row);
    }
    removeRows(goneUnchanged, said);
    if (firstChanged < m_grid.rows())
        BalanceCalculator(m_book).recalculateFrom(firstChanged);
    if (!said.isEmpty())
        m_host.prompt(said.join(QLatin1Char('\n')), false);
    return {};
}

void ConflictMerge::removeRows(QList<int> rows, QStringList &said)
{
    // From the bottom up, so that the rows above keep their places.
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    for (int row : std::as_const(rows)) {
        said.prepend(describe(row) + QStringLiteral("已被其他用户删除，已从账簿中去掉。"));
        m_grid.removeRowAt(row);
        m_state.rowsRemoved(m_grid, row, 1);
    }
}

} // namespace kx
