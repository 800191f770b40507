#pragma once

#include "data/BookDefinition.h"
#include "ledger/StoredRecords.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <optional>

namespace kx {

class Sheet;

/// How the ledger paints the rows it dresses: closed periods, totals,
/// balances on the book's own side, and the row heights.
struct RowLooks {
    // An invalid colour: the host chose none (black is a colour like any other).
    QColor lockedForeColor;
    QColor modifiedForeColor;
    QColor hotBackColor;
    QColor warnBackColor;
    QColor highlightForeColor{0x00, 0x3c, 0xb4};  ///< a balance on the book's own side
    QColor summaryForeColor{0x8a, 0x1c, 0x6e};    ///< totals of summary rows
    int rowHeight = 22;        ///< every row
    int headerRowHeight = 24;  ///< the header row
    int sumRowHeight = 38;     ///< summary rows (two-line totals)

    /// The colour closed rows are drawn in: the host's, or a grey that reads
    /// on light and dark backgrounds while the host set none.
    QColor lockedColor() const { return lockedForeColor.isValid() ? lockedForeColor : QColor(0x80, 0x80, 0x80); }
};

/// The columns as the user arranged them: shown or hidden, and widths
/// dragged by hand, by column key. Laying the columns down again keeps them;
/// going back to the default format forgets them.
struct ColumnChoices {
    QHash<QString, bool> shown;  ///< key → shown (true) or hidden (false)
    QHash<QString, int> widths;  ///< key → width in pixels
};

/// The "|"-delimited key lists and the display formats the host sets.
struct LedgerFields {
    QString colsFilter;
    QString outlineKey;
    QString listFields;
    QString numericFields;
    QString editFields;
    QString dateFields;

    QString priceFormat;
    QString rateFormat;
    QString quantityFormat;
    QString accountFormat;
    QString dateFormat;
};

/// What the host (or the form the control was laid out in) set itself: laying
/// the columns down for a book keeps these instead of the defaults, so a load
/// never undoes the host's choices. Empty while the host set nothing.
struct HostChoices {
    std::optional<QString> colsFilter;
    std::optional<QString> listFields;
    std::optional<QString> numericFields;
    std::optional<QString> editFields;
    std::optional<QString> dateFields;
    std::optional<QFont> font;
};

/// Everything the ledger knows of the book in the grid beyond its cells.
/// The control owns one; every ledger class reads and writes it.
struct LedgerState {
    BookDefinition book;         ///< the book chosen (DocID)
    int loadedDocId = 0;         ///< the book whose rows the grid holds: a save writes there
    bool loadedConsolidated = false;  ///< the grid holds the records of a book and those below it
    bool isPacked = false;       ///< show the consolidated journal when the book has books below it
    int lastSumRow = 0;          ///< the last summary row (0: none)
    bool allowModify = true;     ///< the host's word; see mayModify()
    bool allowAudit = false;
    bool quickFill = true;       ///< an explanation typed fills the row's empty fields from its latest record
    bool autoNumber = true;      ///< a new record takes the next 单据号 as it is dated
    bool dirty = false;          ///< the grid holds changes not yet stored
    QList<int> removedRecords;   ///< keys of rows taken out, deleted by the next save
    StoredRecords stored;        ///< what the database holds for the records shown
    QSet<int> unwritable;        ///< records holding values this control cannot hold: shown, never written
    LedgerFields fields;
    HostChoices chosen;
    RowLooks looks;
    ColumnChoices columns;

    /// The book a save writes to: the one the grid was loaded from (the
    /// chosen one when nothing was loaded).
    int savedDocId() const { return loadedDocId > 0 ? loadedDocId : book.docId; }
    /// True when records may be changed: the host allows it and a book is chosen.
    bool mayModify() const { return allowModify && book.docId >= 1; }
    /// The side the book keeps its balances on.
    BalanceSide balanceSide() const { return book.direction; }
    /// True when the consolidated journal is shown (packed and not a bottom book).
    bool isConsolidated() const { return isPacked && !book.isBottomClass; }
    /// The column whose empty cell marks a blank row (OutlineKey, else the date).
    int outlineColumn(const Sheet &grid) const;

    /// Keeps lastSumRow on the row it names after \a count rows were
    /// inserted before \a at.
    void rowsInserted(int at, int count);
    /// Keeps lastSumRow on the row it names after rows \a at … at + count − 1
    /// were removed from \a grid; when that row went, the nearest summary
    /// row above the removed ones takes its place (0 when there is none).
    void rowsRemoved(const Sheet &grid, int at, int count);
    /// Keeps lastSumRow on the row it names after row \a from moved to \a to.
    void rowMoved(int from, int to);
};

} // namespace kx
