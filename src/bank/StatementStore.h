#pragma once

#include "bank/ColumnMapping.h"
#include "bank/Statement.h"
#include "kxjournal/Result.h"

#include <QDate>
#include <QList>
#include <QMultiHash>
#include <QString>
#include <optional>

namespace kx {

class Database;

/// A statement line as stored for a bank book, with its key.
struct StoredLine {
    int id = 0;
    StatementLine line;  ///< sourceLine: its line in the file it came from
};

/// What an import did.
struct ImportOutcome {
    int read = 0;     ///< lines in the file
    int added = 0;    ///< lines stored
    int skipped = 0;  ///< lines already stored from another file (same day, side, amount and reference)
    bool again = false;  ///< the file was imported before: nothing was added
    QString before;      ///< then: when it was imported ("2026-03-05 10:22")
};

/// Statement lines and their matches, kept in the bank tables beside a
/// book (see BankSchema), which are made where missing on first use. Every
/// change is one transaction: an import stores all of its lines or none.
class StatementStore
{
public:
    /// Works on \a db, which must stay open while the store is used.
    explicit StatementStore(Database &db);

    /// Stores \a statement for bank book \a docId as the file \a fileName
    /// imported by \a user. A file imported before into that book (the same
    /// bytes) adds nothing and says when it was imported; a line already
    /// stored from another file (same day, side, amount and bank reference)
    /// is skipped.
    Result<ImportOutcome> import(int docId, const Statement &statement, const QString &fileName,
                                 const QString &user);
    /// The lines of book \a docId dated up to \a to (every line when invalid),
    /// by date and then in the order they were imported.
    Result<QList<StoredLine>> lines(int docId, const QDate &to = QDate()) const;
    /// The matches of book \a docId's lines: line key → record key (a line
    /// may stand for several records).
    Result<QMultiHash<int, int>> matches(int docId) const;
    /// Stores each pair of \a pairs (line key, record key) as matched by
    /// \a user, automatically or by hand.
    Result<void> match(const QList<QPair<int, int>> &pairs, const QString &user, bool automatic);
    /// Takes every match of the lines \a lineIds off; how many were taken.
    Result<int> unmatch(const QList<int> &lineIds);
    /// The closing balances book \a docId's files gave apart from their
    /// lines, each with its day.
    Result<QList<QPair<QDate, Currency>>> closings(int docId) const;
    /// The statement layout confirmed for book \a docId, if any.
    Result<std::optional<ColumnMapping>> mapping(int docId) const;
    /// Remembers \a mapping as book \a docId's statement layout.
    Result<void> rememberMapping(int docId, const ColumnMapping &mapping);

    /// The side as stored: "收" or "付".
    static QString sideText(StatementSide side);

private:
    Result<void> ready() const;
    Result<int> insertLines(int docId, int importId, const QList<const StatementLine *> &lines);

    Database &m_db;
};

} // namespace kx
