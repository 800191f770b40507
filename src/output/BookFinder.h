#pragma once

#include "kxjournal/Result.h"
#include "ledger/JournalColumns.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace kx {

/// Finds the rows of a book that hold every one of a set of keywords, each
/// in some column a person sees. Reads the grid only.
class BookFinder
{
public:
    /// One row found.
    struct Hit {
        int row;              ///< the grid row
        QString description;  ///< "label No[voucher]|row|explanation"
    };

    /// Searches \a grid.
    explicit BookFinder(const Sheet &grid) : m_grid(grid), m_columns(grid) {}

    /// The keywords of a search text: blanks, ";", ",", "；" and "，" all
    /// separate; empty pieces are dropped.
    static QStringList keywords(const QString &text);
    /// Every data row, top to bottom, that holds all keywords of \a text;
    /// fails for an empty text or a malformed pattern.
    Result<QVector<Hit>> find(const QString &text) const;
    /// How a hit is described to the host: the row's date label (or
    /// "[无名称]"), a blank, its No, "[voucher]", "|", the row and, when
    /// there is one, "|" and the explanation.
    QString describe(int row) const;

private:
    const Sheet &m_grid;
    JournalColumns m_columns;
};

} // namespace kx
