#pragma once

#include "ledger/Book.h"
#include <QPointer>
#include <QStringList>
#include <vector>

namespace kx {

class BookRow;
struct FetchedRows;

class AccContext;
class Database;
class Sheet;
class LedgerHost;
struct LedgerState;

/// Opens a book: reads its records (or those of the consolidated journal)
/// with one query, fills the grid in one call and dresses the rows.
class BookLoader
{
public:
    /// How a load ended.
    enum Outcome {
        Cancelled,  ///< the host said no; nothing changed
        Failed,     ///< the records could not be read; the grid is as it was
        Empty,      ///< the book has no records: ten rows with the opening row
        Loaded      ///< the records are in the grid
    };

    /// Works on \a book, reading through its context (a load without a
    /// context fails) and reporting to its host.
    explicit BookLoader(Book &book);

    /// Loads book \a docId (0: the current book).
    Outcome load(int docId);
    /// The fields a load reads as amounts.
    static const QStringList &amountFields();

private:
    void fillEmptyBook();
    /// Ticks the records a bank statement line is matched to, when the
    /// database keeps statements.
    void markReconciled(const Database &db);
    /// The first record key of \a rows the grid cannot hold ("" when none).
    static QString oversizedKey(FetchedRows &rows);
    /// Remembers what the database holds of \a row; notes it in \a unstored
    /// when it is not stored at its place.
    void rememberStored(const BookRow &row, std::vector<int> &unstored);
    void markUnstoredRows();
    void mergeMonths();
    /// Dresses every row; with \a unstored, remembers each as stored first.
    /// Gives what is to be said of rows whose stored values the control
    /// cannot hold ("" when there are none).
    QString dressRows(std::vector<int> *unstored);
    void labelRows();

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
    LedgerHost &m_host;
    QPointer<AccContext> m_acc;  ///< the host may delete it inside any call to the host
};

} // namespace kx
