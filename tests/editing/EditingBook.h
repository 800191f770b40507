#pragma once

#include "support/BookBuilder.h"
#include "support/TestDatabase.h"

#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/SqlAccContext.h>

#include <QMap>
#include <QStringList>
#include <memory>

namespace kxtest {

/// A small bank book open in a control, for the editing tests: an opening
/// row of 1000 (row 1), then +500, −200 and −50 in January 2025 (rows 2–4),
/// on a chart where one account's name is another's code and two accounts
/// share a name under different parents.
struct EditingBook {
    explicit EditingBook(Engine engine = Engine::Sqlite);

    /// Grid column of \a key.
    int col(const char *key) const;
    /// Text of (\a row, \a key).
    QString text(int row, const char *key) const;
    /// One whole edit through the grid's edit cycle.
    bool type(int row, const char *key, const QString &text) const;

    std::unique_ptr<TestDatabase> db;
    std::unique_ptr<kx::SqlAccContext> acc;
    std::unique_ptr<kx::Journal> journal;
    kx::Sheet *grid = nullptr;
    QStringList said;       ///< every Notify message
    QStringList boxes;      ///< Notify messages meant for a message box
    int book = 0;
    int bank = 0, icbc = 0, ccb = 0, receivable = 0, codeAsName = 0, payable = 0, payableIcbc = 0, expenses = 0;
};

/// One line of a paste into \a b: the texts of \a cells (by column key) for
/// the visible columns from the date on, tab-separated.
QString pasteLine(const EditingBook &b, const QMap<QString, QString> &cells);

/// One short line of a paste into \a b with the cursor on column \a first:
/// the texts of \a cells for the visible columns from \a first up to the
/// last of them, tab-separated (cells past the line's end stay as they are).
QString pasteLineFrom(const EditingBook &b, const char *first, const QMap<QString, QString> &cells);

/// The stored figure of field \a field of the record stored as row \a row
/// (invalid when it is no figure).
kx::Currency storedAmount(const EditingBook &b, int row, const char *field);

/// Runs the context-menu item \a name as a click would, its state brought
/// up to date as the menu showing does.
void runMenuItem(kx::Journal &journal, const char *name);

} // namespace kxtest
