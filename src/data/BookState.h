#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <functional>

namespace kx {

class AccContext;

/// What the journal knows of the book it shows, and how its logic talks back
/// to the control. The control owns one; the loading, saving, balance and
/// editing classes read and write it instead of reaching into the widget.
struct BookState {
    AccContext *acc = nullptr;   ///< the host's context (not owned)
    int docId = 0;               ///< the book shown (kxJournal.asID)
    QString journalName;         ///< its name
    int accId = 0;               ///< the account the book is kept for
    int relativeAccId = 0;       ///< the book's relative account
    QString direction;           ///< "借", "贷" or empty
    bool isBottomClass = false;  ///< no books below it
    bool isPacked = false;       ///< show the consolidated journal when it has books below it
    int lastSumRow = 0;          ///< the last summary row
    bool allowModify = false;
    bool allowAudit = false;
    bool dirty = false;

    QColor hotBackColor{Qt::black};
    QColor warnBackColor{Qt::black};
    QColor lockedForeColor{Qt::black};
    QColor modifiedForeColor{Qt::black};
    QColor highlightForeColor{0x00, 0x3c, 0xb4};  ///< a balance on the book's own side
    QColor summaryForeColor{0x8a, 0x1c, 0x6e};    ///< totals of summary rows

    int rowHeight = 22;        ///< every row
    int headerRowHeight = 24;  ///< the header row
    int sumRowHeight = 38;     ///< summary rows (two-line totals)

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

    QList<int> removedRecords;   ///< keys of rows taken out, deleted by the next save
    QString amountColumns;       ///< the money and balance columns ("|Debit|…|")
    QString explainList;         ///< the Explain drop-down list, read on first use

    /// A message for the user (text, show as a message box).
    std::function<void(const QString &, bool)> prompt;
    /// Asks the host before an operation; true when the host cancelled it.
    std::function<bool(const QString &)> cancelledByHost;
    /// Progress of a long operation: 0 to 100, -1 at the end.
    std::function<void(int)> process;
    /// Marks the grid changed (the control's IsDirty, which tells the host).
    std::function<void()> markDirty;
    /// The save finished (the control's AfterSaved).
    std::function<void()> afterSaved;
    /// Shows a caption in the header strip.
    std::function<void(const QString &)> caption;
    /// Gives the option button its picture ("Jnl" for a book, "Jnl1" consolidated).
    std::function<void(const QString &)> optionIcon;

    /// True when the consolidated journal is shown (packed and not a bottom book).
    bool isConsolidated() const { return isPacked && !isBottomClass; }
    /// Whether \a key is in the "|"-delimited key list \a list.
    static bool inList(const QString &list, const QString &key)
    {
        return !key.isEmpty() && list.contains(QLatin1Char('|') + key + QLatin1Char('|'));
    }
};

} // namespace kx
