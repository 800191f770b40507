#pragma once

#include "data/SqlDialect.h"
#include "kxjournal/Result.h"

#include <QStringList>

namespace kx {

class Database;

/// The explanations a cashier keeps for a book on purpose (常用摘要): offered
/// before any other when an explanation is typed, in the order the cashier
/// put them. One row per book in kxExplainMemo (DocID, Explains: the texts,
/// one per line), beside the journal's tables, which it never changes.
class ExplainMemo
{
public:
    /// The statement creating the table on an engine of dialect \a kind (on
    /// SQLite and PostgreSQL only when it is missing).
    static QString statement(SqlDialect::Kind kind);
    /// The kept explanations of book \a docId, in order; none when the
    /// database has no such table yet.
    static Result<QStringList> load(const Database &db, int docId);
    /// Keeps \a texts for book \a docId in place of what it kept, in one
    /// transaction, making the table when missing. Texts are trimmed, a tab
    /// becomes a blank; empty ones and repeats go. Refused, with nothing changed, for a text
    /// holding "|" or a line break.
    static Result<QStringList> save(Database &db, int docId, const QStringList &texts);
    /// The texts \a texts keeps: trimmed, without empty ones and repeats;
    /// an error naming the first text that cannot be kept.
    static Result<QStringList> cleaned(const QStringList &texts);
};

} // namespace kx
