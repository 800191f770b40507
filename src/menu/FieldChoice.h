#pragma once

#include "ledger/Book.h"
#include <QList>
#include <QString>

namespace kx {

class Sheet;
struct ColumnChoices;
struct LedgerState;

/// The show-fields list: the columns a user may show or hide (every column
/// the key lists do not keep from the user), in the order the grid shows
/// them, each with the text it is offered under. A choice changes the grid
/// at once and is remembered in the ledger state, so laying the columns
/// down again (a load) keeps it; the remembered choices travel as text in
/// the host's property bag.
class FieldChoice
{
public:
    /// One column of the list.
    struct Field {
        QString key;
        QString text;  ///< the header, with the key when two headers read alike
        bool shown = false;
    };

    /// The list over the columns of \a book.
    explicit FieldChoice(Book &book);

    /// The columns offered, in grid order.
    QList<Field> fields() const;
    /// Shows or hides the column keyed \a key and remembers it; false when
    /// the column is not offered or already so.
    bool setShown(const QString &key, bool shown);
    /// Remembers \a width as the user's width of grid column \a col.
    void rememberWidth(int col, int width);

    /// \a choices as text: "key=1|key=0" for shown and hidden columns.
    static QString shownText(const ColumnChoices &choices);
    /// \a choices' widths as text: "key=120|key=80".
    static QString widthText(const ColumnChoices &choices);
    /// Reads shownText() and widthText() back into \a choices; parts that do
    /// not read as "key=number" are passed over.
    static void read(ColumnChoices &choices, const QString &shown, const QString &widths);

private:
    bool offered(int col) const;

    Book &m_book;
    Sheet &m_grid;
    LedgerState &m_state;
};

} // namespace kx
